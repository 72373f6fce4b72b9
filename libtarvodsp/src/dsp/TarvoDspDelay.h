#pragma once

#include "common/TarvoDspRelaxedAtomic.h"
#include "containers/TarvoDspVector.h"
#include "dsp/TarvoDspAudioProcessorWithOscInAudioInterrupt.h"
#include "dsp/TarvoDspHandOverCount.h"
#include "dsp/TarvoDspRamp.h"

#include <algorithm>
#include <cstdint>
#include <string>

namespace ondo
{
/// A circular delay line of a power-of-two length, read by one of nine interpolators at a
/// delay that glides along a `Ramp` (in samples). One input, one output.
///
/// The line is also the shared storage of other readers (`TapOutEconomy`): `write`, `read`
/// and `advance` are the three steps of `process`, open to owners that interleave them.
///
/// Positions are worked out in the whole ring, which the maximum delay sizes, but the samples
/// live in a window of it: a power of two that holds the longest delay read so far with the
/// block and 50 ms more. The window grows on the audio thread, inside storage reserved for
/// the whole ring, keeping what it held; a long line read at short delays thus keeps its
/// working set in the caches. History older than the window is not kept: a delay that
/// lengthens by more than the window's headroom within one block reads silence where the
/// window had not reached. (Below two samples of delay the four-point readers also take the
/// next place, not yet written: the window holds there another stale sample than the whole
/// ring would.)
class Delay : public AudioProcessorWithOscInAudioInterrupt
{
public:
    enum InterpolationMode : std::uint32_t
    {
        nearest = 0,      ///< one sample
        linear = 1,       ///< two samples
        lagrange3 = 2,    ///< four samples, cubic through all four
        allpass = 3,      ///< two samples and the previous output
        nearestXfade = 4, ///< reads exactly as `nearest`
        hermite3 = 5,     ///< four samples, Catmull-Rom
        watte3 = 6,       ///< four samples, a parabola fitted to the outer pairs
        bspline3 = 7,     ///< four samples, smoothing
        parabolic = 8,    ///< four samples, smoothing
    };

    static constexpr float defaultInterpolationTimeMs = 30.0f;
    /// The ring keeps at least this many samples beyond the longest delay, so a block of up
    /// to this length is written whole before it is read. Longer blocks are cut.
    static constexpr std::uint32_t maximumBlockSize = 8192;
    /// Samples the constructor adds to the maximum asked for.
    static constexpr float constructionHeadroomSamples = 8192.0f;

    /// "/interpolation/mode" s, "/interpolation/time" n (above 0), "/delay" n in ms (a
    /// negative value is taken and ignored; the line grows when need be, which allocates),
    /// "/length" n in ms, after the "/dsp" subtree. Thread of the caller.
    bool processOscMessage(const OSCMessage& message, std::int32_t& context) override;
    /// The "/dsp" state, then "/delay", "/length", "/interpolation/mode", "/interpolation/time".
    OSCBundle getState() const override;
    OscDocumentation getDocumentation() const override;

    /// What a reader keeps of a fixed delay read with a rounding mode, so that the next block
    /// at the same delay finds its start with integer steps alone: the delay, the ring size
    /// it was worked out for, and how many samples behind the write position plus one ring
    /// the read starts. One per reader, touched by the audio thread only.
    struct RoundedStart
    {
        float delay = 0.0f;
        std::uint64_t ringSize = 0; ///< 0: nothing kept yet
        std::uint64_t behind = 0;
        /// False where the float position must be worked out each time (see `fixedStart`).
        bool exact = false;
    };

    /// The mode of a name; a name that isn't known gives "linear".
    static InterpolationMode interpolationModeFromName(const std::string& name);
    /// The name of a mode; a value that isn't known gives "linear".
    static std::string interpolationModeName(std::uint32_t mode);

    /// A line holding at least `maximumDelayMs` plus 8192 samples, at 44100 Hz and blocks of
    /// 512, standing at a delay of 0. Control thread; allocates.
    explicit Delay(float maximumDelayMs = 200.0f, InterpolationMode mode = linear);

    /// Writes the block, reads it back at the delay, advances. A delay of 0 passes the
    /// block through. Audio thread; real-time safe.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override;
    /// The rest of `process` for a block of `n` (at most `maximumBlockSize`) samples already
    /// put in the line (through `findWriteRun`): reads it back at the delay and advances.
    /// Audio thread; real-time safe.
    void processWritten(float* output, std::uint32_t n);
    /// `processWritten` that leaves the block where it lies when the line holds it as `read`
    /// would give it in one run: returns the line's own samples (to be read only, until the
    /// line is next written), or `scratch` holding them. Audio thread; real-time safe.
    float* processWrittenInPlace(float* scratch, std::uint32_t n)
    {
        // Inline: lines are run by the dozen every block, most of them steady.
        if (const float* run = findReadRun(n, delayRamp, interpolationMode, &ownStart))
        {
            advance(n);
            return const_cast<float*>(run); // the ring's own storage, which this line owns
        }
        processWritten(scratch, n);
        return scratch;
    }
    /// Keeps the delay in samples; empties the line. Control thread, between blocks; allocates.
    void setSampleRate(float rate) override;
    /// Resizes the ramp scratch and empties the line. Control thread, between blocks; allocates.
    void setBufferSize(std::uint32_t size) override;
    /// Zeroes the line and the allpass state; the write position stays. Real-time safe.
    void clear() override;

    /// Resizes the ring for `ms` plus 50 ms and 8193 samples, and empties it; negative values
    /// are ignored. Never shrinks storage. Before audio starts or between blocks; allocates.
    /// The window starts small again.
    void setMaximumDelay(float ms);
    /// Glides to `ms` over the interpolation time, or jumps with `immediate`. Negative values
    /// count as 0. A delay above the maximum enlarges (and empties) the line first, which
    /// allocates; below the maximum this is a hand-over safe while the audio thread runs.
    void setDelay(float ms, bool immediate = false);
    /// `setDelay` in samples.
    void setDelayInSamples(float samples, bool immediate = false);
    /// Any thread.
    void setInterpolationMode(InterpolationMode mode)
    {
        interpolationMode = mode;
        handOvers.count();
    }
    /// Glide time of later delay changes (ms); stored only when above 0. Any thread.
    void setInterpolationTime(float ms);

    /// The target delay in milliseconds.
    float getDelay() const { return samplesToMs(delayRamp.getTargetValue()); }
    float getDelayInSamples() const { return delayRamp.getTargetValue(); }
    float getMaximumDelay() const { return maximumDelay; }
    InterpolationMode getInterpolationMode() const { return interpolationMode; }
    float getInterpolationTime() const { return interpolationTime; }
    std::uint64_t getRingSize() const { return ringSize; }
    /// How many of the newest samples the line keeps (see the class).
    std::uint64_t getWindowSize() const { return windowSize; }
    std::uint64_t getAllocatedSize() const { return allocatedSize; }
    std::uint64_t getWriteIndex() const { return writeIndex; }
    /// How many more blocks of `n` a run of this block's, found in the line at `run`, can move
    /// on by `n` each and still lie whole before the window's end. Audio thread.
    std::uint64_t blocksInPlace(const float* run, std::uint32_t n) const
    {
        const auto index = static_cast<std::uint64_t>(run - (buffer.data() + guard));
        return (windowSize - index) / n - 1;
    }
    const Ramp& getDelayRamp() const { return delayRamp; }
    /// Has the hand-overs that may change where the line's own read lies (delay, interpolator,
    /// rate), and every widening and emptying of its window, counted in `owner` too. A run found in place lies,
    /// until the next one, a block further on in each later block of the same size: the owner
    /// may then move the run on instead. Control thread, before the audio thread runs.
    void reportChangesTo(HandOverCount* owner) { handOvers.alsoCountIn(owner); }
    /// Where the line's own fixed reads start. Audio thread.
    const RoundedStart& getOwnStart() const { return ownStart; }

    /// Makes sure that blocks of `n` samples read at delays up to `delayInSamples`, or any
    /// delay held before since the line was emptied, find what was written, by widening the
    /// window when need be; reads and writes see to it themselves. A widening moves the
    /// samples: runs found in the line before it no longer hold them (`getWindowSize` tells).
    /// Audio thread; real-time safe.
    void hold(float delayInSamples, std::uint32_t n)
    {
        // The longest delay so far counts for writes too: a longer block written over the
        // window's oldest places would take what that delay reads next.
        if (delayInSamples > longestHeld)
            longestHeld = delayInSamples;
        if (!(longestHeld + static_cast<float>(n) <= windowReach))
            widenWindow(longestHeld, n);
    }
    /// Writes `n` (at most `maximumBlockSize`) samples at the write position, without
    /// advancing it. Audio thread; real-time safe.
    void write(const float* input, std::uint32_t n);
    /// Reads `n` (at most `maximumBlockSize`) samples ending just before the write position
    /// plus `n`, at the delay held by `delayInSamples`, which advances when it glides.
    /// Audio thread; real-time safe.
    /// `start`, when given, is the reader's own memory of where its fixed delay starts.
    void read(float* output, std::uint32_t n, Ramp& delayInSamples, InterpolationMode mode, float& allpassState,
              RoundedStart* start = nullptr);
    /// Moves the write position on by `n`. Audio thread; real-time safe.
    void advance(std::uint32_t n)
    {
        writeIndex = (writeIndex + n) & ringMask;
        written = 0;
    }
    /// Where the `n` samples that `read` would give lie in the line, when they lie there as
    /// they are (a delay that doesn't glide, read with a rounding mode) in one run before the
    /// window's end; else null. Lets an owner use them without a copy. Audio thread;
    /// real-time safe.
    const float* findReadRun(std::uint32_t n, const Ramp& delayInSamples, InterpolationMode mode,
                             RoundedStart* start = nullptr)
    {
        if (delayInSamples.isRunning() || !roundsToWholeSamples(mode))
            return nullptr;
        const float delay = delayInSamples.getValue(0);
        hold(delay, n);
        const std::uint64_t index = roundedStart(delay, mode, start);
        return index + n <= windowSize ? buffer.data() + guard + index : nullptr;
    }
    /// Where `write` would put `n` samples, when they fit in one run before the window's end;
    /// else null. Lets an owner build them in place, before any read of the block. Audio
    /// thread; real-time safe.
    float* findWriteRun(std::uint32_t n)
    {
        hold(0.0f, n);
        const std::uint64_t index = writeIndex & windowMask;
        if (index + n > windowSize)
            return nullptr;
        written = n;
        return buffer.data() + guard + index;
    }

    /// Enlarges (and empties) the line when `ms` lies beyond the maximum. Allocates then.
    void ensureMaximumDelay(float ms)
    {
        if (ms > maximumDelay)
            setMaximumDelay(ms);
    }
    /// Sets a reader's delay ramp to `samples` (negative counts as 0): at once, or over
    /// `glideMs`. Any thread.
    static void retarget(Ramp& delayInSamples, float samples, bool immediate, float glideMs);

    /// The rule of the economical readers, at the head of a block: a line that isn't gliding,
    /// or that reads without interpolation anyway, reads with "nearest". Audio thread.
    static void economise(RelaxedAtomic<InterpolationMode>& modeInUse, const Ramp& ramp)
    {
        if (!roundsToWholeSamples(modeInUse.load()) && ramp.isRunning())
            return;
        modeInUse = nearest;
    }

private:
    friend class DelayEconomy;

    float samplesToMs(float samples) const { return samples * 1000.0f / sampleRate; }
    void refreshGuards();
    /// Widens the window for `delay`, the block and 50 ms, moving the samples it keeps to
    /// their places in the wider window and zeroing the places of those it didn't keep.
    void widenWindow(float delay, std::uint32_t n);
    /// Empties the line: zeroes what the windows reached, back to the smallest window.
    void resetWindow();
    /// The window's headroom in samples, and the longest delay plus block a window holds.
    float headroom() const;
    float reachOfWindow(std::uint64_t size) const;
    /// Elements of `buffer` before the ring proper; the readers look one sample back and two on.
    static constexpr std::uint64_t guard = 4;

    static bool roundsToWholeSamples(InterpolationMode mode) { return mode == nearest || mode == nearestXfade; }
    /// The ring index of the first sample read at a fixed `delay`, and its fraction (0 for the
    /// rounding modes, which have no use for it), through `start` when given.
    std::uint64_t fixedStart(float delay, InterpolationMode mode, float& fraction, RoundedStart* start) const;
    /// `fixedStart` of a rounding mode; a start kept for this delay answers inline.
    std::uint64_t roundedStart(float delay, InterpolationMode mode, RoundedStart* start) const
    {
        if (start != nullptr && start->exact && start->delay == delay && start->ringSize == ringSize)
            return (writeIndex + ringSize - start->behind) & windowMask;
        float unused = 0.0f;
        return fixedStart(delay, mode, unused, start);
    }
    void remember(RoundedStart& start, float delay) const;
    void readFixed(float* output, std::uint32_t n, float delay, InterpolationMode mode, float& allpassState,
                   RoundedStart* start);
    /// A gliding read: each chunk's positions held before they are read.
    void readGliding(float* output, std::uint32_t n, Ramp& delayInSamples, InterpolationMode mode,
                     float& allpassState);

    std::uint64_t ringSize = 0;
    std::uint64_t allocatedSize = 0;
    /// The window: a power of two, at most the ring, whose places the ring's indices masked
    /// by `windowMask` are; `windowReach` is the longest delay plus block it holds with its
    /// headroom to spare.
    std::uint64_t windowSize = 0;
    std::uint64_t windowMask = 0;
    float windowReach = 0.0f;
    /// Samples of the block put in the line ahead of the write position, which a widening
    /// keeps.
    std::uint32_t written = 0;
    /// The longest delay read since the line was emptied, in samples.
    float longestHeld = 0.0f;
    float maximumDelay = 0.0f;
    std::uint64_t writeIndex = 0;
    float allpassState = 0.0f;
    RelaxedAtomic<InterpolationMode> interpolationMode;
    RelaxedAtomic<float> interpolationTime = defaultInterpolationTimeMs;
    /// The ring proper starts at element `guard`; the elements around it mirror the ring's
    /// other end so that the four-point readers never test for the wrap.
    Vector<float> buffer;
    Ramp delayRamp;
    std::uint64_t ringMask = 0;
    Vector<float> delayPerSample;
    /// Where each sample of a gliding block is read.
    Vector<std::int32_t> readIndices;
    /// The start of the line's own fixed reads.
    RoundedStart ownStart;
    HandOverCount handOvers;
};
} // namespace ondo
