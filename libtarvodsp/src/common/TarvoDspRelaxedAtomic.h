#pragma once

#include <atomic>

namespace ondo
{
/// A value handed between a control thread and the audio thread, one field at a time.
/// Every access is a relaxed atomic load or store: free of data races, and on common
/// processors as cheap as a plain access. Use it where a block may see either the old or
/// the new value of each field; where several fields must appear together, use
/// release/acquire on a flag instead.
template <typename T>
class RelaxedAtomic
{
public:
    RelaxedAtomic(T initial = T{}) noexcept : value(initial) {}
    RelaxedAtomic(const RelaxedAtomic& other) noexcept : value(other.load()) {}
    RelaxedAtomic& operator=(const RelaxedAtomic& other) noexcept
    {
        store(other.load());
        return *this;
    }
    RelaxedAtomic& operator=(T newValue) noexcept
    {
        store(newValue);
        return *this;
    }

    operator T() const noexcept { return load(); }
    T load() const noexcept { return value.load(std::memory_order_relaxed); }
    void store(T newValue) noexcept { value.store(newValue, std::memory_order_relaxed); }

private:
    static_assert(std::atomic<T>::is_always_lock_free, "a hand-over must never take a lock");
    std::atomic<T> value;
};
} // namespace ondo
