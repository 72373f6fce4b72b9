#pragma once

#include <cstddef>

namespace tarvo::testing
{
/// Number of heap allocations made by any thread since the program started.
/// The test binaries replace the global allocation functions to keep this count.
std::size_t allocationCount();
/// Number of heap allocations made by the calling thread since it started.
std::size_t threadAllocationCount();

/// Counts the allocations made between construction and `count()`:
///   AllocationScope scope; processor.process(...); EXPECT_EQ(scope.count(), 0u);
class AllocationScope
{
public:
    AllocationScope() : start(allocationCount()) {}
    std::size_t count() const { return allocationCount() - start; }

private:
    std::size_t start;
};

/// As `AllocationScope`, counting only the calling thread's allocations: for a thread that
/// processes while another one, which may allocate, changes parameters.
class ThreadAllocationScope
{
public:
    ThreadAllocationScope() : start(threadAllocationCount()) {}
    std::size_t count() const { return threadAllocationCount() - start; }

private:
    std::size_t start;
};
} // namespace tarvo::testing
