// Feeds arbitrary bytes to the OSC packet reader. A packet must be read or refused with an
// ondo::Exception, never read past its end. What is read must write out, read back and write
// out again to the same bytes, except where the format's weak blob test refuses an empty blob
// that ends a packet.
#include "common/TarvoDspException.h"
#include "osc/TarvoDspOscInputStream.h"
#include "osc/TarvoDspOscOutputStream.h"

#include <cstddef>
#include <cstdint>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // A copy of exactly `size` bytes, so that AddressSanitizer sees any read past the packet.
    const std::vector<std::uint8_t> packet(data, data + size);
    ondo::OSCBundle bundle;
    try
    {
        bundle = ondo::OSCInputStream::readPacket(packet.data(), packet.size());
    }
    catch (const ondo::Exception&)
    {
        return 0;
    }
    std::vector<std::uint8_t> written;
    if (!ondo::OSCOutputStream::writePacket(bundle, written))
        __builtin_trap();
    // Compared as written bytes, so that a NaN argument counts as equal to itself.
    try
    {
        const auto again = ondo::OSCInputStream::readPacket(written.data(), written.size());
        std::vector<std::uint8_t> rewritten;
        if (!ondo::OSCOutputStream::writePacket(again, rewritten) || rewritten != written)
            __builtin_trap();
    }
    catch (const ondo::Exception& e)
    {
        if (e.getMessage() != "OSC input stream exhausted before reaching end of blob")
            __builtin_trap();
    }
    return 0;
}
