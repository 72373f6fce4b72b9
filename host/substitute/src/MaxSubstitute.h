#pragma once

// The test-facing side of the substitute host: create an object from a box as a patcher
// would, send it messages and attributes, run its DSP set-up and blocks, and read back what
// it said on its outlets and on the console. Everything here is the host's side only; the
// object is the real external, compiled against the same headers.

#include "ext.h"
#include "ext_obex.h"
#include "z_dsp.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tarvo::maxsubstitute
{
/// One line of the host's console, with the object that wrote it (null for none).
struct ConsoleLine
{
    enum class Kind
    {
        Post,
        Warning,
        Error,
        Bug
    };
    Kind kind;
    const void* object;
    std::string text;
};

/// What went out of an outlet: a selector and its atoms. `outlet` counts from the left.
struct OutletMessage
{
    int outlet;
    std::string selector;
    std::vector<t_atom> atoms;
    /// For a "dictionary" message: the entries of the named dictionary as it was sent.
    std::vector<std::string> dictionary;
};

/// The host's console since the last `clearConsole`.
const std::vector<ConsoleLine>& console();
void clearConsole();
/// The lines of one kind, texts only.
std::vector<std::string> consoleTexts(ConsoleLine::Kind kind);

/// Runs an external's entry point once, as the host does when it first meets the name.
void loadExternal(void (*entryPoint)(void*));
/// Whether audio is on, as `sys_getdspstate` reports.
void setDspState(bool on);
/// The answer the next save dialog gives: a file name in `directory`; an empty name cancels.
void setNextSaveDialogAnswer(const std::string& directory, const std::string& fileName);
/// What objects inserted into the binbuf bound to "_preset", one line of atoms each.
std::vector<std::vector<t_atom>> presetLines();
void clearPresetLines();

/// Atoms of a line of text, as a message box makes them: whole numbers become longs,
/// other numbers floats, everything else symbols.
std::vector<t_atom> atomsOf(const std::string& text);
/// Atoms back to text: longs in decimal, floats in the shortest form, symbols as they are.
std::string textOf(const std::vector<t_atom>& atoms);

/// A registered dictionary by name, as the patcher's dict objects find it; null if none.
t_dictionary* findDictionary(const std::string& name);
/// The entries of a dictionary as text, "key value..." in order.
std::vector<std::string> dictionaryLines(t_dictionary* d);

/// An instance in a patch.
class Box
{
public:
    /// A new box of class `className` with the attributes given by the user ("@name values"):
    /// the box dictionary holds them and, as a patcher's new box does, the default of every
    /// other attribute that declares one.
    static Box create(const std::string& className, const std::vector<std::string>& attributes = {});
    /// A box built from this very dictionary (null for none), which the box then owns.
    static Box createFromDictionary(const std::string& className, t_dictionary* dictionary);

    Box(Box&& other) noexcept;
    Box& operator=(Box&&) = delete;
    ~Box();

    /// Null when the constructor refused.
    void* object() const { return instance; }
    explicit operator bool() const { return instance != nullptr; }

    /// A message typed into a message box: "selector atoms...". A selector that names no
    /// message but an attribute sets it. False when the object does not understand it.
    bool send(const std::string& line);
    bool send(const std::string& selector, std::vector<t_atom> atoms);
    /// An attribute's value as the host's getter gives it.
    std::vector<t_atom> get(const std::string& attribute) const;
    std::string getText(const std::string& attribute) const { return textOf(get(attribute)); }

    /// The host's state protocol.
    t_max_err getValueOf(long* argc, t_atom** argv);
    t_max_err setValueOf(std::vector<t_atom> atoms);
    /// The inspector's help text of an inlet or outlet.
    std::string assist(long io, long index);

    /// The DSP chain is compiled: `connectedInlets` and `connectedOutlets` signals per signal
    /// inlet and outlet (1 each when empty).
    void dsp(double sampleRate, long maxVectorSize, std::vector<short> connectedInlets = {},
             std::vector<short> connectedOutlets = {});
    /// One block through the routine the object registered. Audio thread.
    void perform(double** inputs, long numInputs, double** outputs, long numOutputs, long frames);
    bool hasPerformRoutine() const;

    int signalInlets() const;
    int signalOutlets() const;
    /// All outlets, left to right; the kind is "signal" or empty for a general outlet.
    std::vector<std::string> outletKinds() const;
    const std::vector<OutletMessage>& outletTraffic() const;
    void clearOutletTraffic();
    /// How many times the object told observers that an attribute changed.
    int notifications() const;
    /// The host's mute of this box (the header's `z_disabled`).
    void setDisabled(bool disabled);

private:
    Box() = default;
    void* instance = nullptr;
};
} // namespace tarvo::maxsubstitute
