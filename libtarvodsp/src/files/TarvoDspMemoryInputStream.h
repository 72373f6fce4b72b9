#pragma once

#include "files/TarvoDspInputStream.h"

#include <cstddef>
#include <cstdint>

namespace ondo
{
/// Reads a block of memory that it does not own: the block must outlive the stream.
/// Never touches a byte outside [data, data + size). Any thread; allocates nothing.
class MemoryInputStream : public InputStream
{
public:
    MemoryInputStream(const void* data, std::size_t size);

    std::int64_t getTotalLength() override { return static_cast<std::int64_t>(size); }
    bool isExhausted() override { return position >= size; }
    int read(void* buffer, int bytes) override;
    std::int64_t getPosition() override { return static_cast<std::int64_t>(position); }
    bool setPosition(std::int64_t newPosition) override;

    /// The byte at the position, not consumed; 0 at the end.
    std::uint8_t peekByte() const { return position < size ? data[position] : std::uint8_t(0); }
    const std::uint8_t* getData() const { return data; }

private:
    const std::uint8_t* data;
    std::size_t size;
    std::size_t position = 0;
};
} // namespace ondo
