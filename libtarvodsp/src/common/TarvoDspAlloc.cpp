#include "common/TarvoDspAlloc.h"

#include "common/TarvoDspException.h"

#include <limits>
#include <stdexcept>

namespace ondo
{
void* alignedAllocate(std::size_t count, std::size_t elementSize)
{
    if (count == 0 || elementSize == 0)
        return nullptr;
    if (count > std::numeric_limits<std::ptrdiff_t>::max() / elementSize)
        throw std::length_error("allocation overflow.");
    void* block = ::operator new(count * elementSize, std::align_val_t{vectorAlignment}, std::nothrow);
    if (block == nullptr)
        throw BadAllocation();
    return block;
}

void alignedFree(void* block) noexcept
{
    if (block != nullptr)
        ::operator delete(block, std::align_val_t{vectorAlignment});
}

void rethrowAllocationFailure()
{
    try
    {
        throw;
    }
    catch (const std::bad_alloc&)
    {
        throw Exception("out of memory", ONDO_SOURCE_LOCATION);
    }
    catch (const Exception&)
    {
        throw;
    }
    catch (const std::exception& e)
    {
        throw Exception(e.what(), ONDO_SOURCE_LOCATION);
    }
    catch (...)
    {
        throw exceptions::Unknown(ONDO_SOURCE_LOCATION);
    }
}
} // namespace ondo
