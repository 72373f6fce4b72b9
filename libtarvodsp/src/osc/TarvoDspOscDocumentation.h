#pragma once

#include "osc/TarvoDspOscAddress.h"

#include <string_view>
#include <vector>

namespace ondo
{
/// The list of OSC addresses a processor answers, one line of documentation each. It is
/// where addresses are declared, apart from the code that answers them. Control thread;
/// allocates.
class OscDocumentation
{
public:
    struct Entry
    {
        Entry() = default;
        /// `address` is strict: a typo with a wildcard throws at once.
        Entry(std::string_view address, String arguments, String documentation);

        /// The root address or an empty documentation: such entries are never kept.
        bool isVoid() const { return address.isRoot() || documentation.empty(); }
        bool operator==(const Entry& other) const
        {
            return address.getText() == other.address.getText() && arguments == other.arguments &&
                   documentation == other.documentation;
        }

        OSCAddress address;
        String arguments;     ///< "[number]", "[boolean]", "[string]"; empty for none
        String documentation; ///< one line
    };

    OscDocumentation() = default;
    OscDocumentation(std::initializer_list<Entry> entries);

    /// Adds `entry` unless it is void or already there.
    OscDocumentation& add(const Entry& entry);
    OscDocumentation& add(std::string_view address, const String& arguments, const String& documentation);
    /// Adds each entry of `other`, by the same rule.
    OscDocumentation& add(const OscDocumentation& other);

    const std::vector<Entry>& getEntries() const { return entries; }
    std::size_t size() const { return entries.size(); }
    bool empty() const { return entries.empty(); }
    const Entry& operator[](std::size_t i) const { return entries[i]; }

    /// "address arguments : documentation" per entry. Aligned, the first column is padded to
    /// the widest "address arguments" and holds the address alone when there are none.
    std::vector<String> documentationLines(bool aligned) const;

    /// Puts every address into `OSCAddressCache`, so that handlers testing them never parse.
    void prepareAddressCache() const;

private:
    std::vector<Entry> entries;
};
} // namespace ondo
