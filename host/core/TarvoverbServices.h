#pragma once

#include "TarvoverbAtom.h"
#include "TarvoverbAttributeStore.h"
#include "TarvoverbConsole.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tarvo::host
{
/// The object's version as its documentation shows it.
std::string externalVersion();

/// The generic messages of the object ("dump", "postattributes", "reset", "version",
/// "postdspstatus") for a host whose skin keeps the attributes in an `AttributeStore`, with
/// the texts the Max object prints. Control thread; allocates.
class Services
{
public:
    /// Receives one attribute of a dump: its name as selector, then its values.
    using DumpOutlet = std::function<void(std::string_view name, const std::vector<Atom>& values)>;

    Services(TarvoverbCore& core, AttributeStore& store, Console& console)
        : core(core), store(store), console(console)
    {
    }

    /// No argument: every listed attribute in alphabetical order, one message each; one
    /// name: that attribute.
    void dump(Atoms arguments, const DumpOutlet& outlet);
    /// No argument: the count, then each listed attribute with its values; one name: that one.
    void postAttributes(Atoms arguments);
    /// No argument: every attribute quietly (counts spared); one name: that one, forced.
    void reset(Atoms arguments);
    void version();
    /// Whether the instance processes, then whether the host's audio runs.
    void postDspStatus(bool disabled, bool dspOn);

private:
    /// The attribute a one-name message names; reports "no attribute" when there is none.
    const AttributeEntry* named(const Atom& argument);

    TarvoverbCore& core;
    AttributeStore& store;
    Console& console;
};
} // namespace tarvo::host
