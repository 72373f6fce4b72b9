#pragma once

#include "files/TarvoDspOutputStream.h"

#include <cstdint>
#include <limits>
#include <vector>

namespace ondo
{
/// Writes into a block of memory that grows as needed: the binary form of OSC packets and
/// presets is built here before it goes to a file. When the block cannot grow (no memory, or
/// past the size limit) the write fails and returns false; nothing throws.
/// Control thread; writing allocates.
class MemoryOutputStream : public OutputStream
{
public:
    explicit MemoryOutputStream(std::size_t initialCapacity = 256,
                                std::size_t sizeLimit = std::numeric_limits<std::size_t>::max());

    bool write(const void* data, std::size_t bytes) override;
    std::int64_t getPosition() override { return static_cast<std::int64_t>(position); }
    /// Clamped to 0 and to the bytes written so far.
    bool setPosition(std::int64_t newPosition) override;

    const std::uint8_t* getData() const { return block.data(); }
    /// Bytes written so far (the furthest position reached).
    std::size_t getDataSize() const { return size; }
    /// The bytes written so far, as a copy. Allocates.
    std::vector<std::uint8_t> toVector() const { return {block.begin(), block.begin() + static_cast<std::ptrdiff_t>(size)}; }
    /// Forgets the content and keeps the memory.
    void reset();

private:
    /// Where `bytes` bytes may be written at the position, growing the block; null when it
    /// cannot grow.
    std::uint8_t* prepareToWrite(std::size_t bytes);

    std::vector<std::uint8_t> block;
    std::size_t position = 0;
    std::size_t size = 0;
    std::size_t limit;
};
} // namespace ondo
