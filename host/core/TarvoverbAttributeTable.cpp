#include "TarvoverbAttributeTable.h"

#include "TarvoverbState.h"

#include <array>
#include <sstream>

namespace tarvo::host
{
namespace
{
using T = AttributeEntry::Type;
using L = AttributeEntry::Length;
using S = AttributeEntry::Setter;

#define TARVO_FIELD(f) offsetof(ObjectState, f)

constexpr const char* flatShelf = "0. 0. 0. 0. 177. 5657.";

constexpr const char* muteText =
    "The <m> mute </m> attribute is used to enable or disable the signal processing. When <m> mute </m> is set "
    "to 1, the signal processing chain is muted, the CPU is not used, and all output signals are ensure to be "
    "zero.";
constexpr const char* bypassText =
    "The <m> bypass </m> attribute is used to bypass the signal processing chain. When <m> bypass </m> is set to "
    "1, the signal processing chain is bypassed,  and the CPU is not used. The actual behavior of the bypassed "
    "object depends on the number of inlets/outlets : <br/>Examples: <br/>if the number of inputs is equal to the "
    "number of output, then each channel is bypassed. <br/>if there are 3 inputs and 4 outputs, then the 3 inputs "
    "are bypassed and the 4-th out is zeroed. <br/>if there are 4 inputs and 3 outputs, then the first 3 inputs "
    "are bypassed.";
constexpr const char* automuteText =
    "The <m> automute </m> attribute is used to automatically mute the signal processing chain when the input "
    "signal is zero. the object inspects its input signals; if the signals are 'inactive' i.e. zero-signals for a "
    "given amount of time, the processing chain (i.e. the cpu load) for the inactive inlets is automatically "
    "disabled. The 'automute' attribute represents the time threshold (in seconds) before considering an inlet as "
    "inactive. If 'automute' is 0, the auto-muting option is disabled.";
constexpr const char* numinternalsText =
    "The number of channels of the feedback delay network that makes the late reverberation. More channels give "
    "a denser tail at a higher CPU cost. Fixed when the object is created.";
constexpr const char* sourcesText =
    "x, y, z (metres) of every source in turn: +x right, +y front, +z up. The <m> source </m> message sets one "
    "source in any coordinate notation.";
constexpr const char* speakersText =
    "x, y, z (metres) of every speaker in turn: +x right, +y front, +z up. The <m> speakers </m> and <m> speaker "
    "</m> messages set them in any coordinate notation.";

// name, type, length, capacity, offset, clip, min, max, range text, default, label, style, units, category,
// order, dontreset, setter, description
const std::array<AttributeEntry, 33> table{{
    {"mute", T::Long, L::Single, 1, TARVO_FIELD(mute), true, 0, 1, true, "0", "mute dsp", "onoff", "", "options", 0,
     false, S::None, muteText},
    {"bypass", T::Long, L::Single, 1, TARVO_FIELD(bypass), true, 0, 1, true, "0", "bypass dsp", "onoff", "",
     "options", 0, false, S::None, bypassText},
    {"automute", T::Float32, L::Single, 1, TARVO_FIELD(automute), true, 0, 500, true, "20",
     "threshold for auto-muting", "", "sec", "options", 0, false, S::Own, automuteText},
    {"numsources", T::Long, L::Single, 1, TARVO_FIELD(numsources), true, 1, 64, true, "6", "number of sources", "",
     "", "", 1, true, S::Common, ""},
    {"numspeakers", T::Long, L::Single, 1, TARVO_FIELD(numspeakers), true, 1, 64, true, "6", "number of speakers",
     "", "", "", 2, true, S::Common, ""},
    {"numinternals", T::Long, L::Single, 1, TARVO_FIELD(numinternals), true, 2, 16, true, "8",
     "number of internal channels for FDN", "", "", "", 3, true, S::Common, numinternalsText},
    {"sourcespositions", T::Float32, L::SourcesCount, ObjectState::positionsCapacity, TARVO_FIELD(sourcespositions),
     false, 0, 0, false, "", "sources positions", "", "xyz", "", 4, false, S::Common, sourcesText},
    {"speakerspositions", T::Float32, L::SpeakersCount, ObjectState::positionsCapacity,
     TARVO_FIELD(speakerspositions), false, 0, 0, false, "", "speakers positions", "", "xyz", "", 5, false,
     S::Common, speakersText},
    {"gain", T::Float32, L::Single, 1, TARVO_FIELD(gain), true, -30, 30, true, "0", "late reverberation gain", "",
     "dB", "reverb", 15, false, S::Common, ""},
    {"modaldensity", T::Float32, L::Single, 1, TARVO_FIELD(modaldensity), true, 0.2, 4, true, "0.86",
     "modal density", "", "", "reverb", 0, false, S::Common, ""},
    {"tr0", T::Float32, L::Single, 1, TARVO_FIELD(tr0), true, 0.1, 100, true, "1.995", "global decay time", "",
     "sec", "reverb", 6, false, S::Common, ""},
    {"trl", T::Float32, L::Single, 1, TARVO_FIELD(trl), true, 0.1, 10, true, "1",
     "relative decay time at low freq", "", "", "reverb", 7, false, S::Common, ""},
    {"trm", T::Float32, L::Single, 1, TARVO_FIELD(trm), true, 0.1, 10, true, "1",
     "relative decay time at med freq", "", "", "reverb", 8, false, S::Common, ""},
    {"trh", T::Float32, L::Single, 1, TARVO_FIELD(trh), true, 0.1, 10, true, "0.5",
     "relative decay time at high freq", "", "", "reverb", 9, false, S::Common, ""},
    {"fl", T::Float32, L::Single, 1, TARVO_FIELD(fl), true, 20, 20000, true, "250", "low/med crossover frequency",
     "", "Hz", "reverb", 10, false, S::Common, ""},
    {"fh", T::Float32, L::Single, 1, TARVO_FIELD(fh), true, 20, 20000, true, "8000",
     "med/high crossover frequency", "", "Hz", "reverb", 11, false, S::Common, ""},
    {"air", T::Long, L::Single, 1, TARVO_FIELD(air), true, 0, 1, true, "0", "air absorption", "onoff", "",
     "reverb", 12, false, S::Common, ""},
    {"airfreq", T::Float32, L::Single, 1, TARVO_FIELD(airfreq), true, 20, 20000, true, "10000",
     "air rolloff frequency", "", "Hz", "reverb", 13, false, S::Common, ""},
    {"infinite", T::Long, L::Single, 1, TARVO_FIELD(infinite), true, 0, 1, true, "0", "infinite reverb", "onoff",
     "", "reverb", 14, false, S::Common, ""},
    {"delays", T::Float32, L::NumInternals, ObjectState::delaysCapacity, TARVO_FIELD(delays), false, 0, 0, false,
     "", "delays", "", "msec", "reverb", 16, false, S::Common, ""},
    {"direct", T::Float32, L::Fixed6, 6, TARVO_FIELD(direct), false, 0, 0, false, flatShelf,
     "direct filter parameters", "", "", "filters", 17, false, S::Common, ""},
    {"room", T::Float32, L::Fixed6, 6, TARVO_FIELD(room), false, 0, 0, false, flatShelf, "room filter parameters",
     "", "", "filters", 18, false, S::Common, ""},
    {"early", T::Float32, L::Fixed6, 6, TARVO_FIELD(early), false, 0, 0, false, flatShelf,
     "early filter parameters", "", "", "filters", 19, false, S::Common, ""},
    {"cluster", T::Float32, L::Fixed6, 6, TARVO_FIELD(cluster), false, 0, 0, false, flatShelf,
     "cluster filter parameters", "", "", "filters", 20, false, S::Common, ""},
    {"early_start", T::Float32, L::Single, 1, TARVO_FIELD(early_start), true, 1, 120, true, "22.22", "early start",
     "", "msec", "structure", 21, false, S::Common, ""},
    {"early_end", T::Float32, L::Single, 1, TARVO_FIELD(early_end), true, 1, 120, true, "39.71", "early end", "",
     "msec", "structure", 22, false, S::Common, ""},
    {"early_distr", T::Float32, L::Single, 1, TARVO_FIELD(early_distr), true, 0.1, 0.9, true, "0.5",
     "early distribution centroid", "", "", "structure", 23, false, S::Common, ""},
    // The width and the shape clip without telling the inspector their range.
    {"early_width", T::Float32, L::Single, 1, TARVO_FIELD(early_width), true, 10, 180, false, "30", "early width",
     "", "deg", "structure", 24, false, S::Common, ""},
    {"early_shape", T::Float32, L::Single, 1, TARVO_FIELD(early_shape), true, 0, 1, false, "0.5", "early shape", "",
     "", "structure", 25, false, S::Common, ""},
    {"cluster_start", T::Float32, L::Single, 1, TARVO_FIELD(cluster_start), true, 1, 300, true, "42.47",
     "cluster start", "", "msec", "structure", 26, false, S::Common, ""},
    {"cluster_end", T::Float32, L::Single, 1, TARVO_FIELD(cluster_end), true, 1, 300, true, "105.64",
     "cluster end", "", "msec", "structure", 27, false, S::Common, ""},
    {"cluster_distr", T::Float32, L::Single, 1, TARVO_FIELD(cluster_distr), true, 0.1, 0.9, true, "0.5",
     "cluster distribution centroid", "", "", "structure", 28, false, S::Common, ""},
    // No order: it sorts after the others in the inspector.
    {"reverb_start", T::Float32, L::Single, 1, TARVO_FIELD(reverb_start), true, 1, 500, true, "95.37",
     "reverb start", "", "msec", "structure", 0, false, S::Common, ""},
}};
#undef TARVO_FIELD
} // namespace

std::span<const AttributeEntry> attributeTable()
{
    return table;
}

const AttributeEntry* findAttribute(std::string_view name)
{
    for (const AttributeEntry& entry : table)
        if (name == entry.name)
            return &entry;
    return nullptr;
}

std::string formatPropertyNumber(double value)
{
    std::ostringstream stream;
    stream << value;
    return stream.str();
}
} // namespace tarvo::host
