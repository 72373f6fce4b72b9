#pragma once

#include <atomic>
#include <cstdint>

namespace ondo
{
/// Counts the changes to a reader or a line that move what it reads (a hand-over of its
/// delay, interpolator, economy or rate; a line's samples moving in its storage), from any
/// thread. The audio thread compares one load with the count it kept, to tell whether what it
/// kept of earlier blocks still holds. An owner of many readers and lines has each count into
/// its own count too, and so watches them all with that one load.
class HandOverCount
{
public:
    /// Every later count also counts in `owner` (null: in none). Control thread, before the
    /// audio thread runs.
    void alsoCountIn(HandOverCount* owner) { ownerCount = owner; }
    /// After the change's stores, so that a reader that sees the count sees them.
    void count()
    {
        value.fetch_add(1, std::memory_order_release);
        if (ownerCount != nullptr)
            ownerCount->count();
    }
    std::uint32_t get() const { return value.load(std::memory_order_acquire); }

private:
    std::atomic<std::uint32_t> value = 0;
    HandOverCount* ownerCount = nullptr;
};
} // namespace ondo
