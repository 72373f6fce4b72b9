#pragma once

#include <atomic>
#include <cstdint>

namespace ondo
{
/// Counts a reader's hand-overs (delay, interpolator, economy, rate) from any thread. The
/// audio thread compares one load with the count it kept, to tell whether what it kept of
/// earlier blocks still holds. The count only grows, so sums of counts move at any hand-over.
class HandOverCount
{
public:
    /// After the hand-over's stores, so that a reader that sees the count sees them.
    void count() { value.fetch_add(1, std::memory_order_release); }
    std::uint32_t get() const { return value.load(std::memory_order_acquire); }

private:
    std::atomic<std::uint32_t> value = 0;
};
} // namespace ondo
