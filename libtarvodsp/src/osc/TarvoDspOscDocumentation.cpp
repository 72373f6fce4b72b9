#include "osc/TarvoDspOscDocumentation.h"

#include <algorithm>

namespace ondo
{
OscDocumentation::Entry::Entry(std::string_view text, String args, String doc)
    : address(text), arguments(std::move(args)), documentation(std::move(doc))
{
}

OscDocumentation::OscDocumentation(std::initializer_list<Entry> list)
{
    for (const Entry& e : list)
        add(e);
}

OscDocumentation& OscDocumentation::add(const Entry& entry)
{
    if (!entry.isVoid() && std::find(entries.begin(), entries.end(), entry) == entries.end())
        entries.push_back(entry);
    return *this;
}

OscDocumentation& OscDocumentation::add(std::string_view address, const String& arguments, const String& documentation)
{
    return add(Entry(address, arguments, documentation));
}

OscDocumentation& OscDocumentation::add(const OscDocumentation& other)
{
    for (const Entry& e : other.entries)
        add(e);
    return *this;
}

std::vector<String> OscDocumentation::documentationLines(bool aligned) const
{
    std::size_t width = 0;
    for (const Entry& e : entries)
        width = std::max(width, e.address.getText().size() + 1 + e.arguments.size());
    std::vector<String> lines;
    lines.reserve(entries.size());
    for (const Entry& e : entries)
    {
        if (aligned)
        {
            const String column = e.arguments.empty() ? e.address.getText() : e.address.getText() + ' ' + e.arguments;
            lines.push_back(StringHelper::padRight(column, width) + " : " + e.documentation);
        }
        else
        {
            lines.push_back(e.address.getText() + ' ' + e.arguments + " : " + e.documentation);
        }
    }
    return lines;
}

void OscDocumentation::prepareAddressCache() const
{
    for (const Entry& e : entries)
        OSCAddressCache::prepare(e.address.getText());
}
} // namespace ondo
