#include "TarvoverbServices.h"

#include "TarvoverbNotation.h"
#include "TarvoverbState.h"

#include <cstdio>

namespace tarvo::host
{
std::string externalVersion()
{
    char text[128];
    std::snprintf(text, sizeof text, "%d.%d.%d (Build %s) (%d bits float)", 4, 9, 2, "Feb 14 2017", 32);
    return text;
}

const AttributeEntry* Services::named(const Atom& argument)
{
    const AttributeEntry* entry = findAttribute(argument.symbol);
    if (entry == nullptr)
        console.error("no attribute " + std::string(argument.symbol));
    return entry;
}

void Services::dump(Atoms arguments, const DumpOutlet& outlet)
{
    if (arguments.empty())
    {
        for (const AttributeEntry* entry : store.listed(true))
            outlet(entry->name, core.valuesOf(*entry));
        return;
    }
    if (matchesPattern("s", arguments, true))
    {
        if (const AttributeEntry* entry = named(arguments[0]))
            outlet(entry->name, core.valuesOf(*entry));
        return;
    }
    reportInvalidMessage(console, "invalid message : dump", arguments);
}

void Services::postAttributes(Atoms arguments)
{
    const auto postOne = [this](const AttributeEntry& entry) {
        console.post(std::string(entry.name) + " " + renderAtoms(core.valuesOf(entry)));
    };
    if (arguments.empty())
    {
        const std::vector<const AttributeEntry*> names = store.listed(false);
        console.post("found " + std::to_string(names.size()) + " attributes");
        for (const AttributeEntry* entry : names)
            postOne(*entry);
        return;
    }
    if (matchesPattern("s", arguments, true))
    {
        if (const AttributeEntry* entry = named(arguments[0]))
            postOne(*entry);
        return;
    }
    reportInvalidMessage(console, "invalid message : postattributes", arguments);
}

void Services::reset(Atoms arguments)
{
    if (arguments.empty())
        store.resetAll();
    else if (matchesPattern("s", arguments, true))
    {
        if (const AttributeEntry* entry = named(arguments[0]))
            store.reset(*entry, true, true);
    }
    else
        reportInvalidMessage(console, "invalid message : reset", arguments);
}

void Services::version()
{
    console.post("Version " + externalVersion());
}

void Services::postDspStatus(bool disabled, bool dspOn)
{
    const ObjectState& s = core.state();
    if (s.mute == 1 || disabled)
        console.post("dsp processing is muted");
    else if (s.bypass == 1)
        console.post("dsp processing is bypassed");
    else
        console.post("dsp processing is enabled");
    console.post(dspOn ? "dsp is on" : "dsp is off");
}
} // namespace tarvo::host
