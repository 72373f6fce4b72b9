#include "TarvoverbAttributeStore.h"

#include <algorithm>
#include <cstring>
#include <sstream>

namespace tarvo::host
{
bool AttributeStore::set(const AttributeEntry& entry, Atoms atoms)
{
    if (atoms.empty())
        return false;
    using S = AttributeEntry::Setter;
    if (entry.setter == S::ReadOnly)
        return false;
    std::vector<Atom> filtered(atoms.begin(), atoms.end());
    if (entry.clip)
        for (Atom& atom : filtered)
            if (atom.isNumber())
                atom.number = TarvoverbCore::clip(entry, atom.number);
    if (entry.setter == S::Common)
        return core.setAttribute(entry.name, filtered);
    if (entry.setter == S::Own)
        return core.setAutomute(filtered.front().plainNumber());
    // The host writes the field: a single value read by the audio routine each block.
    auto* field = reinterpret_cast<unsigned char*>(&s) + entry.offset;
    if (entry.type == AttributeEntry::Type::Long)
    {
        const std::int64_t value = filtered.front().integer();
        std::memcpy(field, &value, sizeof value);
    }
    else if (entry.type == AttributeEntry::Type::Float32)
    {
        const float value = filtered.front().plainNumber();
        std::memcpy(field, &value, sizeof value);
    }
    return true;
}

bool AttributeStore::set(std::string_view name, Atoms atoms)
{
    const AttributeEntry* entry = findAttribute(name);
    if (entry == nullptr)
    {
        console.error("unknown attribute " + std::string(name));
        return false;
    }
    return set(*entry, atoms);
}

void AttributeStore::reset(const AttributeEntry& entry, bool force, bool verbose)
{
    if (!force && entry.dontReset)
        return;
    std::vector<std::string> words;
    std::istringstream text(entry.defaultValue);
    for (std::string word; text >> word;)
        words.push_back(word);
    if (!words.empty())
        set(entry, atomsFromWords(words));
    else if (verbose)
        console.warn("attribute " + std::string(entry.name) + " doesnt have a default value");
}

void AttributeStore::resetAll()
{
    for (const AttributeEntry* entry : listed(false))
        reset(*entry, false, false);
}

std::vector<const AttributeEntry*> AttributeStore::listed(bool alphabetical) const
{
    std::vector<const AttributeEntry*> names;
    for (const AttributeEntry& entry : attributeTable())
        if (entry.setter != AttributeEntry::Setter::ReadOnly && core.liveLength(entry) > 0)
            names.push_back(&entry);
    std::stable_sort(names.begin(), names.end(), [alphabetical](const AttributeEntry* a, const AttributeEntry* b) {
        if (!alphabetical && (a->order > 0) != (b->order > 0))
            return a->order > 0;
        if (!alphabetical && a->order > 0 && a->order != b->order)
            return a->order < b->order;
        return std::strcmp(a->name, b->name) < 0;
    });
    return names;
}
} // namespace tarvo::host
