#include "files/TarvoDspMemoryInputStream.h"

#include <algorithm>
#include <cstring>

namespace ondo
{
MemoryInputStream::MemoryInputStream(const void* block, std::size_t blockSize)
    : data(static_cast<const std::uint8_t*>(block)), size(block != nullptr ? blockSize : 0)
{
}

int MemoryInputStream::read(void* buffer, int bytes)
{
    if (bytes <= 0 || position >= size)
        return 0;
    const std::size_t count = std::min(static_cast<std::size_t>(bytes), size - position);
    std::memcpy(buffer, data + position, count);
    position += count;
    return static_cast<int>(count);
}

bool MemoryInputStream::setPosition(std::int64_t newPosition)
{
    position = static_cast<std::size_t>(std::clamp<std::int64_t>(newPosition, 0, static_cast<std::int64_t>(size)));
    return true;
}
} // namespace ondo
