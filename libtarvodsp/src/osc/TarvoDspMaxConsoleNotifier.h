#pragma once

#include "text/TarvoDspString.h"

#include <cstdint>
#include <vector>

namespace ondo
{
/// Delivers a processor's texts to its observers: level 0 for information, 2 for a problem.
/// Listeners are attached before audio starts and must outlive the notifier. A notification
/// is a plain loop on the calling thread, which may be the audio thread: listeners must cope.
class MaxConsoleNotifier
{
public:
    static constexpr std::int32_t information = 0;
    static constexpr std::int32_t problem = 2;

    class Listener
    {
    public:
        virtual ~Listener() = default;
        /// Called on the notifying thread.
        virtual void notify(MaxConsoleNotifier& source, const std::int32_t& level, const String& text) = 0;
    };

    MaxConsoleNotifier() = default;
    virtual ~MaxConsoleNotifier() = default;
    MaxConsoleNotifier(const MaxConsoleNotifier&) = delete;
    MaxConsoleNotifier& operator=(const MaxConsoleNotifier&) = delete;

    /// Control thread, before audio starts; allocates. A listener is added once.
    void addListener(Listener* listener);
    /// Control thread, while audio is stopped.
    void removeListener(Listener* listener);
    std::size_t getNumListeners() const { return listeners.size(); }

    /// `text` at level 2. Any thread; allocates nothing itself.
    void notifyProblem(const String& text);
    /// `text` at level 0.
    void notifyInformation(const String& text);
    /// Each of `lines` at level 0, in order.
    void notifyInformation(const std::vector<String>& lines);
    void notify(std::int32_t level, const String& text);

private:
    std::vector<Listener*> listeners;
};
} // namespace ondo
