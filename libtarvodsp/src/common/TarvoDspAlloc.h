#pragma once

#include <cstddef>
#include <new>

namespace ondo
{
/// Every `Vector` block is aligned on this many bytes; the primitives rely on it.
inline constexpr std::size_t vectorAlignment = 16;

/// The standard allocation failure, with the library's text.
class BadAllocation : public std::bad_alloc
{
public:
    const char* what() const noexcept override { return "bad allocation"; }
};

/// Allocates `count` elements of `elementSize` bytes on a 16-byte boundary.
/// Zero elements give a null pointer and allocate nothing; a size that does not fit the
/// address space raises std::length_error("allocation overflow."); a failure raises
/// `BadAllocation`. Control thread only: this allocates.
void* alignedAllocate(std::size_t count, std::size_t elementSize);

/// Returns a block of `alignedAllocate`; null is accepted.
void alignedFree(void* block) noexcept;

/// Called inside a catch block: raises the caught failure again, a memory failure
/// as `ondo::Exception("out of memory")` located at the allocator, another standard
/// exception as one with its own text, anything else as `exceptions::Unknown`.
[[noreturn]] void rethrowAllocationFailure();
} // namespace ondo
