// Feeds arbitrary bytes to the XML parser. Whatever it accepts must survive the writer: the
// written document parses again into the same tree, text nodes compared after merging
// neighbours and dropping blank ones (the writer joins text, the parser drops blanks).
#include "text/TarvoDspXmlDocument.h"
#include "text/TarvoDspXmlElement.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace
{
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

    for (const bool oneLine : {false, true})
    {
        const auto written = root->createDocument("", oneLine, true, "UTF-8", 100);
        const auto again = ondo::XmlDocument::parse(written);
        if (again == nullptr || canonical(*again) != canonical(*root))
            __builtin_trap();
    }
    return 0;
}
