#include "BenchRoom.h"
#include "BenchSupport.h"

#include "math/TarvoDspDenormals.h"

#include <algorithm>
#include <chrono>
#include <vector>

namespace
{
using tarvo::bench::blockSize;
using tarvo::bench::Room;
using tarvo::bench::sampleRate;
using tarvo::bench::testSignal;

/// Seconds of audio per second of processing, and the cost of one output sample of one channel.
void reportRealTime(benchmark::State& state, std::uint32_t outputs)
{
    tarvo::bench::reportNanosecondsPer(state, double(blockSize) * outputs, "ns/output-sample");
    state.counters["x realtime"] =
        benchmark::Counter(double(blockSize) / sampleRate, benchmark::Counter::kIsIterationInvariantRate);
}

void BM_TarvoVerb(benchmark::State& state)
{
    const auto speakers = static_cast<std::uint32_t>(state.range(1));
    Room room(static_cast<std::uint32_t>(state.range(0)), speakers, static_cast<std::uint32_t>(state.range(2)),
              state.range(3));
    for (auto _ : state)
        room.block();
    reportRealTime(state, speakers);
}
BENCHMARK(BM_TarvoVerb)
    ->ArgNames({"sources", "speakers", "internals", "room"})
    ->Args({6, 6, 8, 0})
    ->Args({7, 6, 8, 0}) // one more source: its room send, direct gain and two panner terms
    ->Args({6, 7, 8, 0}) // one more speaker: the early and late panners' terms into one more output
    ->Args({16, 16, 16, 0})
    ->Args({64, 64, 16, 0})
    ->Args({6, 6, 8, 1})
    ->Args({6, 6, 8, 2})
    ->Args({16, 16, 16, 2});
} // namespace

#ifdef TARVO_BENCH_ZITA
// The peer: Faust's zita_rev1_stereo, an eight-line feedback delay network with two outputs,
// compiled from Debian's faust at build time with the same flags as everything here.
#include "ZitaRev1.h"

namespace
{
/// Faust's zita_rev1_stereo on the room's signal, warm once built.
class Peer
{
public:
    static constexpr std::uint32_t numOutputs = 2;

    Peer() : in(2, std::vector<float>(blockSize)), out(2, std::vector<float>(blockSize))
    {
        ondo::primitives::setDenormalsAreZero(true);
        zita.init(static_cast<int>(sampleRate));
        for (std::uint32_t c = 0; c < 2; ++c)
            for (std::uint32_t i = 0; i < blockSize; ++i)
                in[c][i] = testSignal(c, i);
        for (int warm = 0; warm < 2000; ++warm)
            block();
    }

    void block()
    {
        float* inputs[2] = {in[0].data(), in[1].data()};
        float* outputs[2] = {out[0].data(), out[1].data()};
        zita.compute(static_cast<int>(blockSize), inputs, outputs);
        benchmark::ClobberMemory();
    }

private:
    ZitaRev1 zita;
    std::vector<std::vector<float>> in, out;
};

void BM_ZitaRev1Stereo(benchmark::State& state)
{
    Peer peer;
    for (auto _ : state)
        peer.block();
    reportRealTime(state, Peer::numOutputs);
}
BENCHMARK(BM_ZitaRev1Stereo);

/// The object's default room (6 sources, 6 speakers, 8 lines) and the peer in turns of 32
/// blocks within each iteration, so that the host's changes of speed fall on both alike.
/// Reports the median over the turns of how many times cheaper the room is per output
/// channel-sample, and each one's median time a block.
void BM_TarvoVerbAgainstZita(benchmark::State& state)
{
    constexpr std::uint32_t speakers = 6;
    constexpr int turnBlocks = 32;
    Room room(6, speakers, 8, 0);
    Peer peer;
    std::vector<double> roomTimes, peerTimes, ratios;
    using Clock = std::chrono::steady_clock;
    for (auto _ : state)
    {
        const Clock::time_point start = Clock::now();
        for (int b = 0; b < turnBlocks; ++b)
            room.block();
        const Clock::time_point middle = Clock::now();
        for (int b = 0; b < turnBlocks; ++b)
            peer.block();
        const Clock::time_point end = Clock::now();
        const double roomNs = std::chrono::duration<double, std::nano>(middle - start).count() / turnBlocks;
        const double peerNs = std::chrono::duration<double, std::nano>(end - middle).count() / turnBlocks;
        roomTimes.push_back(roomNs);
        peerTimes.push_back(peerNs);
        ratios.push_back((peerNs / Peer::numOutputs) / (roomNs / speakers));
    }
    if (ratios.empty())
        return;
    const auto median = [](std::vector<double>& values) {
        std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
        return values[values.size() / 2];
    };
    const double roomNs = median(roomTimes);
    state.counters["x cheaper than zita"] = median(ratios);
    state.counters["room ns/block"] = roomNs;
    state.counters["zita ns/block"] = median(peerTimes);
    state.counters["x realtime"] = blockSize / sampleRate * 1e9 / roomNs;
    state.SetLabel(tarvo::bench::instructionSet());
}
BENCHMARK(BM_TarvoVerbAgainstZita)->Unit(benchmark::kMicrosecond);
} // namespace
#endif
