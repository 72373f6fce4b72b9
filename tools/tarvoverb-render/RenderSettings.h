#pragma once

#include "osc/TarvoDspOscBundle.h"

#include <array>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace tarvo::render
{
/// Six numbers of a section's shelf as the object takes them: overall gain, low, middle and
/// high band gains (dB), then the low and high crossovers (Hz).
using ShelfList = std::array<float, 6>;

/// Everything a render needs: the object's attributes with their defaults, the position
/// messages, and the offline run itself.
struct RenderSettings
{
    int numSources = 6;
    int numSpeakers = 6;
    int numInternals = 8;

    float gain = 0.0f;
    float modalDensity = 0.86f;
    float tr0 = 1.995f;
    float trl = 1.0f;
    float trm = 1.0f;
    float trh = 0.5f;
    float fl = 250.0f;
    float fh = 8000.0f;
    int air = 0;
    float airFreq = 10000.0f;
    int infinite = 0;

    ShelfList direct{0.0f, 0.0f, 0.0f, 0.0f, 177.0f, 5657.0f};
    ShelfList room = direct;
    ShelfList early = direct;
    ShelfList cluster = direct;

    float earlyStart = 22.22f;
    float earlyEnd = 39.71f;
    float earlyDistr = 0.5f;
    float earlyWidth = 30.0f;
    float earlyShape = 0.5f;
    float clusterStart = 42.47f;
    float clusterEnd = 105.64f;
    float clusterDistr = 0.5f;
    float reverbStart = 95.37f;

    /// "source" messages, each "index [format] numbers", applied in order.
    std::vector<std::string> sourceMessages;
    /// A "speakers" message, "[format] numbers"; empty keeps the default layout.
    std::string speakersMessage;

    float sampleRate = 44100.0f;
    /// False while the rate is the default: a recording given with --in then sets it.
    bool sampleRateGiven = false;
    int blockSize = 64;
    /// Seconds; 0 chooses a length that holds the whole decay.
    double duration = 0.0;
    std::string outputPath = "tarvoverb-ir.wav";
    /// A recording to render instead of an impulse; empty for the impulse response.
    std::string inputPath;
    /// 1-based source that receives the impulse; 0 for all sources at once.
    int impulseSource = 0;
    bool quiet = false;
    /// OSC text lines handed to the reverberator after everything else, in order.
    std::vector<std::string> oscMessages;
    /// Print the reverberator's state instead of rendering.
    bool printState = false;

    /// A preset (.txt, .osc, .xml or .coll) loaded into the reverberator under the options.
    std::string presetPath;
    /// Where the reverberator's state is saved once every option is applied; empty for nowhere.
    std::string exportPresetPath;
    /// The options the command line gave, by name ("tr0", "early_start", "direct"...): over a
    /// preset, only these change the room.
    std::set<std::string> givenOptions;
    /// The preset's messages for the reverberator, once `readPreset` has read the file.
    std::optional<ondo::OSCBundle> presetState;
};

/// A command line that can't be honoured, with the reason in the message.
class UsageError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// What the command line asks for.
struct CommandLine
{
    RenderSettings settings;
    bool helpRequested = false;
    /// One line for each value that was clipped into its range, as the object's filter would.
    std::vector<std::string> notes;
};

/// Reads `--name value...` options. Throws `UsageError` for an unknown option, a missing or
/// malformed value; clips values that are out of range and says so in `notes`.
CommandLine parseCommandLine(const std::vector<std::string>& arguments);

/// Every option with its default and range, one a line, and the coordinate notations.
std::string helpText();

/// "1 speaker", "2 speakers".
std::string plural(std::size_t count, const std::string& noun);
} // namespace tarvo::render
