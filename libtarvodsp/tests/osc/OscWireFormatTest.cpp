#include "osc/TarvoDspOscInputStream.h"
#include "osc/TarvoDspOscOutputStream.h"

#include "common/TarvoDspException.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
using namespace std::string_literals;
using ondo::OSCArgument;
using ondo::OSCBundle;
using ondo::OSCInputStream;
using ondo::OSCMessage;
using ondo::OSCOutputStream;

std::string bytesOf(const std::vector<std::uint8_t>& v)
{
    return {v.begin(), v.end()};
}

OSCBundle read(const std::string& packet)
{
    return OSCInputStream::readPacket(packet.data(), packet.size());
}

template <typename Content>
std::string write(const Content& content)
{
    std::vector<std::uint8_t> packet;
    EXPECT_TRUE(OSCOutputStream::writePacket(content, packet));
    return bytesOf(packet);
}

OSCMessage everyTag()
{
    OSCMessage m("/ab");
    m.addArgument(std::int32_t{1}).addArgument(1.0f).addArgument("hi").addArgument(true).addArgument(false);
    m.addArgument(std::int64_t{-2}).addArgument(OSCArgument(OSCArgument::Blob{1, 2, 3, 4, 5}));
    return m;
}

// Packets written out by hand from the OSC 1.0 layout: big-endian, 4-byte fields.
const std::string noArguments = "/abc\0\0\0\0,\0\0\0"s;
const std::string everyTagBytes = "/ab\0,ifsTFhb\0\0\0\0"s + "\0\0\0\x01"s + "\x3F\x80\0\0"s + "hi\0\0"s +
                                  "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFE"s + "\0\0\0\x05\x01\x02\x03\x04\x05\0\0\0"s;
const std::string bundleHeader = "#bundle\0\0\0\0\0\0\0\0\x01"s;

TEST(OscWireFormat, MessagesAndBundlesByteForByte)
{
    EXPECT_EQ(write(OSCMessage("/abc")), noArguments) << "four zeros after a four-letter address, then ','";
    EXPECT_EQ(write(OSCMessage("/ab")), "/ab\0,\0\0\0"s) << "a three-letter address needs one zero";
    EXPECT_EQ(write(everyTag()), everyTagBytes);

    OSCBundle bundle;
    bundle.setTimeTag(0x0102030405060708ull);
    bundle.add(OSCMessage("/abc"));
    bundle.add(OSCBundle());
    const std::string bundleBytes = "#bundle\0\x01\x02\x03\x04\x05\x06\x07\x08"s + "\0\0\0\x0C"s + noArguments +
                                    "\0\0\0\x10"s + bundleHeader;
    EXPECT_EQ(write(bundle), bundleBytes);
    EXPECT_EQ(write(OSCBundle()), bundleHeader) << "an empty state is the 16-byte header";

    EXPECT_EQ(read(bundleBytes), bundle);
    const OSCBundle lone = read(everyTagBytes);
    ASSERT_EQ(lone.size(), 1u);
    EXPECT_EQ(lone.getTimeTag(), 1u) << "a lone message comes as a bundle of one, time tag 1";
    EXPECT_EQ(lone[0].getMessage(), everyTag());
    EXPECT_EQ(read(bundleHeader), OSCBundle());
}

TEST(OscWireFormat, DeliberateDeparturesFromOsc)
{
    // A double on the wire is kept as a float: 0.1 narrowed.
    const OSCBundle fromDouble = read("/a\0\0,d\0\0\x3F\xB9\x99\x99\x99\x99\x99\x9A"s);
    const OSCArgument& narrowed = fromDouble[0].getMessage().getArgument(0);
    EXPECT_EQ(narrowed.getType(), 'f');
    EXPECT_EQ(narrowed.getFloat32(), 0.1f);

    // The writer narrows a double to four bytes under its own tag: that does not read back.
    OSCMessage withDouble("/a");
    withDouble.addArgument(OSCArgument(0.1));
    const std::string written = write(withDouble);
    EXPECT_EQ(written, "/a\0\0,d\0\0\x3D\xCC\xCC\xCD"s) << "0.1f is 0x3DCCCCCD";
    EXPECT_THROW(read(written), ondo::Exception);

    // A blob claiming 100 bytes with 8 left passes the remainder test, (100 + 3) mod 4 = 3,
    // and is cut to those 8; a negative size takes all that is left.
    const std::string eight = "ABCDEFGH"s;
    EXPECT_EQ(read("/a\0\0,b\0\0\0\0\0\x64"s + eight)[0].getMessage().getArgument(0).getBlob(),
              OSCArgument::Blob(eight.begin(), eight.end()));
    EXPECT_EQ(read("/a\0\0,b\0\0\xFF\xFF\xFF\xFE"s + eight)[0].getMessage().getArgument(0).getBlob().size(), 8u);

    // A bundle told it is larger than the stream stops with the stream, keeping its elements.
    const std::string inner = bundleHeader + "\0\0\0\x0C"s + noArguments;
    ondo::MemoryInputStream memory(inner.data(), inner.size());
    const OSCBundle cut = OSCInputStream(memory).readBundle(1000);
    ASSERT_EQ(cut.size(), 1u);
    EXPECT_EQ(cut[0].getMessage(), OSCMessage("/abc"));

    // The same test refuses an empty blob that ends a packet: (0 + 3) mod 4 = 3 bytes are
    // asked for where none are left. The fuzzer found it: a negative size read as empty there.
    const std::string emptyBlobLast = "/ab\0,ifsTFib\0\0\0\0\0\0\0\x01\x3F\x80\0\x08hi\x01\0\xFF\x30\xB7\xFF\xFF\x62\0\x30"s;
    const OSCBundle withEmptyBlob = read(emptyBlobLast);
    EXPECT_TRUE(withEmptyBlob[0].getMessage().getArgument(6).getBlob().empty());
    EXPECT_THROW(read(write(withEmptyBlob)), ondo::Exception);
    OSCMessage emptyBlob("/a");
    emptyBlob.addArgument(OSCArgument(OSCArgument::Blob{}));
    EXPECT_EQ(write(emptyBlob), "/a\0\0,b\0\0\0\0\0\0"s);
    EXPECT_THROW(read(write(emptyBlob)), ondo::Exception);

    // I and N pass the tag check but have no binary form: reading and writing refuse them.
    OSCMessage nil("/a");
    nil.addArgument(OSCArgument::withoutValue('N'));
    std::vector<std::uint8_t> packet;
    EXPECT_FALSE(OSCOutputStream::writePacket(nil, packet));
}

TEST(OscWireFormat, EveryFailureHasItsText)
{
    enum class Call
    {
        packet,
        timeTag,
        element
    };
    struct Case
    {
        std::string bytes;
        std::string text;
        Call call = Call::packet;
    };
    const std::string a = "/a\0\0"s;
    const Case cases[] = {
        {a + ",i\0\0\0\0\0"s, "OSC input stream exhausted while reading int32"},
        {a + ",h\0\0"s + std::string(7, '\0'), "OSC input stream exhausted while reading int64"},
        {a + ",f\0\0\0\0\0"s, "OSC input stream exhausted while reading float"},
        {a + ",d\0\0"s + std::string(7, '\0'), "OSC input stream exhausted while reading double"},
        {a + ",s\0\0ab"s, "OSC input stream exhausted while reading string"},
        {a + ",s\0\0abcd"s, "OSC input stream exhausted before finding null terminator of string"},
        {a + ",b\0\0\0\0\0"s, "OSC input stream exhausted while reading blob"},
        {a + ",b\0\0\0\0\0\x02"s, "OSC input stream exhausted before reaching end of blob"},
        {std::string(7, '\0'), "OSC input stream exhausted while reading time tag", Call::timeTag},
        {a + ",i"s, "OSC input stream exhausted while reading type tag string"},
        {a + ",iii"s, "OSC input stream exhausted while reading type tag string"},
        {a + "i\0\0\0"s, "OSC input stream format error: expected type tag string"},
        {a + ",c\0\0"s, "OSC input stream format error: encountered unsupported type tag : c"},
        {a + ",N\0\0"s, "OSC input stream: internal error while reading message argument"},
        {a + ",I\0\0"s, "OSC input stream: internal error while reading message argument"},
        {"#bundle\0\0\0\0\0"s, "OSC input stream exhausted while reading bundle"},
        {"#bundlX\0"s + std::string(8, '\0'), "OSC input stream format error: bundle does not start with string '#bundle'"},
        {"\0\0\0"s, "OSC input stream exhausted while reading bundle element size", Call::element},
        {bundleHeader + "\0\0\0\x03\0\0\0\0"s, "OSC input stream format error: invalid bundle element size"},
        {bundleHeader + "\0\0\0\x64"s + std::string(8, '\0'), "OSC input stream exhausted while reading bundle element content"},
        {bundleHeader + "\xFF\xFF\xFF\xFF"s + std::string(8, '\0'),
         "OSC input stream exhausted while reading bundle element content"},
        {bundleHeader + "\0\0\0\x08" "abcd\0\0\0\0"s, "OSC input stream: invalid bundle element content"},
        {"x"s, "OSC input stream: invalid bundle element content"},
        {""s, "OSC input stream: invalid bundle element content"},
        {"/a\0X,\0\0\0"s, "OSC input stream format error: missing padding zeros"},
        {"/abc\0"s, "OSC input stream format error: missing padding zeros"},
        {a + ",i\0\x01\0\0\0\0"s, "OSC input stream format error: missing padding zeros"},
        {a + ",b\0\0\0\0\0\x01\x7F\0\0\x01"s, "OSC input stream format error: missing padding zeros"},
        {bundleHeader + "\0\0\0\x14"s + bundleHeader + "\0\0\0\0"s,
         "OSC input stream format error: wrong element content size encountered while reading bundle"},
        {bundleHeader + "\0\0\0\x10"s + a + ",\0\0\0"s + std::string(8, '\0'),
         "OSC input stream format error: wrong element content size encountered while reading message"},
        {noArguments + "\0\0\0\0"s, "OSC input stream format error: wrong element content size encountered while reading message"},
    };
    for (const auto& c : cases)
    {
        try
        {
            ondo::MemoryInputStream memory(c.bytes.data(), c.bytes.size());
            OSCInputStream reader(memory);
            OSCBundle bundle;
            if (c.call == Call::timeTag)
                reader.readTimeTag();
            else if (c.call == Call::element)
                reader.readElement(bundle);
            else
                read(c.bytes);
            ADD_FAILURE() << "no failure for " << c.text;
        }
        catch (const ondo::Exception& e)
        {
            EXPECT_EQ(e.getMessage(), c.text);
            EXPECT_EQ(e.getLocation().file, "TarvoDspOscInputStream.cpp") << c.text;
        }
    }
    EXPECT_THROW(read("/a b\0\0\0\0,\0\0\0"s), ondo::Exception) << "a blank is not allowed in a received address";
}

TEST(OscWireFormat, TruncatedCorruptedAndLyingPacketsFailCleanly)
{
    OSCBundle inner;
    inner.add(everyTag());
    OSCBundle outer;
    outer.add(OSCMessage("/x/y"));
    outer.add(inner);
    const std::string good = write(outer);
    ASSERT_EQ(read(good), outer);

    int accepted = 0, refused = 0;
    auto attempt = [&](const std::string& packet) {
        try
        {
            read(packet);
            ++accepted;
        }
        catch (const ondo::Exception&)
        {
            ++refused;
        }
    };
    for (std::size_t n = 0; n < good.size(); ++n)
        attempt(good.substr(0, n));
    EXPECT_EQ(accepted, 2) << "only the cuts after the header and after the first element are whole bundles";
    // Each byte replaced by values that break lengths, signs and paddings; the size fields
    // then claim anything from negative to 2 GB.
    for (std::size_t i = 0; i < good.size(); ++i)
        for (const char value : {'\0', '\x7F', '\x80', '\xFF', '#', '/'})
        {
            std::string bad = good;
            bad[i] = value;
            attempt(bad);
        }
    EXPECT_GT(refused, 6 * static_cast<int>(good.size()) / 2);

    // A memory block that cannot grow makes the writer say so.
    ondo::MemoryOutputStream small(0, 20);
    EXPECT_FALSE(OSCOutputStream(small).writeBundle(outer));
}
} // namespace
