#pragma once

#include "common/TarvoDspRelaxedAtomic.h"
#include "containers/TarvoDspVector.h"
#include "dsp/TarvoDspAudioProcessorWithOscInAudioInterrupt.h"
#include "dsp/TarvoDspCrossfade.h"
#include "dsp/TarvoDspPendingCoefficients.h"
#include "math/TarvoDspVectorPrimitives.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>

namespace ondo
{
/// A filter whose coefficients change while audio runs, without a click. Two instances of
/// `T` are held: one plays; new coefficients go into the other, which runs silently for
/// half a millisecond so that its start-up transient dies away; then the output fades
/// across. The stages form a ring:
///   0 A alone -> 2 B warming -> 3 fading to B -> 1 B alone -> 4 A warming -> 5 fading to A -> 0.
/// A change that arrives while a fade runs waits for its end; only the last one plays.
template <typename T>
class FadedFilters : public AudioProcessorWithOscInAudioInterrupt
{
public:
    static constexpr float defaultCrossfadeTimeMs = 5.0f;
    static constexpr float halfPi = 1.5707964f;
    static constexpr float warmUpSeconds = 0.0005f;

    enum State : int
    {
        playingA = 0,
        playingB = 1,
        warmingB = 2,
        fadingToB = 3,
        warmingA = 4,
        fadingToA = 5,
    };

    /// Copies `values` (as many as `T` takes) into the pending group. Without `immediately`
    /// any thread may call it while the audio thread runs (real-time safe, lock-free); with
    /// it, the stage update runs on the calling thread, which belongs before audio starts.
    void setCoefficients(const float* values, bool immediately)
    {
        const int n = static_cast<int>(pendingCoefficients.size());
        setPending([&](float* slot) { primitives::vectorCopy32(values, slot, n); }, immediately);
    }

    /// Shares a counter that every hand-over to this filter bumps once it is published (and
    /// every rate, size or memory change), so that an owner of many filters learns from one
    /// load whether any of them may have moved. Control thread, before audio starts.
    void shareChangeCounter(std::atomic<std::uint32_t>* counter) { changeCounter = counter; }

    /// Milliseconds, floored at 0; 0 makes every change immediate. Any thread.
    void setCrossfadeTime(float ms) { crossfadeTime = ms > 0.0f ? ms : 0.0f; }
    float getCrossfadeTime() const { return crossfadeTime; }
    void setCrossfadeType(Crossfade::Type type) { crossfadeType = type; }
    Crossfade::Type getCrossfadeType() const { return crossfadeType; }

    /// The block kernel when the inlet is active and the outlet connected; else silence.
    /// Audio thread; real-time safe.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override
    {
        if (isInletActive(0) && isOutletConnected(0))
            filterBlock(outputs[0], inputs[0], numSamples, false);
        else
            std::memset(outputs[0], 0, numSamples * sizeof(float));
    }

    /// Runs the stage update, then plays, warms or fades. With `add` the result is added
    /// to `out`. `out` and `in` may be the same. Audio thread; real-time safe.
    void filterBlock(float* out, const float* in, std::uint32_t n, bool add = false)
    {
        updateState();
        runBlock(out, in, n, add);
    }

    /// The first half of `filterBlock`, for owners that run several channels' steady
    /// instances side by side: runs the stage update and returns the instance that will
    /// play alone through the whole block, or null. Then either `runBlock`, or run that
    /// instance's kernel for the block, must follow. Audio thread; real-time safe.
    T* beginBlock()
    {
        updateState();
        if (remaining >= 1)
            return nullptr;
        return state == playingA ? &filterA : (state == playingB ? &filterB : nullptr);
    }

    /// The second half of `filterBlock`: the block after the stage update. Audio thread;
    /// real-time safe.
    void runBlock(float* out, const float* in, std::uint32_t n, bool add = false)
    {
        const auto count = static_cast<int>(n);
        if (remaining >= count)
        {
            mix(out, in, n, add);
            remaining -= count;
        }
        else if (remaining < 1)
        {
            if (state == playingA)
                runAlone(filterA, bufferA, out, in, n, add);
            else if (state == playingB)
                runAlone(filterB, bufferB, out, in, n, add);
            else
                mix(out, in, n, add); // a warm-up held over: the present instance goes on
        }
        else
        {
            const auto k = static_cast<std::uint32_t>(remaining);
            mix(out, in, k, add);
            remaining = 0;
            if (state == fadingToB)
                runAlone(filterB, bufferB, out + k, in + k, n - k, add);
            else if (state == fadingToA)
                runAlone(filterA, bufferA, out + k, in + k, n - k, add);
            else
                mix(out + k, in + k, n - k, add); // increments are 0 while warming
        }
        if (remaining == 0)
        {
            if (state == fadingToB)
                state = playingB;
            else if (state == fadingToA)
                state = playingA;
        }
    }

    /// Both instances; the stage stays. Between blocks.
    void setSampleRate(float rate) override
    {
        const float clamped = clampSampleRate(rate);
        filterA.changeSampleRate(clamped);
        filterB.changeSampleRate(clamped);
        noteChange();
    }

    /// Control thread; allocates.
    void setBufferSize(std::uint32_t size) override
    {
        bufferA.resize(size);
        bufferB.resize(size);
        filterA.changeBufferSize(size);
        filterB.changeBufferSize(size);
        noteChange();
    }

    /// Empties both instances; gains, stage and a pending change stay.
    void clear() override
    {
        filterA.clear();
        filterB.clear();
        noteChange();
    }

    int getFadeStage() const { return state; }
    int getRemaining() const { return remaining; }
    float getGainA() const { return gainA; }
    float getGainB() const { return gainB; }
    float getIncrementA() const { return incrementA; }
    float getIncrementB() const { return incrementB; }
    bool isChangePending() const { return (pendingCoefficients.getFlags() & PendingCoefficients::changePending) != 0; }
    /// Whichever instance sounds alone in the steady stages, else null.
    const T* getSteadyFilter() const
    {
        return state == playingA ? &filterA : (state == playingB ? &filterB : nullptr);
    }
    T& getFilterA() { return filterA; }
    T& getFilterB() { return filterB; }
    std::size_t getNumPendingCoefficients() const { return pendingCoefficients.size(); }

    /// The fade length in samples for the present time and rate, at least 1.
    int getFadeLength() const
    {
        // Capped so that an absurd time cannot overflow the sample count.
        const double samples = std::ceil(static_cast<double>(crossfadeTime.load()) * 0.001 * sampleRate);
        const int n = static_cast<int>(std::min(samples, 1.0e9));
        return n == 0 ? 1 : n;
    }

protected:
    /// Both instances are made from `filterArguments`; the pending group has `numPending`
    /// zeros. Control thread; allocates.
    template <typename... Args>
    FadedFilters(Crossfade::Type type, std::size_t numPending, Args&&... filterArguments)
        : AudioProcessorWithOscInAudioInterrupt(1, 1), filterA(filterArguments...), filterB(filterArguments...),
          crossfadeType(type)
    {
        pendingCoefficients.resize(numPending);
        bufferA.resize(defaultBufferSize);
        bufferB.resize(defaultBufferSize);
    }

    /// What the incoming instance does once its coefficients are in: by default it starts
    /// from silence, its former memory never reaching the output.
    virtual void prepareIncoming(T& incoming, T& /*playing*/) { incoming.clear(); }

    /// Publishes a group that `fill(float* slot)` writes in place; then as `setCoefficients`.
    template <typename Fill>
    void setPending(Fill&& fill, bool immediately)
    {
        pendingCoefficients.writeWith(std::forward<Fill>(fill), immediately);
        if (immediately)
            updateState();
        noteChange();
    }

    /// After the change is in place: release, so that an owner which sees the new count
    /// (acquire) sees the change.
    void noteChange()
    {
        if (changeCounter != nullptr)
            changeCounter->fetch_add(1, std::memory_order_release);
    }

    /// Control thread, between blocks; allocates.
    void resizePending(std::size_t n) { pendingCoefficients.resize(n); }

    // The stage machine and the mix: audio thread only.

    void install(T& incoming, T& playing)
    {
        incoming.setCoefficients(pendingCoefficients.take());
        prepareIncoming(incoming, playing);
    }

    /// Gains (or phases) and their steps for the stage that starts.
    void startStage(float startA, float startB, float stepA, float stepB, float phase, float phaseStep)
    {
        if (crossfadeType == Crossfade::linear)
        {
            gainA = startA;
            gainB = startB;
            incrementA = stepA;
            incrementB = stepB;
        }
        else
        {
            gainA = gainB = phase;
            incrementA = incrementB = phaseStep;
        }
    }

    void updateState()
    {
        const std::uint32_t flags = pendingCoefficients.getFlags();
        if ((flags & PendingCoefficients::changePending) == 0 && state != warmingB && state != warmingA)
            return;
        if ((flags & PendingCoefficients::changeImmediately) == 0 && crossfadeTime > 0.0f)
        {
            switch (state)
            {
            case playingA:
                remaining = static_cast<int>(sampleRate * warmUpSeconds);
                install(filterB, filterA);
                startStage(1.0f, 0.0f, 0.0f, 0.0f, 0.0f, 0.0f);
                state = warmingB;
                break;
            case playingB:
                remaining = static_cast<int>(sampleRate * warmUpSeconds);
                install(filterA, filterB);
                startStage(0.0f, 1.0f, 0.0f, 0.0f, halfPi, 0.0f);
                state = warmingA;
                break;
            case warmingB:
            {
                const int length = getFadeLength();
                remaining = length;
                const auto n = static_cast<float>(length);
                startStage(1.0f, 0.0f, -1.0f / n, 1.0f / n, 0.0f, halfPi / n);
                state = fadingToB;
                break;
            }
            case warmingA:
            {
                // One step fewer on the way back, so that A ends exactly at 1.
                const int length = getFadeLength();
                remaining = length;
                // A length of 1 divides by 0: an infinite step that no sample uses.
                const auto n1 = static_cast<float>(length - 1);
                startStage(0.0f, 1.0f, 1.0f / n1, -1.0f / n1, halfPi, -halfPi / n1);
                state = fadingToA;
                break;
            }
            default: // fading: the change waits for the end of the fade
                break;
            }
            return;
        }
        if (state == playingA || state == fadingToB)
        {
            install(filterB, filterA);
            state = playingB;
            remaining = 0;
        }
        else if (state == playingB || state == fadingToA)
        {
            install(filterA, filterB);
            state = playingA;
            remaining = 0;
        }
    }

    /// One instance alone; with `add` through its buffer, a chunk at a time.
    void runAlone(T& instance, Vector<float>& buffer, float* out, const float* in, std::uint32_t n, bool add)
    {
        if (!add)
        {
            instance.filter(out, in, static_cast<int>(n));
            return;
        }
        const auto chunk = static_cast<std::uint32_t>(std::max<std::size_t>(buffer.size(), 1));
        for (std::uint32_t start = 0; start < n; start += chunk)
        {
            const int k = static_cast<int>(std::min(chunk, n - start));
            instance.filter(buffer.data(), in + start, k);
            primitives::vectorAdd32InPlace(buffer.data(), out + start, k);
        }
    }

    /// Both instances run and their outputs are weighed, gains moving a sample at a time.
    void mix(float* out, const float* in, std::uint32_t n, bool add)
    {
        const auto chunk = static_cast<std::uint32_t>(std::max<std::size_t>(std::min(bufferA.size(), bufferB.size()), 1));
        for (std::uint32_t start = 0; start < n; start += chunk)
        {
            const std::uint32_t k = std::min(chunk, n - start);
            filterA.filter(bufferA.data(), in + start, static_cast<int>(k));
            filterB.filter(bufferB.data(), in + start, static_cast<int>(k));
            switch (crossfadeType)
            {
            case Crossfade::cosine:
                weigh(out + start, k, add, [](float g) { return std::cos(g); }, [](float g) { return std::sin(g); });
                break;
            case Crossfade::squareCosine:
                weigh(
                    out + start, k, add,
                    [](float g) {
                        const float c = std::cos(g);
                        return c * c;
                    },
                    [](float g) {
                        const float s = std::sin(g);
                        return s * s;
                    });
                break;
            default:
                weighLinear(out + start, k, add);
                break;
            }
        }
    }

    void weighLinear(float* out, std::uint32_t n, bool add)
    {
        const float* a = bufferA.data();
        const float* b = bufferB.data();
        float gA = gainA, gB = gainB;
        const float iA = incrementA, iB = incrementB;
        auto one = [&](std::uint32_t i) {
            const float first = a[i] * gA;
            out[i] = (add ? out[i] + first : first) + b[i] * gB;
            gA += iA;
            gB += iB;
        };
        std::uint32_t i = 0;
        for (; i + 4 <= n; i += 4)
        {
            one(i);
            one(i + 1);
            one(i + 2);
            one(i + 3);
        }
        for (; i < n; ++i)
            one(i);
        gainA = gA;
        gainB = gB;
    }

    template <typename LawA, typename LawB>
    void weigh(float* out, std::uint32_t n, bool add, LawA lawA, LawB lawB)
    {
        const float* a = bufferA.data();
        const float* b = bufferB.data();
        for (std::uint32_t i = 0; i < n; ++i)
        {
            const float first = a[i] * lawA(gainA);
            out[i] = (add ? out[i] + first : first) + b[i] * lawB(gainB);
            gainA += incrementA;
            gainB += incrementB;
        }
    }

    float gainA = 1.0f;
    float gainB = 0.0f;
    float incrementA = 0.0f;
    float incrementB = 0.0f;
    int remaining = 0;
    int state = playingA;
    RelaxedAtomic<float> crossfadeTime = defaultCrossfadeTimeMs;
    /// The one hand-over point between the designing threads and the audio thread; it
    /// carries the `changePending` and `changeImmediately` flags.
    PendingCoefficients pendingCoefficients;
    Vector<float> bufferA;
    Vector<float> bufferB;
    T filterA;
    T filterB;
    RelaxedAtomic<Crossfade::Type> crossfadeType;
    std::atomic<std::uint32_t>* changeCounter = nullptr;
};
} // namespace ondo
