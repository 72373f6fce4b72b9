#include "QuorMaxMspExternalDocumentation.h"

#include <iostream>
#include <memory>
#include <utility>
#include <vector>

namespace Quor
{
namespace
{
/// Names and types side by side, built on first use.
const std::vector<std::pair<std::string, MaxMspExternal::Type>>& typeTable()
{
    static const std::vector<std::pair<std::string, MaxMspExternal::Type>> table{
        {"tarvoverb~", MaxMspExternal::tarvoverbTilda},
        {"tarvoverb~.control", MaxMspExternal::tarvoverbTildaControl},
    };
    return table;
}

std::unique_ptr<MaxMspExternalDocumentation> create(const std::string& name)
{
    for (const auto& [candidate, type] : typeTable())
        if (candidate == name)
            switch (type)
            {
                case MaxMspExternal::tarvoverbTilda: return std::make_unique<External::TarvoverbTilda>();
                case MaxMspExternal::tarvoverbTildaControl: return std::make_unique<External::TarvoverbTildaControl>();
                default: return nullptr;
            }
    return nullptr;
}
} // namespace

std::string MaxMspExternalDocumentation::descriptionOf(const std::string& externalName)
{
    const auto documentation = create(externalName);
    return documentation ? documentation->getDescription() : std::string();
}

std::string MaxMspExternalDocumentation::digestOf(const std::string& externalName)
{
    const auto documentation = create(externalName);
    return documentation ? documentation->getDigest() : std::string();
}

std::string MaxMspExternalDocumentation::seeAlsoOf(const std::string& externalName)
{
    const auto documentation = create(externalName);
    return documentation ? documentation->getSeeAlso() : std::string();
}

std::string MaxMspExternalDocumentation::getMethodDescription(const std::string& name)
{
    static const std::vector<std::pair<std::string, std::string>> texts{
        {"clear", "clears the internal state of the object (memories of the filters and/or delay lines, internal "
                  "buffers, etc.)"},
        {"speakers", "the <m> speakers </m> message is used to set the coordinates of all the speakers at once. "
                     "<br/>syntax : speakers [property] [value] <br/>"},
        {"loudspeakers", "the <m> loudspkeakers </m> message is an alias to the <m> speakers </m> message."},
        {"speaker", "the <m> speaker </m> message sets one speaker property. <br/>syntax : speaker [index] "
                    "[property] [value] <br/>examples : <br/><m> speaker 2 xyz 0. 1. 0. </m> sets x,y,z "
                    "(Cartesian) position <br/><m> speaker 2 xy -1. 1. </m> sets x,y position, z is 0 <br/><m> "
                    "speaker 2 ade 30. 0. 2. </m> sets azimuth (deg), distance (m) and elevation (deg) <br/>"},
        {"loudspeaker", "the <m> loudspkeaker </m> message is an alias to the <m> speaker </m> message."},
        {"listener", "the <m> listener </m> message sets the position and orientation of the listener."},
        {"open", "opens the editing window."},
        {"wclose", "closes the editing window."},
        {"info", "posts information about the object in the Max window."},
        {"/info", "posts information about the processor in the Max window."},
    };
    for (const auto& [candidate, text] : texts)
        if (candidate == name)
            return text;
    std::cerr << "unknwon method : " << name << std::endl;
    return {};
}

namespace External
{
std::string TarvoverbTilda::getDescription() const
{
    return "tarvoverb is a room reverberator with a 'low level' control interface.";
}

std::string TarvoverbTilda::getDigest() const
{
    return "Room reverberator.";
}

std::string TarvoverbTilda::getSeeAlso() const
{
    return "tarvoverb~.control";
}

std::string TarvoverbTildaControl::getDescription() const
{
    return "Control interface for tarvoverb~: sets the room with perceptual controls.";
}

std::string TarvoverbTildaControl::getDigest() const
{
    return "Control interface for tarvoverb~.";
}

std::string TarvoverbTildaControl::getSeeAlso() const
{
    return "tarvoverb~";
}
} // namespace External
} // namespace Quor
