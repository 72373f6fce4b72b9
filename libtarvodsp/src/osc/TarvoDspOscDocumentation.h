#pragma once

#include <string>
#include <vector>

namespace ondo
{
/// The list of OSC addresses a processor answers, one line of documentation each.
class OscDocumentation
{
public:
    struct Entry
    {
        std::string address;
        std::string arguments;     ///< "[number]", "[boolean]", "[string]"; empty for none
        std::string documentation; ///< one line

        bool operator==(const Entry&) const = default;
    };

    const std::vector<Entry>& getEntries() const { return entries; }
    std::size_t size() const { return entries.size(); }
    bool empty() const { return entries.empty(); }

private:
    std::vector<Entry> entries;
};
} // namespace ondo
