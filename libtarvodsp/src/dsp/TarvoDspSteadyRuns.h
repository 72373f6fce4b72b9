#pragma once

#include "containers/TarvoDspVector.h"
#include "dsp/TarvoDspDelay.h"

#include <cstdint>

namespace ondo
{
/// Lets the owner of delay lines take a steady block without asking every line where its
/// runs lie. A run a line handed out in place lies, in each later block of the same size,
/// the block's size further on: until it would reach the window's end, or a change moves it
/// (a hand-over to its reader, a widening or emptying of its line: `HandOverCount`). This counts,
/// run by run, the blocks they may still move on, and keeps the block's size and the owner's
/// count of changes. Audio thread, sized on the control thread.
class SteadyRuns
{
public:
    /// Room for `count` runs, none kept. Control thread; allocates.
    void resize(std::uint32_t count)
    {
        blocksLeft.resize(count);
        start(0, 0);
    }
    /// Forgets every run; those kept from now on are of blocks of `n` samples, read after the
    /// owner had counted `changes`: taken before the block's reads, so that a change during
    /// them shows at the next block.
    void start(std::uint32_t n, std::uint32_t changes)
    {
        size = n;
        kept = changes;
        for (std::uint64_t& left : blocksLeft)
            left = 0;
    }
    /// The lines moved on without the owner's runs: none serve until the next `start`.
    void forget() { size = 0; }
    /// Whether the runs kept serve a block of `n` samples after `changes`.
    bool serves(std::uint32_t n, std::uint32_t changes) const { return n == size && changes == kept; }
    /// Run `i`, found in place in `line` at `at` in this block (null where it wasn't), read
    /// from `start`. Only a start kept in whole steps moves on by the block: the rounding of a
    /// position worked out in floats may change with the write position.
    void keep(std::uint32_t i, const Delay& line, const float* at, const Delay::RoundedStart& start)
    {
        blocksLeft[i] = at == nullptr || size == 0 || !start.exact ? 0 : line.blocksInPlace(at, size);
    }
    /// Moves run `i` on by the block where it still lies whole; false where it must be found
    /// again. Runs that move together (a line's write and read) go as one: kept at the one
    /// nearer the window's end.
    template <typename... Run>
    bool moveOn(std::uint32_t i, Run&... runs)
    {
        if (blocksLeft[i] == 0)
            return false;
        --blocksLeft[i];
        ((runs += size), ...);
        return true;
    }

private:
    std::uint32_t size = 0;
    std::uint32_t kept = 0;
    Vector<std::uint64_t> blocksLeft;
};
} // namespace ondo
