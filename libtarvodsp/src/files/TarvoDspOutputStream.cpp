#include "files/TarvoDspOutputStream.h"

#include "files/TarvoDspByteOrder.h"

#include <algorithm>

namespace ondo
{
bool OutputStream::writeRepeatedByte(std::uint8_t byte, std::size_t count)
{
    std::uint8_t run[256];
    std::fill(std::begin(run), std::end(run), byte);
    while (count > 0)
    {
        const std::size_t n = std::min(count, sizeof run);
        if (!write(run, n))
            return false;
        count -= n;
    }
    return true;
}

bool OutputStream::writeLittle(std::uint64_t bits, int bytes)
{
    std::uint8_t buffer[8];
    byteOrder::storeLittle(buffer, bits, bytes);
    return write(buffer, static_cast<std::size_t>(bytes));
}

bool OutputStream::writeBig(std::uint64_t bits, int bytes)
{
    std::uint8_t buffer[8];
    byteOrder::storeBig(buffer, bits, bytes);
    return write(buffer, static_cast<std::size_t>(bytes));
}

bool OutputStream::writeShort(std::int16_t value)
{
    return writeLittle(static_cast<std::uint16_t>(value), 2);
}

bool OutputStream::writeInt(std::int32_t value)
{
    return writeLittle(static_cast<std::uint32_t>(value), 4);
}

bool OutputStream::writeInt64(std::int64_t value)
{
    return writeLittle(static_cast<std::uint64_t>(value), 8);
}

bool OutputStream::writeFloat(float value)
{
    return writeLittle(byteOrder::bitsOf(value), 4);
}

bool OutputStream::writeDouble(double value)
{
    return writeLittle(byteOrder::bitsOf(value), 8);
}

bool OutputStream::writeShortBigEndian(std::int16_t value)
{
    return writeBig(static_cast<std::uint16_t>(value), 2);
}

bool OutputStream::writeIntBigEndian(std::int32_t value)
{
    return writeBig(static_cast<std::uint32_t>(value), 4);
}

bool OutputStream::writeInt64BigEndian(std::int64_t value)
{
    return writeBig(static_cast<std::uint64_t>(value), 8);
}

bool OutputStream::writeFloatBigEndian(float value)
{
    return writeBig(byteOrder::bitsOf(value), 4);
}

bool OutputStream::writeDoubleBigEndian(double value)
{
    return writeBig(byteOrder::bitsOf(value), 8);
}

bool OutputStream::writeString(const String& text)
{
    return write(text.c_str(), text.size() + 1);
}
} // namespace ondo
