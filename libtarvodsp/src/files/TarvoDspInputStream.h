#pragma once

#include "text/TarvoDspString.h"

#include <cstdint>
#include <vector>

namespace ondo
{
/// A readable byte source with a position. Every reader of a file or a packet in the library
/// reads through this interface, so that the same parser serves files and memory.
/// Not thread-safe: one reader at a time. Reading allocates only where a helper says so.
class InputStream
{
public:
    virtual ~InputStream() = default;

    /// Bytes in the whole stream; negative when unknown.
    virtual std::int64_t getTotalLength() = 0;
    /// True when no byte is left to read.
    virtual bool isExhausted() = 0;
    /// Copies up to `bytes` bytes to `buffer`; returns the count copied (0 at the end or for a
    /// negative `bytes`).
    virtual int read(void* buffer, int bytes) = 0;
    virtual std::int64_t getPosition() = 0;
    /// Moves to `position`, clamped to 0 and the length; false when the stream cannot move.
    virtual bool setPosition(std::int64_t position) = 0;

    // Each helper below gives 0 (or an empty result) when the stream ends before the value
    // is complete; the bytes that were there are consumed all the same.

    /// The next byte, or 0.
    char readByte();
    /// Little-endian values, as WAV and most PC formats store them.
    std::int16_t readShort();
    std::int32_t readInt();
    std::int64_t readInt64();
    float readFloat();
    double readDouble();
    /// Big-endian values, as OSC, AIFF and SDIF store them.
    std::int16_t readShortBigEndian();
    std::int32_t readIntBigEndian();
    std::int64_t readInt64BigEndian();
    float readFloatBigEndian();
    double readDoubleBigEndian();

    /// Bytes up to and including a zero, returned without the zero; empty when the stream ends
    /// before a zero. Allocates.
    String readString();
    /// The next line, without its line feed; with `dropCarriageReturn` a carriage return before
    /// the line feed (or at the very end) goes too. False when the stream was already at its
    /// end. Allocates.
    bool readLine(String& line, bool dropCarriageReturn = true);

    /// Replaces the contents of `block` with up to `maxBytes` bytes; a negative `maxBytes`, or
    /// one above what remains, means all that remains. Returns the count read. Allocates.
    std::size_t readIntoMemoryBlock(std::vector<std::uint8_t>& block, std::int64_t maxBytes = -1);

    /// Length minus position; an unknown (negative) length is passed through.
    std::int64_t getNumBytesRemaining();
    /// Advances by reading, for streams that cannot seek; stops at the end.
    void skipNextBytes(std::int64_t numBytes);

protected:
    /// True when exactly `bytes` bytes could be read into `buffer`.
    bool readExactly(void* buffer, int bytes) { return read(buffer, bytes) == bytes; }
};
} // namespace ondo
