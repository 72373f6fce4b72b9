#pragma once

#include "TarvoverbAtom.h"
#include "TarvoverbAttributeTable.h"
#include "TarvoverbCore.h"

#include <string_view>
#include <vector>

namespace tarvo::host
{
/// The attributes of an instance for a host that has no attribute system of its own (Pd):
/// what such a system does with the table, so that every skin sets, resets and lists them
/// alike. A value passes the attribute's clip filter, then goes to its setter, or into its
/// field when the host writes the field itself (mute, bypass).
///
/// Control thread; allocates.
class AttributeStore
{
public:
    AttributeStore(TarvoverbCore& core, ObjectState& state, Console& console)
        : core(core), s(state), console(console)
    {
    }

    /// Sets `entry` from `atoms` as the host's attribute setter would. True on an effective
    /// change. An empty list does nothing.
    bool set(const AttributeEntry& entry, Atoms atoms);
    /// The same by name; an unknown name reports "unknown attribute" and changes nothing.
    bool set(std::string_view name, Atoms atoms);

    /// Back to the default value. Unless `force`, an attribute marked "dontreset" keeps its
    /// value; with `verbose` one without a default says so.
    void reset(const AttributeEntry& entry, bool force, bool verbose);
    /// Every listed attribute, quietly, sparing those marked "dontreset".
    void resetAll();

    /// The attributes a user sees and sets, holding at least one value: alphabetical, or by
    /// their inspector order (those without one last, alphabetical).
    std::vector<const AttributeEntry*> listed(bool alphabetical) const;

private:
    TarvoverbCore& core;
    ObjectState& s;
    Console& console;
};
} // namespace tarvo::host
