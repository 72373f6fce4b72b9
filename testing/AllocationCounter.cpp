#include "AllocationCounter.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace
{
std::atomic<std::size_t> allocations{0};
thread_local std::size_t threadAllocations = 0;

void* countedAllocate(std::size_t size, std::size_t alignment)
{
    allocations.fetch_add(1, std::memory_order_relaxed);
    ++threadAllocations;
    if (size == 0)
        size = 1;
    void* p = nullptr;
    if (alignment <= alignof(std::max_align_t))
        p = std::malloc(size);
    else
        p = std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
    return p;
}
} // namespace

std::size_t tarvo::testing::threadAllocationCount()
{
    return threadAllocations;
}

std::size_t tarvo::testing::allocationCount()
{
    return allocations.load(std::memory_order_relaxed);
}

void* operator new(std::size_t size)
{
    if (void* p = countedAllocate(size, alignof(std::max_align_t)))
        return p;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size)
{
    return operator new(size);
}
void* operator new(std::size_t size, std::align_val_t alignment)
{
    if (void* p = countedAllocate(size, static_cast<std::size_t>(alignment)))
        return p;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size, std::align_val_t alignment)
{
    return operator new(size, alignment);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return countedAllocate(size, alignof(std::max_align_t));
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return countedAllocate(size, alignof(std::max_align_t));
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
    return countedAllocate(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
    return countedAllocate(size, static_cast<std::size_t>(alignment));
}

void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
void operator delete(void* p, std::align_val_t) noexcept { std::free(p); }
void operator delete[](void* p, std::align_val_t) noexcept { std::free(p); }
void operator delete(void* p, std::size_t, std::align_val_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept { std::free(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete(void* p, std::align_val_t, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete[](void* p, std::align_val_t, const std::nothrow_t&) noexcept { std::free(p); }
