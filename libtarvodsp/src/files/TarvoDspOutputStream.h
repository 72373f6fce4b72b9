#pragma once

#include "text/TarvoDspString.h"

#include <cstddef>
#include <cstdint>

namespace ondo
{
/// A writable byte sink with a position that can be moved back, so that a writer may leave a
/// size field empty and fill it in once the content is known (WAV headers, OSC bundles).
/// Each write returns false when its bytes could not all be stored. Not thread-safe.
class OutputStream
{
public:
    virtual ~OutputStream() = default;

    virtual bool write(const void* data, std::size_t bytes) = 0;
    virtual std::int64_t getPosition() = 0;
    /// Moves to `position` (clamped to 0 and to what has been written); false when it cannot.
    virtual bool setPosition(std::int64_t position) = 0;
    virtual bool flush() { return true; }

    bool writeByte(std::uint8_t byte) { return write(&byte, 1); }
    /// `count` copies of one byte: padding and alignment.
    bool writeRepeatedByte(std::uint8_t byte, std::size_t count);

    /// Little-endian values.
    bool writeShort(std::int16_t value);
    bool writeInt(std::int32_t value);
    bool writeInt64(std::int64_t value);
    bool writeFloat(float value);
    bool writeDouble(double value);
    /// Big-endian values.
    bool writeShortBigEndian(std::int16_t value);
    bool writeIntBigEndian(std::int32_t value);
    bool writeInt64BigEndian(std::int64_t value);
    bool writeFloatBigEndian(float value);
    bool writeDoubleBigEndian(double value);

    /// The text and its terminating zero.
    bool writeString(const String& text);
    /// The text alone.
    bool writeText(const String& text) { return write(text.data(), text.size()); }

private:
    bool writeLittle(std::uint64_t bits, int bytes);
    bool writeBig(std::uint64_t bits, int bytes);
};
} // namespace ondo
