#pragma once

// The rooms the reverberator's benchmarks run, shared with the instruction counter.

#include "math/TarvoDspDenormals.h"
#include "math/TarvoDspPoint3Array.h"
#include "reverb/QuorTarvoVerb.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

namespace tarvo::bench
{
constexpr std::uint32_t blockSize = 64;
constexpr double sampleRate = 44100.0;

/// The signal every benchmark feeds channel `c`, sample `i` of each block.
inline float testSignal(std::uint32_t c, std::uint32_t i)
{
    return float((i * 7 + c * 13) % 17) / 17.0f - 0.5f;
}

/// Where the object puts its sources when there are as many as speakers: on them, one term
/// each in the direct panner. A source beyond the speakers' count stands halfway between two
/// neighbours, fed by a pair as a source usually is. So one more source adds its own work
/// only, and one more speaker leaves the sources' terms as they were: the object's own
/// layout for seven would move every source off its speaker.
inline void placeSources(Quor::TarvoVerb& verb, std::uint32_t sources, std::uint32_t speakers)
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
} // namespace tarvo::bench
