#include "dsp/TarvoDspPendingCoefficients.h"

#include "math/TarvoDspVectorPrimitives.h"

namespace ondo
{
void PendingCoefficients::resize(std::size_t n)
{
    if (n == size())
        return;
    for (Vector<float>& slot : slots)
    {
        slot.resize(n);
        slot.clear();
    }
    // The reader holds slot 0, which is zero: taking it before any write installs zeros.
    flags.store(0, std::memory_order_release);
}

int PendingCoefficients::claim()
{
    std::uint32_t word = flags.load(std::memory_order_acquire);
    int slot = -1;
    std::uint32_t desired = 0;
    do
    {
        const std::uint32_t used = (word >> busyShift) | (1u << latestOf(word)) | (1u << readerOf(word));
        slot = -1;
        for (int s = 0; s < numSlots; ++s)
            if ((used & (1u << s)) == 0)
            {
                slot = s;
                break;
            }
        if (slot < 0)
            return -1;
        desired = word | (1u << (busyShift + static_cast<std::uint32_t>(slot)));
    } while (!flags.compare_exchange_weak(word, desired, std::memory_order_acq_rel, std::memory_order_acquire));
    return slot;
}

void PendingCoefficients::publish(int slot, bool immediately)
{
    const auto s = static_cast<std::uint32_t>(slot);
    std::uint32_t word = flags.load(std::memory_order_relaxed);
    std::uint32_t desired = 0;
    do
    {
        desired = word & ~((1u << (busyShift + s)) | (3u << latestShift) | changeImmediately);
        desired |= (s << latestShift) | changePending | (immediately ? changeImmediately : 0u);
    } while (!flags.compare_exchange_weak(word, desired, std::memory_order_acq_rel, std::memory_order_relaxed));
}

bool PendingCoefficients::write(const float* values, bool immediately)
{
    const int n = static_cast<int>(size());
    return writeWith([&](float* slot) { primitives::vectorCopy32(values, slot, n); }, immediately);
}

const float* PendingCoefficients::take()
{
    std::uint32_t word = flags.load(std::memory_order_acquire);
    std::uint32_t desired = 0;
    do
    {
        if ((word & changePending) == 0)
            return slots[readerOf(word)].data();
        desired = (word & ~((3u << readerShift) | changePending)) | (latestOf(word) << readerShift);
    } while (!flags.compare_exchange_weak(word, desired, std::memory_order_acq_rel, std::memory_order_acquire));
    return slots[latestOf(word)].data();
}
} // namespace ondo
