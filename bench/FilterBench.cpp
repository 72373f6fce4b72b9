#include "BenchSupport.h"

#include "dsp/TarvoDspBiquadCookbook.h"
#include "dsp/TarvoDspBiquadIPP.h"
#include "dsp/TarvoDspCascadeIPP.h"
#include "dsp/TarvoDspFadedHLShelf.h"
#include "dsp/TarvoDspMultiFadedHLShelf.h"

#include <vector>

namespace
{
constexpr int blockSize = 64;

std::vector<float> noise(std::size_t n)
{
    std::vector<float> v(n);
    unsigned seed = 1;
    for (auto& x : v)
    {
        seed = seed * 1664525u + 1013904223u;
        x = static_cast<float>(seed >> 8) / 8388608.0f - 1.0f;
    }
    return v;
}

const ondo::HLShelfParameters decayA{0.0f, -1.2f, -2.0f, -5.0f, 177.0f, 5657.0f};
const ondo::HLShelfParameters decayB{0.0f, -1.0f, -1.8f, -4.6f, 177.0f, 5657.0f};

void BM_Biquad(benchmark::State& state)
{
    ondo::BiquadCookbook design(ondo::FilterShape::peak);
    design.setGain(6.0);
    ondo::BiquadIPP biquad;
    biquad.setCoefficients(design.getCoefficients());
    std::vector<float> block = noise(blockSize);
    for (auto _ : state)
    {
        biquad.filter(block.data(), block.data(), blockSize);
        benchmark::ClobberMemory();
    }
    tarvo::bench::reportNanosecondsPer(state, blockSize, "ns/sample");
}

void BM_Cascade6(benchmark::State& state)
{
    ondo::CascadeIPP cascade(6);
    ondo::CascadeCoefficients sections(6);
    for (int i = 0; i < 6; ++i)
    {
        ondo::BiquadCookbook band(ondo::FilterShape::peak);
        band.setFrequency(100.0 * (i + 1) * (i + 1));
        band.setGain(i % 2 ? 3.0 : -3.0);
        sections.setSection(static_cast<std::size_t>(i), band.getCoefficients());
    }
    cascade.setCoefficients(sections);
    std::vector<float> block = noise(blockSize);
    for (auto _ : state)
    {
        cascade.filter(block.data(), block.data(), blockSize);
        benchmark::ClobberMemory();
    }
    tarvo::bench::reportNanosecondsPer(state, blockSize, "ns/sample");
}

// A decay shelf that plays one design.
void BM_FadedShelfSteady(benchmark::State& state)
{
    ondo::FadedHLShelf shelf;
    shelf.setParameters(decayA, true);
    std::vector<float> block = noise(blockSize);
    for (auto _ : state)
    {
        shelf.filterBlock(block.data(), block.data(), blockSize);
        benchmark::ClobberMemory();
    }
    tarvo::bench::reportNanosecondsPer(state, blockSize, "ns/sample");
}

// A decay shelf given a new design every block, as during a decay ramp: always warming
// or fading, two biquads and the mix.
void BM_FadedShelfFading(benchmark::State& state)
{
    ondo::FadedHLShelf shelf;
    shelf.setCrossfadeTime(50.0f);
    std::vector<float> block = noise(blockSize);
    bool flip = false;
    for (auto _ : state)
    {
        shelf.setParameters(flip ? decayA : decayB, false);
        flip = !flip;
        shelf.filterBlock(block.data(), block.data(), blockSize);
        benchmark::ClobberMemory();
    }
    tarvo::bench::reportNanosecondsPer(state, blockSize, "ns/sample");
}

// N steady decay shelves: the channels run side by side. Reported per sample of all lines.
void BM_MultiShelfSteady(benchmark::State& state)
{
    const auto channels = static_cast<std::uint32_t>(state.range(0));
    ondo::MultiFadedHLShelf shelves(channels);
    shelves.setParameters(decayA, true);
    std::vector<std::vector<float>> blocks(channels, noise(blockSize));
    std::vector<float*> ptrs(channels);
    for (std::uint32_t c = 0; c < channels; ++c)
        ptrs[c] = blocks[c].data();
    for (auto _ : state)
    {
        shelves.process(ptrs.data(), ptrs.data(), blockSize);
        benchmark::ClobberMemory();
    }
    tarvo::bench::reportNanosecondsPer(state, blockSize, "ns/sample(all channels)");
}

// The same N shelves one channel at a time, for comparison.
void BM_SeparateShelvesSteady(benchmark::State& state)
{
    const auto channels = static_cast<std::size_t>(state.range(0));
    std::vector<ondo::FadedHLShelf> shelves(channels);
    for (auto& s : shelves)
        s.setParameters(decayA, true);
    std::vector<std::vector<float>> blocks(channels, noise(blockSize));
    for (auto _ : state)
    {
        for (std::size_t c = 0; c < channels; ++c)
            shelves[c].filterBlock(blocks[c].data(), blocks[c].data(), blockSize);
        benchmark::ClobberMemory();
    }
    tarvo::bench::reportNanosecondsPer(state, blockSize, "ns/sample(all channels)");
}
} // namespace

BENCHMARK(BM_Biquad);
BENCHMARK(BM_Cascade6);
BENCHMARK(BM_FadedShelfSteady);
BENCHMARK(BM_FadedShelfFading);
BENCHMARK(BM_MultiShelfSteady)->Arg(8)->Arg(16);
BENCHMARK(BM_SeparateShelvesSteady)->Arg(8)->Arg(16);
