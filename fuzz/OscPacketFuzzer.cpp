// Feeds arbitrary bytes to the OSC packet reader. A packet must be read or refused with an
// ondo::Exception, never read past its end; what is read must write out and read back the same.
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
    if (!(ondo::OSCInputStream::readPacket(written.data(), written.size()) == bundle))
        __builtin_trap();
    return 0;
}
