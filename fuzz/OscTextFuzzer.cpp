// Feeds arbitrary lines to the OSC text line parser, as `.txt` and `.coll` presets do. A line
// must parse or be refused with an ondo::Exception; a parsed message's own text form must
// parse again into as many arguments. The one exception is an address holding an apostrophe:
// the quote then pairs with the first quote of the arguments, and the text form does not read
// back.
#include "common/TarvoDspException.h"
#include "osc/TarvoDspOscMessage.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::size_t start = 0;
    while (start <= text.size())
    {
        auto end = text.find('\n', start);
        if (end == std::string::npos)
            end = text.size();
        const std::string line = text.substr(start, end - start);
        start = end + 1;
        ondo::OSCMessage message;
        try
        {
            message = ondo::OSCMessage::fromText(line);
        }
        catch (const ondo::Exception&)
        {
            continue;
        }
        if (message.getText().find('\'') != std::string::npos)
            continue;
        const ondo::OSCMessage again = ondo::OSCMessage::fromText(message.toText());
        if (again.getNumArguments() != message.getNumArguments())
            __builtin_trap();
    }
    return 0;
}
