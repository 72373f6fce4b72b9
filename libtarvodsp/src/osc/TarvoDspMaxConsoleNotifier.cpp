#include "osc/TarvoDspMaxConsoleNotifier.h"

#include <algorithm>

namespace ondo
{
void MaxConsoleNotifier::addListener(Listener* listener)
{
    if (listener != nullptr && std::find(listeners.begin(), listeners.end(), listener) == listeners.end())
        listeners.push_back(listener);
}

void MaxConsoleNotifier::removeListener(Listener* listener)
{
    listeners.erase(std::remove(listeners.begin(), listeners.end(), listener), listeners.end());
}

void MaxConsoleNotifier::notify(std::int32_t level, const String& text)
{
    for (Listener* listener : listeners)
        listener->notify(*this, level, text);
}

void MaxConsoleNotifier::notifyProblem(const String& text)
{
    notify(problem, text);
}

void MaxConsoleNotifier::notifyInformation(const String& text)
{
    notify(information, text);
}

void MaxConsoleNotifier::notifyInformation(const std::vector<String>& lines)
{
    for (const String& line : lines)
        notify(information, line);
}
} // namespace ondo
