// Feeds arbitrary bytes to the XML parser. Whatever it accepts in valid UTF-8 must survive the
// writer: the written document parses again into the same tree, text nodes compared after
// merging neighbours and dropping blank ones (the writer joins text, the parser drops blanks).
// Bytes that are not UTF-8 are written as the characters of their codes, so they come back
// changed by design; such inputs are only parsed.
#include "text/TarvoDspXmlDocument.h"
#include "text/TarvoDspXmlElement.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace
{
bool isUtf8(const std::string& text)
{
    for (std::size_t i = 0; i < text.size();)
    {
        const auto lead = static_cast<unsigned char>(text[i++]);
        const int more = lead < 0x80 ? 0 : lead >= 0xC2 && lead < 0xE0 ? 1 : lead >= 0xE0 && lead < 0xF0 ? 2 : lead >= 0xF0 && lead < 0xF5 ? 3 : -1;
        if (more < 0 || i + static_cast<std::size_t>(more) > text.size())
            return false;
        std::uint32_t value = lead & (0x7Fu >> more);
        for (int k = 0; k < more; ++k, ++i)
        {
            const auto c = static_cast<unsigned char>(text[i]);
            if ((c & 0xC0) != 0x80)
                return false;
            value = (value << 6) | (c & 0x3F);
        }
        constexpr std::uint32_t smallest[] = {0, 0x80, 0x800, 0x10000};
        if (value < smallest[more] || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF))
            return false;
    }
    return true;
}

std::string canonical(const ondo::XmlElement& e)
{
    std::string out = "<" + e.getTagName();
    for (int i = 0; i < e.getNumAttributes(); ++i)
        out.append(" ").append(e.getAttributeName(i)).append("=").append(e.getAttributeValue(i));
    out += ">";
    std::string text;
    auto flushText = [&] {
        if (text.find_first_not_of(" \t\r\n") != std::string::npos)
            out.append("[").append(text).append("]");
        text.clear();
    };
    for (auto* c = e.getFirstChildElement(); c != nullptr; c = c->getNextElement())
    {
        if (c->isTextElement())
        {
            text += c->getText();
            continue;
        }
        flushText();
        out += canonical(*c);
    }
    flushText();
    return out + "</>";
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    ondo::XmlDocument document(text);
    const auto root = document.getDocumentElement();
    if (root == nullptr)
    {
        if (document.getLastParseError().empty())
            __builtin_trap();
        return 0;
    }
    ondo::XmlDocument outer(text);
    if (outer.getDocumentElement(true) == nullptr)
        __builtin_trap();

    if (!isUtf8(text))
        return 0;
    for (const bool oneLine : {false, true})
    {
        const auto written = root->createDocument("", oneLine, true, "UTF-8", 100);
        const auto again = ondo::XmlDocument::parse(written);
        if (again == nullptr || canonical(*again) != canonical(*root))
            __builtin_trap();
    }
    return 0;
}
