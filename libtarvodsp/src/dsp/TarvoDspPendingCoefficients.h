#pragma once

#include "containers/TarvoDspVector.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace ondo
{
/// The hand-over of a group of coefficients from the threads that design them to the audio
/// thread that installs them, without a lock. Writers fill a free slot and publish it with
/// a release; the reader takes the latest published slot with an acquire, so a group always
/// appears whole. A later write replaces an earlier one not yet taken. Two writers may run
/// at once (a control thread and the audio thread); a third concurrent one is dropped.
class PendingCoefficients
{
public:
    static constexpr std::uint32_t changePending = 1u;     ///< bit 0: a group waits
    static constexpr std::uint32_t changeImmediately = 2u; ///< bit 1: it asked for no fade

    PendingCoefficients() = default;
    PendingCoefficients(const PendingCoefficients&) = delete;
    PendingCoefficients& operator=(const PendingCoefficients&) = delete;

    /// Zeroes every slot when the size changes. Control thread, never while another thread
    /// writes or reads; allocates.
    void resize(std::size_t n);
    std::size_t size() const { return slots[0].size(); }

    /// Copies `size()` values and publishes them with the `immediately` request.
    /// Any thread; real-time safe; false when no slot was free.
    bool write(const float* values, bool immediately);
    /// The same, with `fill(float* slot)` writing the values straight into the slot.
    template <typename Fill>
    bool writeWith(Fill&& fill, bool immediately);

    /// The two flag bits as last published. Audio thread; real-time safe.
    std::uint32_t getFlags() const { return flags.load(std::memory_order_acquire) & (changePending | changeImmediately); }
    /// The latest published values; clears `changePending`. The pointer stays valid until
    /// the next `take`. Audio thread; real-time safe.
    const float* take();

private:
    static constexpr int numSlots = 4;
    static constexpr std::uint32_t latestShift = 2;
    static constexpr std::uint32_t readerShift = 4;
    static constexpr std::uint32_t busyShift = 8;

    static std::uint32_t latestOf(std::uint32_t word) { return (word >> latestShift) & 3u; }
    static std::uint32_t readerOf(std::uint32_t word) { return (word >> readerShift) & 3u; }

    int claim();
    void publish(int slot, bool immediately);

    Vector<float> slots[numSlots];
    // bits 0-1: the flags; 2-3: the latest slot; 4-5: the slot the reader holds;
    // 8-11: slots being written.
    std::atomic<std::uint32_t> flags{0};
};

template <typename Fill>
bool PendingCoefficients::writeWith(Fill&& fill, bool immediately)
{
    const int slot = claim();
    if (slot < 0)
        return false;
    fill(slots[slot].data());
    publish(slot, immediately);
    return true;
}
} // namespace ondo
