#include "BenchSupport.h"

#include "containers/TarvoDspAudioBuffer.h"
#include "math/TarvoDspCoordinates.h"
#include "pan/QuorHOA3DPanning.h"
#include "pan/QuorNFCHOAPanning3D.h"
#include "pan/QuorVbap2DPanning.h"

namespace
{
constexpr std::uint32_t numSources = 16;
constexpr std::uint32_t numSpeakers = 16;

struct Fixture
{
    explicit Fixture(std::uint32_t blockSize)
        : panner(numSources, numSpeakers), inputs(numSources, blockSize), outputs(numSpeakers, blockSize)
    {
        panner.setup(48000.0f, blockSize, true);
        panner.setSpeakers(ondo::Point3Array::defaultLayout(numSpeakers));
        for (std::uint32_t c = 0; c < numSources; ++c)
            for (std::uint32_t i = 0; i < blockSize; ++i)
                inputs[c][i] = 0.001f * static_cast<float>((i * (c + 3)) % 101) - 0.05f;
        place(0.0f, true);
    }

    void place(float turn, bool immediate)
    {
        for (std::uint32_t s = 0; s < numSources; ++s)
            panner.setSourcePosition(s, ondo::Coordinates::fromNavigational(turn + 22.5f * s + 7.0f, 0.0f, 1.0f),
                                     immediate);
    }

    Quor::Vbap2DPanning panner;
    ondo::AudioBuffer<float> inputs;
    ondo::AudioBuffer<float> outputs;
};

/// Sources standing still: the matrix adds two gains a source.
void BM_Vbap2DSteady(benchmark::State& state)
{
    const auto blockSize = static_cast<std::uint32_t>(state.range(0));
    Fixture f(blockSize);
    for (auto _ : state)
    {
        f.panner.process(f.outputs.getChannels(), f.inputs.getChannels(), blockSize);
        benchmark::ClobberMemory();
    }
    tarvo::bench::reportNanosecondsPer(state, blockSize, "ns/sample");
}

/// Every source moves each block: gains computed on the same thread, ramps always running.
void BM_Vbap2DMoving(benchmark::State& state)
{
    const auto blockSize = static_cast<std::uint32_t>(state.range(0));
    Fixture f(blockSize);
    float turn = 0.0f;
    for (auto _ : state)
    {
        turn += 0.5f;
        f.place(turn, false);
        f.panner.process(f.outputs.getChannels(), f.inputs.getChannels(), blockSize);
        benchmark::ClobberMemory();
    }
    tarvo::bench::reportNanosecondsPer(state, blockSize, "ns/sample");
}
} // namespace

/// Order-7 Ambisonics (64 components) with 16 sources that all move every block: the
/// encoder runs 16 times a block on the same thread, and the mix ramps 1024 gains. Reported
/// per source and channel-sample; argument 1 chooses the "fast" table over the recurrence.
void BM_Hoa3DOrder7Moving(benchmark::State& state)
{
    constexpr std::uint32_t sources = 16, channels = 64;
    const auto blockSize = static_cast<std::uint32_t>(state.range(0));
    Quor::HOA3DPanning panner(sources, channels);
    panner.setup(48000.0f, blockSize, true);
    if (state.range(1) != 0)
        panner.setComputationMode("fast");
    ondo::AudioBuffer<float> inputs(sources, blockSize), outputs(channels, blockSize);
    for (std::uint32_t c = 0; c < sources; ++c)
        for (std::uint32_t i = 0; i < blockSize; ++i)
            inputs[c][i] = 0.001f * static_cast<float>((i * (c + 3)) % 101) - 0.05f;
    float turn = 0.0f;
    for (auto _ : state)
    {
        turn += 0.5f;
        for (std::uint32_t s = 0; s < sources; ++s)
            panner.setSourcePosition(
                s, ondo::Coordinates::fromNavigational(turn + 22.5f * s, 10.0f * static_cast<float>(s % 7) - 30.0f, 1.0f),
                false);
        panner.process(outputs.getChannels(), inputs.getChannels(), blockSize);
        benchmark::ClobberMemory();
    }
    tarvo::bench::reportNanosecondsPer(state, double(blockSize) * sources * channels, "ns/source/channel-sample");
    state.counters["ns/source/block"] =
        benchmark::Counter(sources, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

/// Near-field order 3 (16 components), 8 sources at 0.3 to 1.7 m from a 1.5 m ring with the
/// high-passes on: per source three filter chains of 1 + 1 + 2 biquads, three high-passes,
/// and a 4-by-16 mix. Argument 1 moves every source each block, near and far, so that the
/// filters are redesigned on the same thread and crossfade all the time.
void BM_NfcHoa3DOrder3(benchmark::State& state)
{
    constexpr std::uint32_t sources = 8, channels = 16;
    const auto blockSize = static_cast<std::uint32_t>(state.range(0));
    const bool moving = state.range(1) != 0;
    Quor::NFCHOAPanning3D panner(sources, channels);
    panner.setup(48000.0f, blockSize, true);
    panner.setNfcSpeakersRadius(1.5f);
    panner.setNfcCompensation(true);
    ondo::AudioBuffer<float> inputs(sources, blockSize), outputs(channels, blockSize);
    for (std::uint32_t c = 0; c < sources; ++c)
        for (std::uint32_t i = 0; i < blockSize; ++i)
            inputs[c][i] = 0.001f * static_cast<float>((i * (c + 3)) % 101) - 0.05f;
    auto place = [&](float turn) {
        for (std::uint32_t s = 0; s < sources; ++s)
            panner.setSourcePosition(
                s,
                ondo::Coordinates::fromNavigational(turn + 45.0f * s, 10.0f * static_cast<float>(s % 3),
                                                    0.3f + 0.2f * static_cast<float>(s) + 0.001f * turn),
                false);
    };
    place(0.0f);
    float turn = 0.0f;
    for (auto _ : state)
    {
        if (moving)
            place(turn += 0.5f);
        panner.process(outputs.getChannels(), inputs.getChannels(), blockSize);
        benchmark::ClobberMemory();
    }
    tarvo::bench::reportNanosecondsPer(state, 1.0, "ns/block");
}

BENCHMARK(BM_Vbap2DSteady)->Arg(64)->Arg(512);
BENCHMARK(BM_Hoa3DOrder7Moving)->Args({64, 0})->Args({512, 0})->Args({64, 1});
BENCHMARK(BM_Vbap2DMoving)->Arg(64)->Arg(512);
BENCHMARK(BM_NfcHoa3DOrder3)->Args({64, 0})->Args({64, 1});
