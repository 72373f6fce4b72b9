// Our reader and writer against liblo, an independent OSC implementation.
#include "osc/TarvoDspOscInputStream.h"
#include "osc/TarvoDspOscOutputStream.h"

#include "common/TarvoDspException.h"

#include <gtest/gtest.h>
#include <lo/lo.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace
{
using ondo::OSCAddress;
using ondo::OSCArgument;
using ondo::OSCBundle;
using ondo::OSCInputStream;
using ondo::OSCMessage;
using ondo::OSCOutputStream;

/// What liblo made of a message, in our types: the comparison rests on liblo's own parse.
// liblo hands arguments as pointers into the packet, only 4-byte aligned, while its union asks
// for 8: read the bytes rather than a member.
template <typename T>
T argumentValue(const lo_arg* argument)
{
    T value;
    std::memcpy(&value, static_cast<const void*>(argument), sizeof value);
    return value;
}

OSCMessage fromLiblo(const char* path, const char* types, lo_arg** argv, int argc)
{
    OSCMessage message(OSCAddress::fromPattern(path));
    for (int i = 0; i < argc; ++i)
        switch (types[i])
        {
        case 'i': message.addArgument(OSCArgument(argumentValue<std::int32_t>(argv[i]))); break;
        case 'f': message.addArgument(OSCArgument(argumentValue<float>(argv[i]))); break;
        case 'h': message.addArgument(OSCArgument(argumentValue<std::int64_t>(argv[i]))); break;
        case 'd': message.addArgument(OSCArgument(argumentValue<double>(argv[i]))); break;
        case 's': message.addArgument(OSCArgument(std::string(reinterpret_cast<const char*>(argv[i])))); break;
        case 'T': message.addArgument(OSCArgument(true)); break;
        case 'F': message.addArgument(OSCArgument(false)); break;
        case 'b':
        {
            const auto* data = static_cast<const std::uint8_t*>(lo_blob_dataptr(reinterpret_cast<lo_blob>(argv[i])));
            const auto size = lo_blob_datasize(reinterpret_cast<lo_blob>(argv[i]));
            message.addArgument(OSCArgument(OSCArgument::Blob(data, data + size)));
            break;
        }
        default: ADD_FAILURE() << "unexpected tag " << types[i];
        }
    return message;
}

std::vector<std::uint8_t> serialise(lo_message m, const char* path)
{
    std::size_t size = 0;
    void* data = lo_message_serialise(m, path, nullptr, &size);
    std::vector<std::uint8_t> bytes(static_cast<std::uint8_t*>(data), static_cast<std::uint8_t*>(data) + size);
    std::free(data);
    return bytes;
}

std::vector<std::uint8_t> serialise(lo_bundle b)
{
    std::size_t size = 0;
    void* data = lo_bundle_serialise(b, nullptr, &size);
    std::vector<std::uint8_t> bytes(static_cast<std::uint8_t*>(data), static_cast<std::uint8_t*>(data) + size);
    std::free(data);
    return bytes;
}

/// A liblo message with one argument of every tag both sides know.
lo_message libloEveryTag(float f, const std::string& text)
{
    lo_message m = lo_message_new();
    lo_message_add_int32(m, -123456);
    lo_message_add_float(m, f);
    lo_message_add_string(m, text.c_str());
    const unsigned char blobBytes[] = {9, 8, 7, 6, 5};
    lo_blob blob = lo_blob_new(sizeof blobBytes, blobBytes);
    lo_message_add_blob(m, blob);
    lo_blob_free(blob);
    lo_message_add_int64(m, -(1LL << 40));
    lo_message_add_true(m);
    lo_message_add_false(m);
    return m;
}

OSCMessage ourEveryTag(const std::string& address, float f, const std::string& text)
{
    OSCMessage m(address);
    m.addArgument(std::int32_t{-123456}).addArgument(f).addArgument(text);
    m.addArgument(OSCArgument(OSCArgument::Blob{9, 8, 7, 6, 5}));
    m.addArgument(std::int64_t{-(1LL << 40)}).addArgument(true).addArgument(false);
    return m;
}

TEST(OscLibloInterop, OurReaderReadsWhatLibloWrites)
{
    for (const std::string text : {"", "abc", "abcd", "with blanks and 'quotes'"})
    {
        lo_message m = libloEveryTag(0.25f, text);
        const auto bytes = serialise(m, "/source/3/gain");
        lo_message_free(m);
        const OSCBundle read = OSCInputStream::readPacket(bytes.data(), bytes.size());
        ASSERT_EQ(read.size(), 1u);
        EXPECT_EQ(read[0].getMessage(), ourEveryTag("/source/3/gain", 0.25f, text)) << '"' << text << '"';
    }

    // Nested bundles with liblo's time tags: seconds in the high word, fraction in the low.
    lo_bundle outer = lo_bundle_new(lo_timetag{0x12345678u, 0x9ABCDEF0u});
    // liblo's "immediately" time tag (its macro is a C compound literal).
    lo_bundle inner = lo_bundle_new(lo_timetag{0u, 1u});
    lo_message a = libloEveryTag(-1.5f, "in");
    lo_message b = lo_message_new();
    lo_message_add_double(b, 0.1);
    lo_bundle_add_message(inner, "/inner/*/x", a);
    lo_bundle_add_message(outer, "/first", b);
    lo_bundle_add_bundle(outer, inner);
    const auto bytes = serialise(outer);
    lo_bundle_free_recursive(outer);

    OSCBundle expectedInner;
    expectedInner.add(ourEveryTag("/inner/x", -1.5f, "in"));
    const OSCBundle read = OSCInputStream::readPacket(bytes.data(), bytes.size());
    EXPECT_EQ(read.getTimeTag(), 0x123456789ABCDEF0ull);
    ASSERT_EQ(read.size(), 2u);
    const OSCMessage& first = read[0].getMessage();
    EXPECT_EQ(first.getText(), "/first");
    ASSERT_EQ(first.getNumArguments(), 1u);
    EXPECT_EQ(first.getArgument(0).getType(), 'f') << "liblo's double comes in as a float";
    EXPECT_EQ(first.getArgument(0).getFloat32(), 0.1f);
    ASSERT_TRUE(read[1].isBundle());
    const OSCBundle& nested = read[1].getBundle();
    EXPECT_EQ(nested.getTimeTag(), 1u);
    ASSERT_EQ(nested.size(), 1u);
    EXPECT_EQ(nested[0].getMessage().getText(), "/inner/*/x");
    EXPECT_TRUE(nested[0].getMessage().isPattern()) << "received addresses keep their wildcards";
    EXPECT_EQ(nested[0].getMessage().getArguments(), expectedInner[0].getMessage().getArguments());
}

TEST(OscLibloInterop, OurReaderRefusesWhatItCannotHold)
{
    struct Case
    {
        void (*add)(lo_message);
        std::string text;
    };
    const Case cases[] = {
        {[](lo_message m) { lo_message_add_nil(m); }, "OSC input stream: internal error while reading message argument"},
        {[](lo_message m) { lo_message_add_infinitum(m); }, "OSC input stream: internal error while reading message argument"},
        {[](lo_message m) { lo_message_add_char(m, 'x'); }, "OSC input stream format error: encountered unsupported type tag : c"},
        {[](lo_message m) { lo_message_add_symbol(m, "sym"); }, "OSC input stream format error: encountered unsupported type tag : S"},
    };
    for (const auto& c : cases)
    {
        lo_message m = lo_message_new();
        c.add(m);
        const auto bytes = serialise(m, "/a");
        lo_message_free(m);
        try
        {
            OSCInputStream::readPacket(bytes.data(), bytes.size());
            ADD_FAILURE() << c.text;
        }
        catch (const ondo::Exception& e)
        {
            EXPECT_EQ(e.getMessage(), c.text);
        }
    }
}

/// Collects what liblo's server dispatches from a packet: messages and bundle time tags.
struct LibloCollector
{
    std::vector<OSCMessage> messages;
    std::vector<lo_timetag> bundleStarts;
    int bundleEnds = 0;

    static int onMessage(const char* path, const char* types, lo_arg** argv, int argc, lo_message, void* self)
    {
        static_cast<LibloCollector*>(self)->messages.push_back(fromLiblo(path, types, argv, argc));
        return 0;
    }
    static int onBundleStart(lo_timetag time, void* self)
    {
        static_cast<LibloCollector*>(self)->bundleStarts.push_back(time);
        return 0;
    }
    static int onBundleEnd(void* self)
    {
        ++static_cast<LibloCollector*>(self)->bundleEnds;
        return 0;
    }
};

TEST(OscLibloInterop, LibloReadsWhatOurWriterWrites)
{
    for (const std::string text : {"", "abc", "abcd", "x y"})
    {
        const OSCMessage ours = ourEveryTag("/source/12/name", 3.75f, text);
        std::vector<std::uint8_t> packet;
        ASSERT_TRUE(OSCOutputStream::writePacket(ours, packet));
        int result = 0;
        lo_message m = lo_message_deserialise(packet.data(), packet.size(), &result);
        ASSERT_NE(m, nullptr) << "liblo error " << result;
        EXPECT_EQ(fromLiblo("/source/12/name", lo_message_get_types(m), lo_message_get_argv(m), lo_message_get_argc(m)), ours);
        EXPECT_EQ(lo_message_length(m, "/source/12/name"), packet.size()) << "liblo sizes it as we wrote it";
        lo_message_free(m);
    }

    OSCBundle inner;
    inner.add(ourEveryTag("/b", 1.0f, "inner"));
    OSCBundle outer;
    outer.setTimeTag(1);
    outer.add(OSCMessage("/a"));
    outer.add(inner);
    outer.add(ourEveryTag("/c", 2.0f, "last"));
    std::vector<std::uint8_t> packet;
    ASSERT_TRUE(OSCOutputStream::writePacket(outer, packet));

    lo_server server = lo_server_new_with_proto(nullptr, LO_UDP, nullptr);
    ASSERT_NE(server, nullptr);
    LibloCollector collector;
    lo_server_add_method(server, nullptr, nullptr, LibloCollector::onMessage, &collector);
    lo_server_add_bundle_handlers(server, LibloCollector::onBundleStart, LibloCollector::onBundleEnd, &collector);
    EXPECT_GE(lo_server_dispatch_data(server, packet.data(), packet.size()), 0);
    lo_server_free(server);

    ASSERT_EQ(collector.messages.size(), 3u);
    EXPECT_EQ(collector.messages[0], OSCMessage("/a"));
    EXPECT_EQ(collector.messages[1], inner[0].getMessage());
    EXPECT_EQ(collector.messages[2], ourEveryTag("/c", 2.0f, "last"));
    ASSERT_EQ(collector.bundleStarts.size(), 2u) << "the outer bundle and the nested one";
    EXPECT_EQ(collector.bundleStarts[0].sec, 0u);
    EXPECT_EQ(collector.bundleStarts[0].frac, 1u);
    EXPECT_EQ(collector.bundleEnds, 2);
}

TEST(OscLibloInterop, LibloRefusesOurNarrowedDouble)
{
    // Our writer puts 4 bytes under `d`; liblo expects 8, so the message is short for it.
    OSCMessage ours("/a");
    ours.addArgument(OSCArgument(0.5));
    std::vector<std::uint8_t> packet;
    ASSERT_TRUE(OSCOutputStream::writePacket(ours, packet));
    int result = 0;
    lo_message m = lo_message_deserialise(packet.data(), packet.size(), &result);
    EXPECT_EQ(m, nullptr);
    EXPECT_NE(result, 0);
    if (m != nullptr)
        lo_message_free(m);
}
} // namespace
