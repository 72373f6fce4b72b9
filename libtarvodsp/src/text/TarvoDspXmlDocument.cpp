#include "text/TarvoDspXmlDocument.h"

#include "files/TarvoDspFileReader.h"

#include <algorithm>
#include <cstring>

namespace ondo
{
namespace
{
// Deep enough for any preset or hand-written file; shallow enough that a hostile document
// cannot exhaust the stack through the recursive descent.
constexpr int maxDepth = 256;
// Characters that entities of the DOCTYPE may add in one parse: room for real use, none for
// an exponential "billion laughs" document.
constexpr std::size_t entityExpansionBudget = 1u << 20;

bool isWhitespace(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool isNameCharacter(char c)
{
    const auto u = static_cast<unsigned char>(c);
    // Bytes from 0x80 up belong to UTF-8 sequences, which XML allows in names.
    return (u >= 'a' && u <= 'z') || (u >= 'A' && u <= 'Z') || (u >= '0' && u <= '9') || c == '-' || c == '.' ||
           c == ':' || c == '_' || u >= 0x80;
}

bool isOnlyWhitespace(const String& text)
{
    return std::all_of(text.begin(), text.end(), isWhitespace);
}

void appendUtf8(String& out, std::uint32_t c)
{
    if (c < 0x80)
        out += static_cast<char>(c);
    else if (c < 0x800)
    {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
    else if (c < 0x10000)
    {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
    else
    {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

/// The code point of "#65" or "#x41", or -1 when the digits are missing or wrong, or name
/// no Unicode character. "&#0;" is read, as the writer writes a zero byte so.
std::int64_t numericEntity(const String& name)
{
    const bool hex = name.size() > 1 && (name[1] == 'x' || name[1] == 'X');
    const std::size_t first = hex ? 2 : 1;
    if (name.size() <= first)
        return -1;
    std::uint32_t value = 0;
    for (std::size_t i = first; i < name.size(); ++i)
    {
        const char c = name[i];
        int digit;
        if (c >= '0' && c <= '9')
            digit = c - '0';
        else if (hex && c >= 'a' && c <= 'f')
            digit = c - 'a' + 10;
        else if (hex && c >= 'A' && c <= 'F')
            digit = c - 'A' + 10;
        else
            return -1;
        value = value * (hex ? 16u : 10u) + static_cast<std::uint32_t>(digit);
        if (value > 0x10FFFF)
            return -1;
    }
    return value >= 0xD800 && value <= 0xDFFF ? -1 : static_cast<std::int64_t>(value);
}
} // namespace

XmlDocument::XmlDocument(const String& text) : source(text)
{
}

XmlDocument::XmlDocument(const File& file) : sourceFile(file), readFromFile(true)
{
}

std::unique_ptr<XmlElement> XmlDocument::parse(const File& file)
{
    return XmlDocument(file).getDocumentElement();
}

std::unique_ptr<XmlElement> XmlDocument::parse(const String& text)
{
    return XmlDocument(text).getDocumentElement();
}

void XmlDocument::fail(const String& reason) const
{
    throw ParseError{reason};
}

std::unique_ptr<XmlElement> XmlDocument::getDocumentElement(bool onlyReadOuterElement)
{
    lastError.clear();
    dtdText.clear();
    tokens.clear();
    expanding.clear();
    budget = entityExpansionBudget;
    outOfData = false;
    position = 0;
    if (readFromFile)
    {
        FileReader reader(sourceFile);
        if (!reader.openedOk())
        {
            lastError = "Could not open file \"" + sourceFile.getFullPathName() + "\"";
            return nullptr;
        }
        std::vector<std::uint8_t> bytes;
        reader.readIntoMemoryBlock(bytes);
        source.assign(bytes.begin(), bytes.end());
    }
    input = source;

    // A UTF-8 byte-order mark, as some editors write, says nothing the parser needs.
    if (input.compare(0, 3, "\xEF\xBB\xBF") == 0)
        position = 3;

    try
    {
        skipWhitespace();
        if (atEnd())
            fail("not enough input");
        if (startsWith("<?xml"))
        {
            const auto end = input.find("?>", position);
            if (end == String::npos)
                fail("malformed header");
            position = end + 2;
        }
        skipWhitespaceAndComments();
        if (startsWith("<!DOCTYPE"))
        {
            readDocumentType();
            skipWhitespaceAndComments();
        }
        if (atEnd())
            fail("not enough input");
        // Whatever follows the outer element is ignored.
        return readElement(!onlyReadOuterElement, 0);
    }
    catch (const ParseError& error)
    {
        lastError = error.text;
        return nullptr;
    }
}

bool XmlDocument::startsWith(const char* prefix) const
{
    const std::size_t n = std::strlen(prefix);
    return input.compare(position, n, prefix) == 0;
}

void XmlDocument::skipWhitespace()
{
    while (!atEnd() && isWhitespace(input[position]))
        ++position;
    outOfData = atEnd();
}

void XmlDocument::skipComment()
{
    const auto end = input.find("-->", position + 4);
    if (end == String::npos)
        fail("unterminated comment");
    position = end + 3;
}

void XmlDocument::skipWhitespaceAndComments()
{
    for (skipWhitespace(); startsWith("<!--"); skipWhitespace())
        skipComment();
}

void XmlDocument::readDocumentType()
{
    const auto start = position;
    int depth = 0;
    do
    {
        if (atEnd())
        {
            outOfData = true;
            fail("malformed DTD");
        }
        const char c = input[position++];
        depth += c == '<' ? 1 : c == '>' ? -1 : 0;
    } while (depth > 0);
    dtdText = input.substr(start, position - start);
    readEntityDeclarations();
}

void XmlDocument::readEntityDeclarations()
{
    // <!ENTITY name "value"> and <!ENTITY name 'value'>; parameter entities and external ones
    // name nothing that text can use here, and are passed over.
    for (auto at = dtdText.find("<!ENTITY"); at != String::npos; at = dtdText.find("<!ENTITY", at + 1))
    {
        std::size_t i = at + 8;
        while (i < dtdText.size() && isWhitespace(dtdText[i]))
            ++i;
        const auto nameStart = i;
        while (i < dtdText.size() && isNameCharacter(dtdText[i]))
            ++i;
        const String name = dtdText.substr(nameStart, i - nameStart);
        while (i < dtdText.size() && isWhitespace(dtdText[i]))
            ++i;
        if (name.empty() || i >= dtdText.size() || (dtdText[i] != '"' && dtdText[i] != '\''))
            continue;
        const auto end = dtdText.find(dtdText[i], i + 1);
        if (end != String::npos)
            tokens.emplace(name, dtdText.substr(i + 1, end - i - 1));
    }
}

String XmlDocument::readName()
{
    const auto start = position;
    while (!atEnd() && isNameCharacter(input[position]))
        ++position;
    return input.substr(start, position - start);
}

std::unique_ptr<XmlElement> XmlDocument::readElement(bool alsoReadContent, int depth)
{
    if (depth > maxDepth)
        fail("elements nested too deeply");
    // Text where the outer element should start has no tag to read either.
    if (peek() != '<')
        fail("tag name missing");
    ++position;
    const String tag = readName();
    if (tag.empty())
        fail("tag name missing");
    auto element = std::make_unique<XmlElement>(tag);
    auto illegalCharacter = [&] { fail("illegal character found in " + tag + ": '" + String(1, peek()) + "'"); };

    for (;;)
    {
        skipWhitespace();
        if (atEnd())
            fail("unmatched tags");
        const char c = peek();
        if (c == '/' && peek(1) == '>')
        {
            position += 2;
            return element;
        }
        if (c == '>')
        {
            ++position;
            if (alsoReadContent)
                readContent(*element, depth, false);
            return element;
        }
        if (!isNameCharacter(c))
            illegalCharacter();

        const String name = readName();
        skipWhitespace();
        if (peek() != '=')
            fail("expected '=' after attribute '" + name + "'");
        ++position;
        skipWhitespace();
        if (atEnd())
            fail("unmatched quotes");
        const char quote = peek();
        if (quote != '"' && quote != '\'')
            illegalCharacter();
        const auto end = input.find(quote, position + 1);
        if (end == String::npos)
        {
            outOfData = true;
            fail("unmatched quotes");
        }
        element->setAttribute(name, unescaped(input.substr(position + 1, end - position - 1)));
        position = end + 1;
    }
}

void XmlDocument::readContent(XmlElement& element, int depth, bool fragment)
{
    for (;;)
    {
        if (atEnd())
        {
            outOfData = true;
            if (fragment)
                return;
            fail("unmatched tags");
        }
        if (peek() != '<')
        {
            readText(element, depth);
            continue;
        }
        if (peek(1) == '/')
        {
            // End tags close whatever is open; their names are not compared.
            const auto end = input.find('>', position);
            if (end == String::npos)
                fail("unmatched tags");
            position = end + 1;
            return;
        }
        if (startsWith("<![CDATA["))
        {
            const auto start = position + 9;
            const auto end = input.find("]]>", start);
            if (end == String::npos)
                fail("unterminated CDATA section");
            if (end > start)
                element.addTextElement(input.substr(start, end - start));
            position = end + 3;
        }
        else if (startsWith("<!--"))
            skipComment();
        else
            element.addChildElement(readElement(true, depth + 1));
    }
}

void XmlDocument::readText(XmlElement& element, int depth)
{
    String text;
    auto flush = [&] {
        if (!text.empty() && !(ignoreEmptyTextElements && isOnlyWhitespace(text)))
            element.addTextElement(text);
        text.clear();
    };
    while (!atEnd() && peek() != '<')
    {
        if (peek() != '&')
        {
            text += input[position++];
            continue;
        }
        ++position;
        const auto [value, custom] = readEntity(input, position);
        if (custom && value.find_first_of("<&") != String::npos)
        {
            // The entity's text is itself markup: it is read as content, in place.
            flush();
            expandFragment(element, value, depth);
            continue;
        }
        text += value;
        if (custom)
            expanding.pop_back();
    }
    flush();
}

void XmlDocument::expandFragment(XmlElement& element, const String& fragment, int depth)
{
    if (depth > maxDepth)
        fail("elements nested too deeply");
    String saved = std::move(input);
    const auto savedPosition = position;
    input = fragment;
    position = 0;
    readContent(element, depth + 1, true);
    input = std::move(saved);
    position = savedPosition;
    expanding.pop_back();
}

std::pair<String, bool> XmlDocument::readEntity(const String& text, std::size_t& at)
{
    const auto semicolon = text.find(';', at);
    if (semicolon == String::npos)
        fail("illegal escape sequence");
    const String name = text.substr(at, semicolon - at);
    at = semicolon + 1;
    if (name == "amp")
        return {"&", false};
    if (name == "quot")
        return {"\"", false};
    if (name == "apos")
        return {"'", false};
    if (name == "lt")
        return {"<", false};
    if (name == "gt")
        return {">", false};
    if (!name.empty() && name[0] == '#')
    {
        const std::int64_t c = numericEntity(name);
        if (c < 0)
            fail("illegal escape sequence");
        String out;
        appendUtf8(out, static_cast<std::uint32_t>(c));
        return {out, false};
    }
    const auto token = tokens.find(name);
    // An entity that refers back to itself, directly or not, resolves to nothing.
    if (token == tokens.end() || std::find(expanding.begin(), expanding.end(), name) != expanding.end())
        fail("illegal escape sequence");
    if (token->second.size() > budget)
        fail("entity expansion too large");
    budget -= token->second.size();
    // The caller expands the value and then pops the name again.
    expanding.push_back(name);
    return {token->second, true};
}

String XmlDocument::unescaped(const String& text)
{
    String out;
    for (std::size_t i = 0; i < text.size();)
    {
        if (text[i] != '&')
        {
            out += text[i++];
            continue;
        }
        ++i;
        const auto [value, custom] = readEntity(text, i);
        if (custom)
        {
            out += value.find('&') == String::npos ? value : unescaped(value);
            expanding.pop_back();
        }
        else
            out += value;
    }
    return out;
}
} // namespace ondo
