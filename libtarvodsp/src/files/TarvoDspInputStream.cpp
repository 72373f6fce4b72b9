#include "files/TarvoDspInputStream.h"

#include "files/TarvoDspByteOrder.h"

#include <algorithm>
#include <limits>

namespace ondo
{
namespace
{
template <int Bytes, bool BigEndian>
std::uint64_t readBits(InputStream& stream)
{
    std::uint8_t bytes[Bytes];
    if (stream.read(bytes, Bytes) != Bytes)
        return 0;
    return BigEndian ? byteOrder::loadBig(bytes, Bytes) : byteOrder::loadLittle(bytes, Bytes);
}
} // namespace

char InputStream::readByte()
{
    char byte = 0;
    return read(&byte, 1) == 1 ? byte : char(0);
}

std::int16_t InputStream::readShort()
{
    return static_cast<std::int16_t>(readBits<2, false>(*this));
}

std::int32_t InputStream::readInt()
{
    return static_cast<std::int32_t>(readBits<4, false>(*this));
}

std::int64_t InputStream::readInt64()
{
    return static_cast<std::int64_t>(readBits<8, false>(*this));
}

float InputStream::readFloat()
{
    return byteOrder::floatFromBits(static_cast<std::uint32_t>(readBits<4, false>(*this)));
}

double InputStream::readDouble()
{
    return byteOrder::doubleFromBits(readBits<8, false>(*this));
}

std::int16_t InputStream::readShortBigEndian()
{
    return static_cast<std::int16_t>(readBits<2, true>(*this));
}

std::int32_t InputStream::readIntBigEndian()
{
    return static_cast<std::int32_t>(readBits<4, true>(*this));
}

std::int64_t InputStream::readInt64BigEndian()
{
    return static_cast<std::int64_t>(readBits<8, true>(*this));
}

float InputStream::readFloatBigEndian()
{
    return byteOrder::floatFromBits(static_cast<std::uint32_t>(readBits<4, true>(*this)));
}

double InputStream::readDoubleBigEndian()
{
    return byteOrder::doubleFromBits(readBits<8, true>(*this));
}

String InputStream::readString()
{
    // Grows in steps, so that a long string costs few reallocations and a short one little.
    std::vector<char> buffer(256);
    std::size_t count = 0;
    for (;;)
    {
        char c;
        if (read(&c, 1) != 1)
            return {};
        if (c == 0)
            return String(buffer.data(), count);
        if (count == buffer.size())
            buffer.resize(buffer.size() + 512);
        buffer[count++] = c;
    }
}

bool InputStream::readLine(String& line, bool dropCarriageReturn)
{
    line.clear();
    char c;
    if (read(&c, 1) != 1)
        return false;
    do
    {
        if (c == '\n')
            break;
        line.push_back(c);
    } while (read(&c, 1) == 1);
    if (dropCarriageReturn && !line.empty() && line.back() == '\r')
        line.pop_back();
    return true;
}

std::size_t InputStream::readIntoMemoryBlock(std::vector<std::uint8_t>& block, std::int64_t maxBytes)
{
    const std::int64_t remaining = getNumBytesRemaining();
    std::int64_t wanted = maxBytes;
    if (remaining >= 0 && (wanted < 0 || wanted > remaining))
        wanted = remaining;
    block.clear();
    if (wanted >= 0)
    {
        // Known size: one allocation, then one read at a time of at most INT_MAX bytes.
        block.resize(static_cast<std::size_t>(wanted));
        std::size_t done = 0;
        while (done < block.size())
        {
            const auto chunk = static_cast<int>(std::min<std::size_t>(block.size() - done, std::numeric_limits<int>::max()));
            const int got = read(block.data() + done, chunk);
            if (got <= 0)
                break;
            done += static_cast<std::size_t>(got);
        }
        block.resize(done);
        return done;
    }
    // Unknown length and no limit: read until the stream ends.
    std::uint8_t chunk[8192];
    for (int got; (got = read(chunk, sizeof chunk)) > 0;)
        block.insert(block.end(), chunk, chunk + got);
    return block.size();
}

std::int64_t InputStream::getNumBytesRemaining()
{
    const std::int64_t length = getTotalLength();
    return length < 0 ? length : length - getPosition();
}

void InputStream::skipNextBytes(std::int64_t numBytes)
{
    std::uint8_t scratch[4096];
    while (numBytes > 0)
    {
        const int got = read(scratch, static_cast<int>(std::min<std::int64_t>(numBytes, sizeof scratch)));
        if (got <= 0)
            return;
        numBytes -= got;
    }
}
} // namespace ondo
