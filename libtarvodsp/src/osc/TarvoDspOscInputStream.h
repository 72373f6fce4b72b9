#pragma once

#include "files/TarvoDspMemoryInputStream.h"
#include "osc/TarvoDspOscBundle.h"
#include "osc/TarvoDspOscMessage.h"

#include <cstddef>
#include <cstdint>

namespace ondo
{
/// Reads OSC 1.0 packets (big-endian, 4-byte aligned) from memory, as they arrive from a
/// socket or sit in an `.osc` preset. Every failure throws `ondo::Exception` and delivers
/// nothing of the message or bundle being read. Whatever its size fields claim, the reader
/// never touches a byte outside the block it was given.
///
/// Departures from OSC 1.0 that the format keeps: a `d` argument is read as 8 bytes and
/// stored as an `f`, narrowed to float32; a blob's length is tested only against
/// (size + 3) mod 4 remaining bytes, so a blob that claims more than is left is cut short
/// silently (a negative size reads all that is left).
/// Control thread; reading allocates.
class OSCInputStream
{
public:
    explicit OSCInputStream(MemoryInputStream& input) : input(input) {}

    /// Reads a whole packet of `size` bytes: a bundle as it is, a lone message as a bundle of
    /// one message with time tag 1.
    static OSCBundle readPacket(const void* data, std::size_t size);

    std::int32_t readInt32();
    std::int64_t readInt64();
    float readFloat();
    double readDouble();
    /// Text up to its zero, then the zeros up to the next multiple of 4.
    String readString();
    OSCArgument::Blob readBlob();
    std::uint64_t readTimeTag();
    /// The tags after the leading `,`, each checked against the tags this system knows.
    String readTypeTags();
    OSCArgument readArgument(char tag);
    OSCMessage readMessage();
    /// `sizeLeft`: the bundle's element size minus 4 (for a whole packet, its size minus 4).
    OSCBundle readBundle(std::int64_t sizeLeft);
    /// One size-prefixed element of a bundle, appended to `bundle`.
    void readElement(OSCBundle& bundle);
    /// Reads `count` bytes that must all be zero.
    void readPadding(std::int64_t count);

private:
    std::int64_t remaining() { return input.getNumBytesRemaining(); }

    MemoryInputStream& input;
    int bundleDepth = 0;
};
} // namespace ondo
