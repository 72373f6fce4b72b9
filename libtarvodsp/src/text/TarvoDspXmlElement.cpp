#include "text/TarvoDspXmlElement.h"

#include "files/TarvoDspFileWriter.h"
#include "text/TarvoDspVersion.h"

#include <cstring>
#include <ctime>

namespace ondo
{
namespace
{
// A name that no parsed attribute can have ('#' is not a name character), so a text node's
// content never collides with a real attribute.
const String textAttributeName = "#text";
const String emptyString;
constexpr const char* lineEnd = "\r\n";

bool keptAsIs(unsigned char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::strchr(" !#$%'()*+,-./:;=?@[\\]^_`{|}~", c) != nullptr;
}

/// The code point of the UTF-8 sequence at `i`, advancing `i`. A byte that does not start a
/// well-formed sequence of a character XML can reference stands for itself, so that nothing
/// is dropped and every reference written reads back.
std::uint32_t nextCodePoint(const String& text, std::size_t& i)
{
    const auto lead = static_cast<unsigned char>(text[i++]);
    const int continuation = lead >= 0xF0 && lead < 0xF5 ? 3 : lead >= 0xE0 && lead < 0xF0 ? 2 : lead >= 0xC2 && lead < 0xE0 ? 1 : 0;
    if (continuation == 0 || i + static_cast<std::size_t>(continuation) > text.size())
        return lead;
    std::uint32_t value = lead & (0x3Fu >> continuation);
    for (int k = 0; k < continuation; ++k)
    {
        const auto c = static_cast<unsigned char>(text[i + static_cast<std::size_t>(k)]);
        if ((c & 0xC0) != 0x80)
            return lead;
        value = (value << 6) | (c & 0x3F);
    }
    constexpr std::uint32_t smallest[] = {0, 0x80, 0x800, 0x10000};
    if (value < smallest[continuation] || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF))
        return lead;
    i += static_cast<std::size_t>(continuation);
    return value;
}

String creationDate()
{
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    char text[32] = "";
    if (::localtime_r(&now, &local) != nullptr)
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
    return text;
}
} // namespace

XmlElement::XmlElement(const String& name) : tagName(name)
{
}

XmlElement::~XmlElement()
{
    // Siblings and attributes are chains of owners: unlink them one by one, so that a long
    // list does not destroy itself through a recursion as deep as it is long.
    while (firstChild != nullptr)
        firstChild = std::move(firstChild->nextSibling);
    while (firstAttribute != nullptr)
        firstAttribute = std::move(firstAttribute->next);
}

std::unique_ptr<XmlElement> XmlElement::createTextElement(const String& text)
{
    auto element = std::make_unique<XmlElement>(String());
    element->firstAttribute = std::make_unique<Attribute>(Attribute{textAttributeName, text, nullptr});
    return element;
}

int XmlElement::getNumChildElements() const
{
    int count = 0;
    for (auto* child = firstChild.get(); child != nullptr; child = child->nextSibling.get())
        ++count;
    return count;
}

XmlElement* XmlElement::getChildElement(int index) const
{
    auto* child = index >= 0 ? firstChild.get() : nullptr;
    for (; child != nullptr && index > 0; --index)
        child = child->nextSibling.get();
    return child;
}

XmlElement* XmlElement::getChildByName(const String& name) const
{
    for (auto* child = firstChild.get(); child != nullptr; child = child->nextSibling.get())
        if (child->tagName == name)
            return child;
    return nullptr;
}

XmlElement* XmlElement::addChildElement(std::unique_ptr<XmlElement> child)
{
    if (child == nullptr)
        return nullptr;
    // The remembered last child makes building a long list linear, not quadratic.
    auto* slot = lastChild != nullptr ? &lastChild->nextSibling : &firstChild;
    while (*slot != nullptr)
        slot = &(*slot)->nextSibling;
    *slot = std::move(child);
    lastChild = slot->get();
    return lastChild;
}

XmlElement* XmlElement::createNewChildElement(const String& name)
{
    return addChildElement(std::make_unique<XmlElement>(name));
}

std::unique_ptr<XmlElement> XmlElement::removeChildElement(XmlElement* child, bool deleteIt)
{
    for (auto* slot = &firstChild; *slot != nullptr; slot = &(*slot)->nextSibling)
        if (slot->get() == child)
        {
            std::unique_ptr<XmlElement> removed = std::move(*slot);
            *slot = std::move(removed->nextSibling);
            lastChild = nullptr;
            if (deleteIt)
                return nullptr;
            return removed;
        }
    return nullptr;
}

int XmlElement::getNumAttributes() const
{
    int count = 0;
    for (auto* a = firstAttribute.get(); a != nullptr; a = a->next.get())
        ++count;
    return count;
}

const String& XmlElement::getAttributeName(int index) const
{
    auto* a = index >= 0 ? firstAttribute.get() : nullptr;
    for (; a != nullptr && index > 0; --index)
        a = a->next.get();
    return a != nullptr ? a->name : emptyString;
}

const String& XmlElement::getAttributeValue(int index) const
{
    auto* a = index >= 0 ? firstAttribute.get() : nullptr;
    for (; a != nullptr && index > 0; --index)
        a = a->next.get();
    return a != nullptr ? a->value : emptyString;
}

const XmlElement::Attribute* XmlElement::findAttribute(const String& name) const
{
    for (auto* a = firstAttribute.get(); a != nullptr; a = a->next.get())
        if (a->name == name)
            return a;
    return nullptr;
}

bool XmlElement::hasAttribute(const String& name) const
{
    return findAttribute(name) != nullptr;
}

String XmlElement::getStringAttribute(const String& name, const String& defaultValue) const
{
    const auto* a = findAttribute(name);
    return a != nullptr ? a->value : defaultValue;
}

int XmlElement::getIntAttribute(const String& name, int defaultValue) const
{
    const auto* a = findAttribute(name);
    return a != nullptr ? StringHelper::toInt(a->value) : defaultValue;
}

void XmlElement::setAttribute(const String& name, const String& value)
{
    auto* slot = &firstAttribute;
    for (; *slot != nullptr; slot = &(*slot)->next)
        if ((*slot)->name == name)
        {
            (*slot)->value = value;
            return;
        }
    *slot = std::make_unique<Attribute>(Attribute{name, value, nullptr});
}

void XmlElement::setAttribute(const String& name, int value)
{
    setAttribute(name, StringHelper::toString(static_cast<std::int32_t>(value)));
}

void XmlElement::removeAttribute(const String& name)
{
    for (auto* slot = &firstAttribute; *slot != nullptr; slot = &(*slot)->next)
        if ((*slot)->name == name)
        {
            *slot = std::move((*slot)->next);
            return;
        }
}

String XmlElement::getText() const
{
    if (isTextElement())
        return getStringAttribute(textAttributeName);
    String text;
    for (auto* child = firstChild.get(); child != nullptr; child = child->nextSibling.get())
        if (child->isTextElement())
            text += child->getStringAttribute(textAttributeName);
    return text;
}

void XmlElement::addTextElement(const String& text)
{
    addChildElement(createTextElement(text));
}

bool XmlElement::hasTextContent() const
{
    for (auto* child = firstChild.get(); child != nullptr; child = child->nextSibling.get())
        if (child->isTextElement())
            return true;
    return false;
}

String XmlElement::escapeText(const String& text)
{
    String out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size();)
    {
        const auto c = static_cast<unsigned char>(text[i]);
        if (keptAsIs(c))
        {
            out += static_cast<char>(c);
            ++i;
            continue;
        }
        switch (c)
        {
        case '"': out += "&quot;"; ++i; break;
        case '&': out += "&amp;"; ++i; break;
        case '<': out += "&lt;"; ++i; break;
        case '>': out += "&gt;"; ++i; break;
        default: out += "&#" + std::to_string(nextCodePoint(text, i)) + ";"; break;
        }
    }
    return out;
}

void XmlElement::writeElement(String& out, int indent, bool allOnOneLine, int lineLimit) const
{
    if (isTextElement())
    {
        out += escapeText(getText());
        return;
    }
    const auto lineStart = out.size();
    out.append(static_cast<std::size_t>(indent), ' ');
    out += '<';
    out += tagName;
    // Attributes wrap under the first one once a line passes the limit.
    const auto attributeColumn = static_cast<std::size_t>(indent) + tagName.size() + 2;
    auto currentLineStart = lineStart;
    bool firstOnLine = true;
    for (auto* a = firstAttribute.get(); a != nullptr; a = a->next.get())
    {
        const String attribute = a->name + "=\"" + escapeText(a->value) + "\"";
        const bool tooLong = out.size() - currentLineStart + 1 + attribute.size() > static_cast<std::size_t>(lineLimit);
        if (!allOnOneLine && !firstOnLine && tooLong)
        {
            out += lineEnd;
            currentLineStart = out.size();
            out.append(attributeColumn, ' ');
        }
        else
            out += ' ';
        out += attribute;
        firstOnLine = false;
    }

    if (firstChild == nullptr)
    {
        out += "/>";
        return;
    }
    out += '>';
    // Text children keep their exact content: indentation around them would change it.
    if (hasTextContent())
    {
        for (auto* child = firstChild.get(); child != nullptr; child = child->nextSibling.get())
            child->writeElement(out, 0, true, lineLimit);
    }
    else
    {
        for (auto* child = firstChild.get(); child != nullptr; child = child->nextSibling.get())
        {
            if (!allOnOneLine)
                out += lineEnd;
            child->writeElement(out, allOnOneLine ? 0 : indent + 2, allOnOneLine, lineLimit);
        }
        if (!allOnOneLine)
        {
            out += lineEnd;
            out.append(static_cast<std::size_t>(indent), ' ');
        }
    }
    out += "</" + tagName + ">";
}

String XmlElement::createDocument(const String& dtd, bool allOnOneLine, bool includeXmlHeader, const String& encoding,
                                  int lineLimit) const
{
    String out;
    if (includeXmlHeader)
    {
        out += "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?>";
        if (!allOnOneLine)
            out += lineEnd;
    }
    if (!dtd.empty())
    {
        out += dtd;
        if (!allOnOneLine)
            out += lineEnd;
    }
    if (!allOnOneLine)
    {
        out += lineEnd;
        out += "<!-- created from " + getLibraryVersionLine() + " " + creationDate() + "-->";
        out += lineEnd;
        out += lineEnd;
    }
    writeElement(out, 0, allOnOneLine, lineLimit);
    if (!allOnOneLine)
        out += lineEnd;
    return out;
}

bool XmlElement::writeToFile(const File& file, const String& dtd, const String& encoding, int lineLimit) const
{
    if (!file.makeReadyForWriting(true))
        return false;
    FileWriter out(file, FileWriter::Mode::text);
    return out.openedOk() && out.writeText(createDocument(dtd, false, true, encoding, lineLimit)) && out.close();
}
} // namespace ondo
