#include "osc/TarvoDspOscInputStream.h"

#include "common/TarvoDspException.h"

#include <cstring>

namespace ondo
{
namespace
{
// Bundles nest without limit in the format; a hostile packet of nested headers must not
// exhaust the stack, and no real sender nests this deep.
constexpr int maxBundleDepth = 64;

[[noreturn]] void fail(const char* text, SourceLocation location)
{
    throw Exception(text, location, false);
}

/// Zeros that bring `length` bytes to a multiple of 4.
std::int64_t paddingFor(std::int64_t length)
{
    return (4 - length % 4) % 4;
}
} // namespace

OSCBundle OSCInputStream::readPacket(const void* data, std::size_t size)
{
    MemoryInputStream memory(data, size);
    OSCInputStream reader(memory);
    const auto total = static_cast<std::int64_t>(size);
    switch (memory.peekByte())
    {
    case '/':
    {
        OSCBundle bundle;
        bundle.add(reader.readMessage());
        if (memory.getPosition() != total)
            fail("OSC input stream format error: wrong element content size encountered while reading message",
                 ONDO_SOURCE_LOCATION);
        return bundle;
    }
    case '#':
    {
        OSCBundle bundle = reader.readBundle(total - 4);
        if (memory.getPosition() != total)
            fail("OSC input stream format error: wrong element content size encountered while reading bundle",
                 ONDO_SOURCE_LOCATION);
        return bundle;
    }
    default:
        fail("OSC input stream: invalid bundle element content", ONDO_SOURCE_LOCATION);
    }
}

std::int32_t OSCInputStream::readInt32()
{
    if (remaining() < 4)
        fail("OSC input stream exhausted while reading int32", ONDO_SOURCE_LOCATION);
    return input.readIntBigEndian();
}

std::int64_t OSCInputStream::readInt64()
{
    if (remaining() < 8)
        fail("OSC input stream exhausted while reading int64", ONDO_SOURCE_LOCATION);
    return input.readInt64BigEndian();
}

float OSCInputStream::readFloat()
{
    if (remaining() < 4)
        fail("OSC input stream exhausted while reading float", ONDO_SOURCE_LOCATION);
    return input.readFloatBigEndian();
}

double OSCInputStream::readDouble()
{
    if (remaining() < 8)
        fail("OSC input stream exhausted while reading double", ONDO_SOURCE_LOCATION);
    return input.readDoubleBigEndian();
}

String OSCInputStream::readString()
{
    if (remaining() < 4)
        fail("OSC input stream exhausted while reading string", ONDO_SOURCE_LOCATION);
    // The text runs to the first zero within what is left: found in place, copied once.
    const std::uint8_t* start = input.getData() + input.getPosition();
    const auto* zero = static_cast<const std::uint8_t*>(std::memchr(start, 0, static_cast<std::size_t>(remaining())));
    if (zero == nullptr)
    {
        input.setPosition(input.getTotalLength());
        fail("OSC input stream exhausted before finding null terminator of string", ONDO_SOURCE_LOCATION);
    }
    String text(reinterpret_cast<const char*>(start), static_cast<std::size_t>(zero - start));
    input.setPosition(input.getPosition() + static_cast<std::int64_t>(text.size()) + 1);
    readPadding(paddingFor(static_cast<std::int64_t>(text.size()) + 1));
    return text;
}

OSCArgument::Blob OSCInputStream::readBlob()
{
    if (remaining() < 4)
        fail("OSC input stream exhausted while reading blob", ONDO_SOURCE_LOCATION);
    const std::int64_t size = input.readIntBigEndian();
    // The format's own weak test: the remainder of the size, not the size rounded up.
    if (remaining() < (size + 3) % 4)
        fail("OSC input stream exhausted before reaching end of blob", ONDO_SOURCE_LOCATION);
    OSCArgument::Blob blob;
    input.readIntoMemoryBlock(blob, size);
    readPadding(paddingFor(static_cast<std::int64_t>(blob.size())));
    return blob;
}

std::uint64_t OSCInputStream::readTimeTag()
{
    if (remaining() < 8)
        fail("OSC input stream exhausted while reading time tag", ONDO_SOURCE_LOCATION);
    return static_cast<std::uint64_t>(input.readInt64BigEndian());
}

String OSCInputStream::readTypeTags()
{
    if (remaining() < 4)
        fail("OSC input stream exhausted while reading type tag string", ONDO_SOURCE_LOCATION);
    if (input.readByte() != ',')
        fail("OSC input stream format error: expected type tag string", ONDO_SOURCE_LOCATION);
    String tags;
    for (;;)
    {
        if (input.isExhausted())
            fail("OSC input stream exhausted while reading type tag string", ONDO_SOURCE_LOCATION);
        const char tag = input.readByte();
        if (tag == 0)
            break;
        if (std::strchr("FINTbdfhis", tag) == nullptr)
            throw Exception(String("OSC input stream format error: encountered unsupported type tag : ") + tag,
                            ONDO_SOURCE_LOCATION, false);
        tags += tag;
    }
    readPadding(paddingFor(static_cast<std::int64_t>(tags.size()) + 2));
    return tags;
}

OSCArgument OSCInputStream::readArgument(char tag)
{
    switch (tag)
    {
    case 'i': return OSCArgument(readInt32());
    case 'f': return OSCArgument(readFloat());
    case 'h': return OSCArgument(readInt64());
    // A double keeps only float precision: the system's messages carry float32 throughout.
    case 'd': return OSCArgument(static_cast<float>(readDouble()));
    case 's': return OSCArgument(readString());
    case 'b': return OSCArgument(readBlob());
    case 'T': return OSCArgument(true);
    case 'F': return OSCArgument(false);
    default: fail("OSC input stream: internal error while reading message argument", ONDO_SOURCE_LOCATION);
    }
}

OSCMessage OSCInputStream::readMessage()
{
    // A received address may hold wildcards; a character outside them throws here.
    OSCMessage message(OSCAddress::fromPattern(readString()));
    const String tags = readTypeTags();
    for (const char tag : tags)
        message.addArgument(readArgument(tag));
    return message;
}

OSCBundle OSCInputStream::readBundle(std::int64_t sizeLeft)
{
    if (remaining() < 16)
        fail("OSC input stream exhausted while reading bundle", ONDO_SOURCE_LOCATION);
    // "#bundle" with its zero fills 8 bytes, so the string reader's padding takes nothing.
    if (readString() != "#bundle")
        fail("OSC input stream format error: bundle does not start with string '#bundle'", ONDO_SOURCE_LOCATION);
    if (bundleDepth >= maxBundleDepth)
        fail("OSC input stream format error: bundles nested too deeply", ONDO_SOURCE_LOCATION);
    OSCBundle bundle;
    bundle.setTimeTag(readTimeTag());
    ++bundleDepth;
    try
    {
        // A size that claims more than the stream holds ends quietly with the stream.
        for (std::int64_t consumed = 16; consumed < sizeLeft && !input.isExhausted();)
        {
            const auto start = input.getPosition();
            readElement(bundle);
            consumed += input.getPosition() - start;
        }
    }
    catch (...)
    {
        --bundleDepth;
        throw;
    }
    --bundleDepth;
    return bundle;
}

void OSCInputStream::readElement(OSCBundle& bundle)
{
    if (remaining() < 4)
        fail("OSC input stream exhausted while reading bundle element size", ONDO_SOURCE_LOCATION);
    const std::int64_t size = input.readIntBigEndian();
    // Compared as unsigned, so that a negative size passes here and fails the next test.
    if (static_cast<std::uint64_t>(size) < 4)
        fail("OSC input stream format error: invalid bundle element size", ONDO_SOURCE_LOCATION);
    if (static_cast<std::uint64_t>(remaining()) < static_cast<std::uint64_t>(size))
        fail("OSC input stream exhausted while reading bundle element content", ONDO_SOURCE_LOCATION);

    const auto start = input.getPosition();
    switch (input.peekByte())
    {
    case '/':
        bundle.add(readMessage());
        if (input.getPosition() - start != size)
            fail("OSC input stream format error: wrong element content size encountered while reading message",
                 ONDO_SOURCE_LOCATION);
        break;
    case '#':
        bundle.add(readBundle(size - 4));
        if (input.getPosition() - start != size)
            fail("OSC input stream format error: wrong element content size encountered while reading bundle",
                 ONDO_SOURCE_LOCATION);
        break;
    default:
        fail("OSC input stream: invalid bundle element content", ONDO_SOURCE_LOCATION);
    }
}

void OSCInputStream::readPadding(std::int64_t count)
{
    for (; count > 0; --count)
    {
        char zero = 1;
        if (input.read(&zero, 1) != 1 || zero != 0)
            fail("OSC input stream format error: missing padding zeros", ONDO_SOURCE_LOCATION);
    }
}
} // namespace ondo
