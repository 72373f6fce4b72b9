#pragma once

#include "files/TarvoDspFile.h"
#include "osc/TarvoDspMaxConsoleNotifier.h"
#include "osc/TarvoDspOscBundle.h"
#include "osc/TarvoDspOscDocumentation.h"

#include <cstdint>
#include <mutex>

namespace ondo
{
/// The control face of a processor: what it is (`getOscDocumentation`), what its state is
/// (`getState`) and what a message does to it (`processOscMessage`), plus the service
/// addresses shared by all ("/post/state", "/post/doc", "/post/version", "/set/...") and the
/// queue that carries messages from control threads to the audio thread.
///
/// A subclass answers its own addresses by overriding `processOscMessage`: it calls
/// `handleBaseMessages` (or the processor's `handleProcessorMessages`) first, then tests its
/// addresses in sequence, each test a `message.matches("/literal")` plus an argument test
/// such as `message.matchesSingle('n')`, and returns true for the first that applies. It
/// declares the same addresses in `getOscDocumentation` (base entries first), and reports
/// its state in `getState` as messages that, replayed, restore it.
class OscInterface : public MaxConsoleNotifier
{
public:
    /// The value of `context` for a message that arrives through "/set/...".
    static constexpr std::int32_t setContext = 1;
    /// The value of `context` for a message applied by the audio thread's drain.
    static constexpr std::int32_t audioInterruptContext = 0;

    OscInterface();
    ~OscInterface() override = default;

    /// True when the message was understood. `context` is handed on untouched to whatever
    /// the processor does with it. Runs on the thread that calls it: a control thread, or
    /// the audio thread when the drain applies a queued message.
    virtual bool processOscMessage(const OSCMessage& message, std::int32_t& context);
    /// Messages that, replayed, restore the processor. Any thread; allocates.
    virtual OSCBundle getState() const;
    /// The addresses answered. Subclasses add theirs to what the base gives. Allocates.
    virtual OscDocumentation getOscDocumentation() const;
    /// Called around the replay of a preset.
    virtual void presetLoadBegins() {}
    virtual void presetLoadEnds() {}

    /// The service addresses, in this order: "/post/state", "/post/doc" and "/post/version"
    /// (no arguments), then "/set/..." which passes the message without its first part to
    /// `processOscMessage` with `context` set to `setContext`. False for anything else.
    bool handleBaseMessages(const OSCMessage& message, std::int32_t& context);

    /// Writes `getState()` to `file` in the form its extension names (.txt, .osc, .xml, .coll,
    /// in any case), replacing an existing file. False, with the reason notified at level 2,
    /// when it could not be written; an unknown extension throws `ondo::Exception`.
    /// Control thread; allocates.
    bool exportPreset(const File& file);
    /// Reads `file` in its form and dispatches its messages with `context`, between
    /// `presetLoadBegins` and `presetLoadEnds`. False when a message was not understood (the
    /// load goes on). A missing file throws `exceptions::NoSuchFile`, a malformed one the
    /// reader's exception; an exception leaves the load marked as running.
    /// Control thread; allocates.
    bool importPreset(const File& file, std::int32_t& context);
    const File& getLastLoadedPreset() const { return lastLoadedPreset; }
    const File& getLastExportedPreset() const { return lastExportedPreset; }
    const File& getLastPreset() const { return lastPreset; }
    bool isLoadingPreset() const { return loadingPreset; }

    /// Dispatches each message in order, nested bundles depth first. A message that
    /// `processOscMessage` does not understand is notified at level 2 by its text and the walk
    /// goes on; the result is true when every message was understood. Exceptions of handlers
    /// pass through.
    bool dispatchBundle(const OSCBundle& bundle, std::int32_t& context);

    /// Queues a message for the audio thread's next drain. Control thread; waits for the
    /// lock (held by the drain only for an exchange of pointers); allocates.
    void addToPending(const OSCMessage& message);
    void addToPending(OSCMessage&& message);
    /// Queues each message of `bundle`, nested bundles flattened.
    void addToPending(const OSCBundle& bundle);

    /// The queued messages. With `steal` the queue is emptied by exchange, without copying
    /// or allocating; otherwise they are copied. With `blocking` the lock is waited for;
    /// without, a busy lock gives an empty bundle at once.
    OSCBundle getPendingBundle(bool steal, bool blocking);
    /// Takes the queue (`steal`) and dispatches it. True when it was empty or every message
    /// was understood. With `blocking` false this is real-time safe while nothing is queued.
    bool processPending(std::int32_t& context, bool blocking);

    /// Puts every documented address into `OSCAddressCache`, so that handlers on the audio
    /// thread only look addresses up. Control thread; call once the processor is built.
    void prepareAddressCache() const;

protected:
    /// Guards `pending` and nothing else; the audio thread only ever tries it.
    std::recursive_mutex pendingMutex;
    OSCBundle pending;

    File lastLoadedPreset;
    File lastExportedPreset;
    File lastPreset;
    bool loadingPreset = true;
};
} // namespace ondo
