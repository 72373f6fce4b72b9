#include "BenchSupport.h"

#include "dsp/TarvoDspMultiTapOutEconomy.h"

#include <vector>

namespace
{
constexpr std::uint32_t numTaps = 16;
constexpr std::uint32_t blockSize = 512;

/// 16 taps on one line, reading "nearest" or "linear" at standing or gliding delays between
/// 20 and 40 ms; reports nanoseconds per output sample (block times taps).
void BM_MultiTapOutEconomy(benchmark::State& state)
{
    const auto mode = static_cast<ondo::Delay::InterpolationMode>(state.range(0));
    const bool gliding = state.range(1) != 0;
    ondo::MultiTapOutEconomy taps(numTaps, 110.0f, mode);
    taps.setup(48000.0f, blockSize, true);
    // Economy off: a standing "linear" tap must interpolate, not fall back to a copy.
    taps.setEconomy(false);
    taps.setInterpolationTime(500.0f);
    const auto delayOf = [](std::uint32_t t, bool late) {
        return 20.0f + 1.237f * static_cast<float>(t) + (late ? 7.3f : 0.0f);
    };
    for (std::uint32_t t = 0; t < numTaps; ++t)
        taps.setDelay(t, delayOf(t, false), true);

    std::vector<float> input(blockSize);
    for (std::uint32_t i = 0; i < blockSize; ++i)
        input[i] = 0.001f * static_cast<float>(i % 101) - 0.05f;
    std::vector<std::vector<float>> outputs(numTaps, std::vector<float>(blockSize));
    std::vector<float*> outs;
    for (auto& o : outputs)
        outs.push_back(o.data());
    float* in = input.data();
    bool late = false;
    for (auto _ : state)
    {
        if (gliding && !taps.getTap(0).getRamp().isRunning())
        {
            late = !late;
            for (std::uint32_t t = 0; t < numTaps; ++t)
                taps.setDelay(t, delayOf(t, late));
        }
        taps.process(outs.data(), &in, blockSize);
        benchmark::ClobberMemory();
    }
    tarvo::bench::reportNanosecondsPer(state, static_cast<double>(blockSize) * numTaps, "ns/sample");
}
} // namespace

BENCHMARK(BM_MultiTapOutEconomy)
    ->ArgNames({"mode", "gliding"})
    ->Args({ondo::Delay::nearest, 0})
    ->Args({ondo::Delay::linear, 0})
    ->Args({ondo::Delay::nearest, 1})
    ->Args({ondo::Delay::linear, 1});
