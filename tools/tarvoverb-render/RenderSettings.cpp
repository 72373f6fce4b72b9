#include "RenderSettings.h"

#include "math/TarvoDspCoordinates.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <iomanip>
#include <sstream>

namespace tarvo::render
{
namespace
{
// The object's attributes and the run's own options, each with its range. Ranges are those
// of the attributes' clip filters, so a value behaves here as it would in the object.
struct FloatOption
{
    const char* name;
    float RenderSettings::*field;
    float minimum;
    float maximum;
    const char* help;
};

struct IntOption
{
    const char* name;
    int RenderSettings::*field;
    int minimum;
    int maximum;
    const char* help;
};

struct ShelfOption
{
    const char* name;
    ShelfList RenderSettings::*field;
    const char* help;
};

/// A structure attribute reached through the two-word form of "early" and "cluster".
struct SectionWord
{
    const char* section;
    const char* word;
    const char* attribute;
};

const IntOption intOptions[] = {
    {"numsources", &RenderSettings::numSources, 1, 64, "number of sources (inputs)"},
    {"numspeakers", &RenderSettings::numSpeakers, 1, 64, "number of speakers (output channels)"},
    {"numinternals", &RenderSettings::numInternals, 2, 16, "internal channels of the feedback delay network"},
    {"air", &RenderSettings::air, 0, 1, "air absorption in the late network, 0 or 1"},
    {"infinite", &RenderSettings::infinite, 0, 1, "frozen tail, 0 or 1"},
    {"blocksize", &RenderSettings::blockSize, 1, 4096, "samples per processing block"},
    {"impulse-source", &RenderSettings::impulseSource, 0, 64, "source that gets the impulse, 0 for all at once"},
};

const FloatOption floatOptions[] = {
    {"gain", &RenderSettings::gain, -30.0f, 30.0f, "late reverberation gain, dB"},
    {"modaldensity", &RenderSettings::modalDensity, 0.2f, 4.0f, "modal density: sum of the late delays, s"},
    {"tr0", &RenderSettings::tr0, 0.1f, 100.0f, "global decay time, s"},
    {"trl", &RenderSettings::trl, 0.1f, 10.0f, "decay time at low frequencies, relative to tr0"},
    {"trm", &RenderSettings::trm, 0.1f, 10.0f, "decay time at middle frequencies, relative to tr0"},
    {"trh", &RenderSettings::trh, 0.1f, 10.0f, "decay time at high frequencies, relative to tr0"},
    {"fl", &RenderSettings::fl, 20.0f, 20000.0f, "low/middle crossover of the decay, Hz"},
    {"fh", &RenderSettings::fh, 20.0f, 20000.0f, "middle/high crossover of the decay, Hz"},
    {"airfreq", &RenderSettings::airFreq, 20.0f, 20000.0f, "air roll-off frequency, Hz"},
    {"early_start", &RenderSettings::earlyStart, 1.0f, 120.0f, "first early reflection, ms"},
    {"early_end", &RenderSettings::earlyEnd, 1.0f, 120.0f, "last early reflection, ms"},
    {"early_distr", &RenderSettings::earlyDistr, 0.1f, 0.9f, "centroid of the early reflections"},
    {"early_width", &RenderSettings::earlyWidth, 10.0f, 180.0f, "angle between the two early virtual sources, deg"},
    {"early_shape", &RenderSettings::earlyShape, 0.0f, 1.0f, "envelope of the early gains"},
    {"cluster_start", &RenderSettings::clusterStart, 1.0f, 300.0f, "start of the cluster, ms"},
    {"cluster_end", &RenderSettings::clusterEnd, 1.0f, 300.0f, "end of the cluster, ms"},
    {"cluster_distr", &RenderSettings::clusterDistr, 0.1f, 0.9f, "centroid of the cluster"},
    {"reverb_start", &RenderSettings::reverbStart, 1.0f, 500.0f, "start of the late reverberation, ms"},
    {"samplerate", &RenderSettings::sampleRate, 8000.0f, 384000.0f, "sample rate, Hz"},
};

const ShelfOption shelfOptions[] = {
    {"direct", &RenderSettings::direct, "direct sound"},
    {"room", &RenderSettings::room, "room bus"},
    {"early", &RenderSettings::early, "early reflections"},
    {"cluster", &RenderSettings::cluster, "cluster"},
};

const SectionWord sectionWords[] = {
    {"early", "start", "early_start"},     {"early", "end", "early_end"},     {"early", "distr", "early_distr"},
    {"early", "width", "early_width"},     {"early", "shape", "early_shape"}, {"cluster", "start", "cluster_start"},
    {"cluster", "end", "cluster_end"},     {"cluster", "distr", "cluster_distr"},
};

// A shelf list's ranges: overall gain, three band gains, two crossovers.
constexpr float shelfMinimum[6] = {-200.0f, -30.0f, -30.0f, -30.0f, 20.0f, 20.0f};
constexpr float shelfMaximum[6] = {30.0f, 30.0f, 30.0f, 30.0f, 20000.0f, 20000.0f};

/// The coordinate notations of the position messages, for the help.
struct Notation
{
    ondo::Coordinates::Format format;
    const char* numbers;
    const char* meaning;
};

const Notation notations[] = {
    {ondo::Coordinates::xyz, "X Y Z", "metres: +x right, +y front, +z up"},
    {ondo::Coordinates::xy, "X Y", "metres, on the floor plane (z 0)"},
    {ondo::Coordinates::x, "X", "metres; the other two coordinates stay"},
    {ondo::Coordinates::y, "Y", "metres; the other two coordinates stay"},
    {ondo::Coordinates::z, "Z", "metres; the other two coordinates stay"},
    {ondo::Coordinates::xIncrement, "DX", "metres added to x"},
    {ondo::Coordinates::yIncrement, "DY", "metres added to y"},
    {ondo::Coordinates::zIncrement, "DZ", "metres added to z"},
    {ondo::Coordinates::ade, "A D E", "azimuth (deg), distance (m), elevation (deg)"},
    {ondo::Coordinates::aed, "A E D", "azimuth (deg), elevation (deg), distance (m)"},
    {ondo::Coordinates::ae, "A E", "azimuth and elevation (deg) at 1 m"},
    {ondo::Coordinates::ad, "A D", "azimuth (deg) and distance (m), elevation 0"},
    {ondo::Coordinates::az, "A", "azimuth (deg) at 1 m, elevation 0"},
    {ondo::Coordinates::azim, "A", "azimuth (deg); elevation and distance stay"},
    {ondo::Coordinates::azimIncrement, "DA", "degrees added to the azimuth"},
    {ondo::Coordinates::elev, "E", "elevation (deg); azimuth and distance stay"},
    {ondo::Coordinates::elevIncrement, "DE", "degrees added to the elevation"},
    {ondo::Coordinates::azimelev, "A E", "azimuth and elevation (deg); distance stays"},
    {ondo::Coordinates::dist, "D", "distance (m); the direction stays"},
    {ondo::Coordinates::distIncrement, "DD", "metres added to the distance"},
    {ondo::Coordinates::distMultiply, "F", "the distance times F"},
    {ondo::Coordinates::quor3, "A D E", "as ade, but azimuth positive to the left"},
    {ondo::Coordinates::wfs, "A D", "azimuth positive to the left (deg), distance (m), elevation 0"},
    {ondo::Coordinates::sofaCartesian, "X Y Z", "as xyz"},
    {ondo::Coordinates::sofaSpherical, "A E D", "as aed, but azimuth positive to the left"},
};

constexpr double minimumDuration = 0.01;
constexpr double maximumDuration = 600.0;

std::string formatNumber(double value)
{
    std::ostringstream text;
    text << value;
    return text.str();
}

double parseNumber(const std::string& option, const std::string& text)
{
    const char* begin = text.c_str();
    char* end = nullptr;
    const double value = std::strtod(begin, &end);
    if (text.empty() || end == begin || *end != '\0' || !std::isfinite(value))
        throw UsageError("--" + option + " takes a number, not \"" + text + "\"");
    return value;
}

/// Clips `value`, read from `text`, into its range and says so in a note that quotes the
/// text as given: the value itself may not print as the user wrote it.
template <typename T>
T clipped(const std::string& option, const std::string& text, T value, T minimum, T maximum,
          std::vector<std::string>& notes)
{
    if (value >= minimum && value <= maximum)
        return value;
    const T result = value < minimum ? minimum : maximum;
    notes.push_back("--" + option + " " + text + " is outside " + formatNumber(double(minimum)) + ".." +
                    formatNumber(double(maximum)) + "; clipped to " + formatNumber(double(result)));
    return result;
}

/// A float option's value, clipped in double precision first: a double beyond the float
/// range has no float to become.
float readFloat(const std::string& option, const std::string& text, float minimum, float maximum,
                std::vector<std::string>& notes)
{
    return static_cast<float>(clipped<double>(option, text, parseNumber(option, text), minimum, maximum, notes));
}

int readInteger(const std::string& option, const std::string& text, int minimum, int maximum,
                std::vector<std::string>& notes)
{
    const char* begin = text.c_str();
    char* end = nullptr;
    // strtoll saturates beyond its range, which the clip below then brings in.
    const long long value = std::strtoll(begin, &end, 10);
    if (text.empty() || end == begin || *end != '\0')
        throw UsageError("--" + option + " takes a whole number, not \"" + text + "\"");
    return static_cast<int>(clipped<long long>(option, text, value, minimum, maximum, notes));
}

std::vector<std::string> splitWords(const std::string& text)
{
    std::istringstream stream(text);
    std::vector<std::string> words;
    for (std::string word; stream >> word;)
        words.push_back(word);
    return words;
}

/// Hands out the arguments one at a time; a value that holds spaces counts as several.
class ArgumentReader
{
public:
    explicit ArgumentReader(const std::vector<std::string>& arguments) : arguments(arguments) {}

    bool atEnd() const { return position >= arguments.size(); }
    const std::string& next() { return arguments[position++]; }

    std::string value(const std::string& option)
    {
        if (atEnd())
            throw UsageError("--" + option + " needs a value");
        return next();
    }

    /// The values of an option that takes `count` numbers, given either as separate
    /// arguments or quoted together as one.
    std::vector<std::string> values(const std::string& option, std::size_t count)
    {
        std::vector<std::string> words = splitWords(value(option));
        while (words.size() < count && !atEnd() && !isOption(arguments[position]))
            words.push_back(next());
        return words;
    }

    static bool isOption(const std::string& argument)
    {
        return argument.size() > 2 && argument.compare(0, 2, "--") == 0 &&
               !std::isdigit(static_cast<unsigned char>(argument[2])) && argument[2] != '.';
    }

private:
    const std::vector<std::string>& arguments;
    std::size_t position = 0;
};

template <typename Option, std::size_t N>
const Option* findOption(const Option (&table)[N], const std::string& name)
{
    for (const Option& option : table)
        if (name == option.name)
            return &option;
    return nullptr;
}

void readShelf(const ShelfOption& option, ArgumentReader& reader, CommandLine& result)
{
    const std::vector<std::string> words = reader.values(option.name, 6);
    // The two-word form of the object's "early" and "cluster": a structure attribute by name.
    if (words.size() == 2 && !words[0].empty() && std::isalpha(static_cast<unsigned char>(words[0][0])))
    {
        for (const SectionWord& entry : sectionWords)
            if (words[0] == entry.word && std::string(option.name) == entry.section)
            {
                const FloatOption& target = *findOption(floatOptions, entry.attribute);
                result.settings.*target.field =
                    readFloat(target.name, words[1], target.minimum, target.maximum, result.notes);
                result.settings.givenOptions.insert(target.name);
                return;
            }
        throw UsageError("--" + std::string(option.name) + " does not know \"" + words[0] + "\"");
    }
    if (words.size() != 6)
        throw UsageError("--" + std::string(option.name) +
                         " takes six numbers: gain, low, middle and high gains (dB), low and high crossovers (Hz)");
    ShelfList& list = result.settings.*option.field;
    for (std::size_t i = 0; i < 6; ++i)
        list[i] = readFloat(option.name, words[i], shelfMinimum[i], shelfMaximum[i], result.notes);
    result.settings.givenOptions.insert(option.name);
}
} // namespace

CommandLine parseCommandLine(const std::vector<std::string>& arguments)
{
    CommandLine result;
    RenderSettings& settings = result.settings;
    ArgumentReader reader(arguments);
    while (!reader.atEnd())
    {
        const std::string argument = reader.next();
        if (argument == "--help" || argument == "-h")
        {
            result.helpRequested = true;
            continue;
        }
        if (argument.size() < 3 || argument.compare(0, 2, "--") != 0)
            throw UsageError("unexpected argument \"" + argument + "\" (options start with --; see --help)");
        const std::string name = argument.substr(2);

        if (const IntOption* option = findOption(intOptions, name))
        {
            settings.*option->field =
                readInteger(name, reader.value(name), option->minimum, option->maximum, result.notes);
            settings.givenOptions.insert(name);
        }
        else if (const FloatOption* floatOption = findOption(floatOptions, name))
        {
            settings.*floatOption->field =
                readFloat(name, reader.value(name), floatOption->minimum, floatOption->maximum, result.notes);
            settings.sampleRateGiven |= floatOption->field == &RenderSettings::sampleRate;
            settings.givenOptions.insert(name);
        }
        else if (const ShelfOption* shelf = findOption(shelfOptions, name))
            readShelf(*shelf, reader, result);
        else if (name == "duration")
        {
            const std::string text = reader.value(name);
            settings.duration =
                clipped(name, text, parseNumber(name, text), minimumDuration, maximumDuration, result.notes);
        }
        else if (name == "source")
            settings.sourceMessages.push_back(reader.value(name));
        else if (name == "speakers")
            settings.speakersMessage = reader.value(name);
        else if (name == "out")
            settings.outputPath = reader.value(name);
        else if (name == "in")
            settings.inputPath = reader.value(name);
        else if (name == "quiet")
            settings.quiet = true;
        else if (name == "osc")
            settings.oscMessages.push_back(reader.value(name));
        else if (name == "print-state")
            settings.printState = true;
        else if (name == "preset")
            settings.presetPath = reader.value(name);
        else if (name == "export-preset")
            settings.exportPresetPath = reader.value(name);
        else
            throw UsageError("unknown option \"" + argument + "\" (see --help)");
    }
    if (settings.impulseSource > settings.numSources)
        throw UsageError("--impulse-source " + std::to_string(settings.impulseSource) + " names no source: there are " +
                         std::to_string(settings.numSources));
    return result;
}

std::string helpText()
{
    const RenderSettings defaults;
    std::ostringstream text;
    const auto line = [&text](const std::string& usage, const std::string& help, const std::string& detail) {
        // A usage longer than its column still keeps two blanks before the help.
        text << "  " << std::left << std::setw(34) << usage << (usage.size() >= 34 ? "  " : "") << help;
        if (!detail.empty())
            text << " [" << detail << "]";
        text << "\n";
    };
    text << "Usage: tarvoverb-render [options]\n"
            "Renders a room offline: the impulse response of the room, or a recording through it, to a\n"
            "32-bit float WAV file with one channel per speaker. Options are the object's attributes\n"
            "and messages; values outside a range are clipped into it.\n\n"
            "Room:\n";
    for (const IntOption& option : intOptions)
        if (std::string(option.name) != "blocksize" && std::string(option.name) != "impulse-source")
            line("--" + std::string(option.name) + " N", option.help,
                 "default " + std::to_string(defaults.*option.field) + ", " + std::to_string(option.minimum) + ".." +
                     std::to_string(option.maximum));
    for (const FloatOption& option : floatOptions)
        if (std::string(option.name) != "samplerate")
            line("--" + std::string(option.name) + " X", option.help,
                 "default " + formatNumber(defaults.*option.field) + ", " + formatNumber(option.minimum) + ".." +
                     formatNumber(option.maximum));
    for (const ShelfOption& option : shelfOptions)
    {
        const ShelfList& list = defaults.*option.field;
        std::string values;
        for (float v : list)
        {
            if (!values.empty())
                values += ' ';
            values += formatNumber(v);
        }
        line("--" + std::string(option.name) + " G0 Gl Gm Gh fl fh",
             std::string("shelf of the ") + option.help + ": dB, dB, dB, dB, Hz, Hz",
             "default " + values + "; gain -200..30, bands -30..30, Hz 20..20000");
    }
    line("--early start|end|distr|width|shape X", "one early structure attribute, as --early_start etc.", "");
    line("--cluster start|end|distr X", "one cluster structure attribute", "");
    line("--source \"I [format] numbers\"", "places source I (from 1), e.g. \"1 ade 30 2 0\"; repeatable",
         "default layout; format ade when omitted");
    line("--speakers \"[format] numbers\"", "places all speakers, e.g. \"ade -30 1 0 30 1 0\"", "default layout");
    text << "\nRun:\n";
    line("--samplerate HZ", "sample rate",
         "default " + formatNumber(defaults.sampleRate) + " or the --in file's, 8000..384000");
    line("--blocksize N", "samples per block", "default " + std::to_string(defaults.blockSize) + ", 1..4096");
    line("--duration S", "seconds to render",
         "default: the longest band decay plus 0.5 s, or the input plus that; " + formatNumber(minimumDuration) +
             ".." + formatNumber(maximumDuration));
    line("--in FILE.wav", "renders a recording (16/24/32-bit PCM or float WAV) instead of an impulse",
         "channel c feeds source c; missing sources are silent");
    line("--impulse-source N", "the source that gets the impulse", "default 0: every source at once");
    line("--out FILE.wav", "where the result goes", "default " + defaults.outputPath);
    line("--quiet", "prints no summary", "");
    line("--osc \"ADDRESS args\"", "an OSC message to the reverberator, e.g. \"/reverb/tr0 3.5\"; repeatable",
         "applied in order after the other options");
    line("--print-state", "prints the reverberator's state as OSC lines and exits", "");
    line("--preset FILE", "loads a saved reverberator state first; the other options change it",
         "the counts, rate and block size too, unless given");
    line("--export-preset FILE", "saves the reverberator's state once every option is applied", "");
    line("--help", "this text", "");
    text << "\nPositions (--source, --speakers): a notation name, then its numbers. Azimuth 0 is the\n"
            "front and positive to the right, elevation positive up, in degrees; distances in metres.\n"
            "Azimuths wrap around the circle. The room treats a source nearer than 0.3 m as at 0.3 m\n"
            "and one farther than 100 m as at 100 m. A \"source\" starts from the source's present\n"
            "position, so a notation of fewer numbers changes only what it names; \"speakers\" start\n"
            "from the origin. Without a name, ade applies (with a note).\n"
            "\nPresets (--preset, --export-preset): the extension picks the form, in any case: .txt (one\n"
            "OSC message a line), .osc (one binary OSC bundle), .xml, or .coll (the numbered lines of Max's\n"
            "coll). A preset holds the reverberator's state, the object's attributes; positions are not\n"
            "part of it, and --infinite neither.\n";
    for (const Notation& notation : notations)
        text << "  " << std::left << std::setw(15) << ondo::Coordinates::toString(notation.format).c_str()
             << std::setw(8) << notation.numbers << notation.meaning << "\n";
    return text.str();
}
std::string plural(std::size_t count, const std::string& noun)
{
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}
} // namespace tarvo::render
