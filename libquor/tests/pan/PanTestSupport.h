#pragma once

#include "AllocationCounter.h"
#include "TestBlock.h"
#include "pan/QuorAmplitudePanning.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <thread>
#include <vector>

namespace Quor::testing
{
/// The gains a panner last asked its matrix for, source by source.
inline std::vector<float> gainsOf(const AmplitudePanning& p, std::uint32_t source)
{
    std::vector<float> row(p.getNumOutputs());
    for (std::uint32_t o = 0; o < row.size(); ++o)
        row[o] = p.getMatrix().getPendingGain(source, o);
    return row;
}

inline float powerOf(const std::vector<float>& row)
{
    float sum = 0.0f;
    for (float g : row)
        sum += g * g;
    return sum;
}

using tarvo::testing::Block;

/// What the audio thread saw while a control thread worked beside it.
struct AudioRun
{
    int blocks = 0;
    std::size_t allocations = 0; // by the audio thread only
    bool finite = true;
    float loudest = 0.0f;
};

/// Calls `mix` (one block) on this thread, over and over, while `control` runs on a thread
/// of its own, started once the first block is mixed so that the two surely overlap. After
/// each block the samples of `outputs` are checked.
template <typename Control, typename Mix>
AudioRun mixWhileControlRuns(Control&& control, Mix&& mix, std::initializer_list<const Block*> outputs)
{
    AudioRun run;
    std::atomic<bool> running{true};
    std::atomic<int> blocks{0};
    std::thread controlThread([&] {
        while (blocks.load() == 0)
            std::this_thread::yield();
        control();
        running = false;
    });
    {
        tarvo::testing::ThreadAllocationScope scope;
        while (running)
        {
            mix();
            blocks.fetch_add(1);
            for (const Block* block : outputs)
                for (const auto& channel : block->data)
                    for (float v : channel)
                    {
                        run.finite = run.finite && std::isfinite(v);
                        run.loudest = std::max(run.loudest, std::fabs(v));
                    }
        }
        run.allocations = scope.count();
    }
    controlThread.join();
    run.blocks = blocks.load();
    return run;
}
} // namespace Quor::testing
