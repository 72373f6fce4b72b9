#include "BenchSupport.h"

#include "math/TarvoDspNonFinite.h"

#include <limits>
#include <vector>

namespace
{
/// The guard at the reverberator's entry on a clean block: what every block pays for it,
/// per input sample. Compare with BM_TarvoVerb's cost per block (sources x 64 samples).
void BM_NonFiniteGuardCleanBlock(benchmark::State& state)
{
    const auto n = static_cast<std::uint32_t>(state.range(0));
    std::vector<float> block(n);
    for (std::uint32_t i = 0; i < n; ++i)
        block[i] = float((i * 7) % 17) / 17.0f - 0.5f;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(ondo::NonFinite::zeroSamples(block.data(), n));
        benchmark::ClobberMemory();
    }
    tarvo::bench::reportNanosecondsPer(state, n, "ns/sample");
}

/// A block with one NaN: the scan, then the rewrite.
void BM_NonFiniteGuardOneNaN(benchmark::State& state)
{
    const auto n = static_cast<std::uint32_t>(state.range(0));
    std::vector<float> block(n, 0.25f);
    for (auto _ : state)
    {
        block[n / 2] = std::numeric_limits<float>::quiet_NaN();
        benchmark::DoNotOptimize(ondo::NonFinite::zeroSamples(block.data(), n));
        benchmark::ClobberMemory();
    }
    tarvo::bench::reportNanosecondsPer(state, n, "ns/sample");
}
} // namespace

BENCHMARK(BM_NonFiniteGuardCleanBlock)->Arg(64)->Arg(512);
BENCHMARK(BM_NonFiniteGuardOneNaN)->Arg(64)->Arg(512);
