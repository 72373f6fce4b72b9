#include "BenchSupport.h"

#include "math/TarvoDspDenormals.h"
#include "reverb/QuorReverb.h"

#include <vector>

namespace
{
constexpr std::uint32_t blockSize = 64;

// The late network at 44.1 kHz in blocks of 64, fed a steady signal on every line so that
// the tail is dense. Reported per sample of the block, and per sample of each line.
void BM_Reverb(benchmark::State& state)
{
    const auto lines = static_cast<std::uint32_t>(state.range(0));
    const bool air = state.range(1) != 0;
    ondo::primitives::setDenormalsAreZero(true);
    Quor::Reverb reverb(lines);
    reverb.setAirEnabled(air);
    std::vector<std::vector<float>> in(lines, std::vector<float>(blockSize, 0.0f));
    std::vector<std::vector<float>> out(lines, std::vector<float>(blockSize));
    std::vector<float*> inputs, outputs;
    for (std::uint32_t c = 0; c < lines; ++c)
    {
        for (std::uint32_t i = 0; i < blockSize; ++i)
            in[c][i] = ((i * 7 + c * 13) % 17) / 17.0f - 0.5f;
        inputs.push_back(in[c].data());
        outputs.push_back(out[c].data());
    }
    for (int warm = 0; warm < 2000; ++warm)
        reverb.process(outputs.data(), inputs.data(), blockSize);
    for (auto _ : state)
    {
        reverb.process(outputs.data(), inputs.data(), blockSize);
        benchmark::ClobberMemory();
    }
    tarvo::bench::reportNanosecondsPer(state, blockSize, "ns/sample");
    state.counters["ns/line-sample"] = benchmark::Counter(
        double(blockSize) * lines, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    state.counters["x realtime"] = benchmark::Counter(double(blockSize) / 44100.0,
                                                      benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_Reverb)->ArgNames({"lines", "air"})->Args({8, 0})->Args({8, 1})->Args({16, 0})->Args({16, 1});

// The same with the baseline bodies of the kernels, as on a processor without AVX2.
void BM_ReverbBaselineKernels(benchmark::State& state)
{
    ondo::simd::allowWideVectors(false);
    BM_Reverb(state);
    ondo::simd::allowWideVectors(true);
}
BENCHMARK(BM_ReverbBaselineKernels)->ArgNames({"lines", "air"})->Args({8, 0})->Args({16, 1});
} // namespace
