#include "BenchSupport.h"

#include "math/TarvoDspDenormals.h"
#include "math/TarvoDspPoint3Array.h"
#include "reverb/QuorTarvoVerb.h"

#include <algorithm>
#include <chrono>
#include <vector>

namespace
{
constexpr std::uint32_t blockSize = 64;
constexpr double sampleRate = 44100.0;

/// The signal every benchmark feeds channel `c`, sample `i` of each block.
float testSignal(std::uint32_t c, std::uint32_t i)
{
    return float((i * 7 + c * 13) % 17) / 17.0f - 0.5f;
}

/// Seconds of audio per second of processing, and the cost of one output sample of one channel.
void reportRealTime(benchmark::State& state, std::uint32_t outputs)
{
    tarvo::bench::reportNanosecondsPer(state, double(blockSize) * outputs, "ns/output-sample");
    state.counters["x realtime"] =
        benchmark::Counter(double(blockSize) / sampleRate, benchmark::Counter::kIsIterationInvariantRate);
}

/// Where the object puts its sources when there are as many as speakers: on them, one term
/// each in the direct panner. A source beyond the speakers' count stands halfway between two
/// neighbours, fed by a pair as a source usually is. So one more source adds its own work
/// only, and one more speaker leaves the sources' terms as they were: the object's own
/// layout for seven would move every source off its speaker.
void placeSources(Quor::TarvoVerb& verb, std::uint32_t sources, std::uint32_t speakers)
{
    const ondo::Point3Array layout = ondo::Point3Array::defaultLayout(speakers);
    for (std::uint32_t s = 0; s < sources; ++s)
    {
        const ondo::Point3& on = layout[s % speakers];
        verb.setSourcePosition(s, s < speakers ? on : (on + layout[(s + 1) % speakers]) * 0.5f);
    }
}

/// The whole reverberator, every source fed a signal, at block 64 and 44.1 kHz: with the
/// object's default attributes (room 0: flat section shelves, air off), with every section
/// shelf shaping its bands (room 1), and with air absorption on as well (room 2). Warm once
/// built: its ramps have settled.
class Room
{
public:
    Room(std::uint32_t sources, std::uint32_t speakers, std::uint32_t internals, std::int64_t room)
        : verb(internals), in(sources, std::vector<float>(blockSize)), out(speakers, std::vector<float>(blockSize))
    {
        ondo::primitives::setDenormalsAreZero(true);
        verb.configure(static_cast<float>(sampleRate), blockSize, sources, speakers);
        const ondo::HLShelfParameters shelf = room == 0
                                                  ? ondo::HLShelfParameters{0.0f, 0.0f, 0.0f, 0.0f, 177.0f, 5657.0f}
                                                  : ondo::HLShelfParameters{0.0f, 3.0f, 0.0f, -6.0f, 177.0f, 5657.0f};
        verb.setDirectFilter(shelf);
        verb.setRoomFilter(shelf);
        verb.setEarlyFilter(shelf);
        verb.setClusterFilter(shelf);
        verb.setReverbTimes({1.995f, 1.0f, 1.0f, 0.5f, 250.0f, 8000.0f}, 0.0f);
        verb.setAirEnabled(room == 2);
        placeSources(verb, sources, speakers);
        for (std::uint32_t c = 0; c < sources; ++c)
        {
            for (std::uint32_t i = 0; i < blockSize; ++i)
                in[c][i] = testSignal(c, i);
            inputs.push_back(in[c].data());
        }
        for (auto& channel : out)
            outputs.push_back(channel.data());
        for (int warm = 0; warm < 2000; ++warm)
            block();
    }

    void block()
    {
        verb.process(outputs.data(), inputs.data(), blockSize);
        benchmark::ClobberMemory();
    }

private:
    Quor::TarvoVerb verb;
    std::vector<std::vector<float>> in, out;
    std::vector<float*> inputs, outputs;
};

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
