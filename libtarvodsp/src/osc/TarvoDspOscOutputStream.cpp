#include "osc/TarvoDspOscOutputStream.h"

#include <limits>
#include <type_traits>

namespace ondo
{
namespace
{
template <typename Content>
bool writeAsPacket(const Content& content, std::vector<std::uint8_t>& packet)
{
    MemoryOutputStream memory(256);
    OSCOutputStream writer(memory);
    bool written;
    if constexpr (std::is_same_v<Content, OSCBundle>)
        written = writer.writeBundle(content);
    else
        written = writer.writeMessage(content);
    if (written)
        packet = memory.toVector();
    return written;
}
} // namespace

bool OSCOutputStream::writePacket(const OSCBundle& bundle, std::vector<std::uint8_t>& packet)
{
    return writeAsPacket(bundle, packet);
}

bool OSCOutputStream::writePacket(const OSCMessage& message, std::vector<std::uint8_t>& packet)
{
    return writeAsPacket(message, packet);
}

bool OSCOutputStream::writeString(const String& text)
{
    // Text, its zero and padding: 3 - (length mod 4) zeros after the terminating one.
    return output.writeString(text) && output.writeRepeatedByte(0, 3 - text.size() % 4);
}

bool OSCOutputStream::writeBlob(const OSCArgument::Blob& blob)
{
    if (blob.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
        return false;
    return output.writeIntBigEndian(static_cast<std::int32_t>(blob.size())) && output.write(blob.data(), blob.size()) &&
           output.writeRepeatedByte(0, (4 - blob.size() % 4) % 4);
}

bool OSCOutputStream::writeArgument(const OSCArgument& argument)
{
    switch (argument.getType())
    {
    case 'T':
    case 'F': return true;
    case 'i': return output.writeIntBigEndian(argument.getInt32());
    case 'f': return output.writeFloatBigEndian(argument.getFloat32());
    case 'h': return output.writeInt64BigEndian(argument.getInt64());
    // Narrowed to 4 bytes under its own tag: the format's known mismatch, kept as it is.
    case 'd': return output.writeFloatBigEndian(static_cast<float>(argument.getFloat64()));
    case 's': return writeString(argument.getString());
    case 'b': return writeBlob(argument.getBlob());
    default: return false;
    }
}

bool OSCOutputStream::writeMessage(const OSCMessage& message)
{
    const String& address = message.getText();
    const std::size_t numTags = message.getNumArguments();
    if (!writeString(address) || !output.writeByte(','))
        return false;
    for (const auto& argument : message.getArguments())
        if (!output.writeByte(static_cast<std::uint8_t>(argument.getType())))
            return false;
    if (!output.writeByte(0) || !output.writeRepeatedByte(0, 3 - (numTags + 1) % 4))
        return false;
    for (const auto& argument : message.getArguments())
        if (!writeArgument(argument))
            return false;
    return true;
}

bool OSCOutputStream::writeBundle(const OSCBundle& bundle)
{
    if (!output.writeString("#bundle") || !writeTimeTag(bundle.getTimeTag()))
        return false;
    for (const auto& element : bundle.getElements())
    {
        // The element's size is known once it is written: leave room, write, come back.
        const std::int64_t start = output.getPosition();
        if (!output.writeIntBigEndian(0))
            return false;
        const bool written = element.isMessage() ? writeMessage(element.getMessage()) : writeBundle(element.getBundle());
        const std::int64_t end = output.getPosition();
        if (!written || end - start - 4 > std::numeric_limits<std::int32_t>::max() || !output.setPosition(start) ||
            !output.writeIntBigEndian(static_cast<std::int32_t>(end - start - 4)) || !output.setPosition(end))
            return false;
    }
    return true;
}
} // namespace ondo
