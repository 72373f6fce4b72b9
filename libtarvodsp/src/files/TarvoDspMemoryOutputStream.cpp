#include "files/TarvoDspMemoryOutputStream.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>

namespace ondo
{
MemoryOutputStream::MemoryOutputStream(std::size_t initialCapacity, std::size_t sizeLimit) : limit(sizeLimit)
{
    try
    {
        block.resize(std::min(initialCapacity, limit));
    }
    catch (const std::bad_alloc&)
    {
        // Starts empty; the first write tries again.
    }
}

std::uint8_t* MemoryOutputStream::prepareToWrite(std::size_t bytes)
{
    if (bytes > limit || position > limit - bytes)
        return nullptr;
    const std::size_t needed = position + bytes;
    if (needed > block.size())
    {
        // Doubling keeps the cost of many small writes linear.
        const std::size_t grown = std::max(needed, std::min(limit, std::max<std::size_t>(256, block.size() * 2)));
        try
        {
            block.resize(grown);
        }
        catch (const std::bad_alloc&)
        {
            return nullptr;
        }
        catch (const std::length_error&)
        {
            return nullptr;
        }
    }
    return block.data() + position;
}

bool MemoryOutputStream::write(const void* data, std::size_t bytes)
{
    if (bytes == 0)
        return true;
    std::uint8_t* destination = prepareToWrite(bytes);
    if (destination == nullptr)
        return false;
    std::memcpy(destination, data, bytes);
    position += bytes;
    size = std::max(size, position);
    return true;
}

bool MemoryOutputStream::setPosition(std::int64_t newPosition)
{
    position = static_cast<std::size_t>(std::clamp<std::int64_t>(newPosition, 0, static_cast<std::int64_t>(size)));
    return true;
}

void MemoryOutputStream::reset()
{
    position = 0;
    size = 0;
}
} // namespace ondo
