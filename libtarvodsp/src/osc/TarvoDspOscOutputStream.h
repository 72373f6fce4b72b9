#pragma once

#include "files/TarvoDspMemoryOutputStream.h"
#include "osc/TarvoDspOscBundle.h"
#include "osc/TarvoDspOscMessage.h"

#include <cstdint>
#include <vector>

namespace ondo
{
/// Writes messages and bundles in the OSC 1.0 binary form read by `OSCInputStream`.
/// Never throws on format grounds: every write returns false when the output refuses bytes
/// (a memory block that cannot grow) or an argument has no binary form (`I`, `N`), and the
/// false travels up so that the whole export stops.
///
/// One departure from OSC 1.0 that the format keeps: a `d` argument is narrowed to float32
/// and written as 4 bytes under the tag `d`, which no OSC reader (this one included) reads
/// back as written. Nothing in the system makes a `d`; only a caller building one by hand can
/// meet it. Control thread; allocates as the output grows.
class OSCOutputStream
{
public:
    explicit OSCOutputStream(OutputStream& output) : output(output) {}

    /// `bundle` as one packet (header, time tag, size-prefixed elements) in a block that
    /// starts at 256 bytes; false when it could not be written. Allocates.
    static bool writePacket(const OSCBundle& bundle, std::vector<std::uint8_t>& packet);
    /// A lone message as one packet.
    static bool writePacket(const OSCMessage& message, std::vector<std::uint8_t>& packet);

    bool writeMessage(const OSCMessage& message);
    bool writeBundle(const OSCBundle& bundle);
    bool writeArgument(const OSCArgument& argument);
    /// Text, its zero, and zeros up to a multiple of 4.
    bool writeString(const String& text);
    bool writeBlob(const OSCArgument::Blob& blob);
    bool writeTimeTag(std::uint64_t timeTag) { return output.writeInt64BigEndian(static_cast<std::int64_t>(timeTag)); }

private:
    OutputStream& output;
};
} // namespace ondo
