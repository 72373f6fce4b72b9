#pragma once

#include "files/TarvoDspFile.h"
#include "text/TarvoDspString.h"
#include "text/TarvoDspXmlElement.h"

#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace ondo
{
/// Parses UTF-8 XML text into an `XmlElement` tree: the outer element with its attributes,
/// children, text and CDATA; comments and processing instructions skipped; entities of the
/// document's DOCTYPE expanded. No validation, no namespaces. A failure stops the parse and
/// leaves its reason in `getLastParseError`. Control thread; allocates.
class XmlDocument
{
public:
    explicit XmlDocument(const String& text);
    /// The file is read when `getDocumentElement` is called.
    explicit XmlDocument(const File& file);

    /// The outer element, or null with the reason in `getLastParseError`. With
    /// `onlyReadOuterElement` only its tag and attributes are read.
    std::unique_ptr<XmlElement> getDocumentElement(bool onlyReadOuterElement = false);
    const String& getLastParseError() const { return lastError; }
    /// The DOCTYPE declaration as it stood in the document, or empty.
    const String& getDocumentType() const { return dtdText; }
    /// Whether text made only of white space is dropped (the default) or kept.
    void setEmptyTextElementsIgnored(bool shouldBeIgnored) { ignoreEmptyTextElements = shouldBeIgnored; }

    static std::unique_ptr<XmlElement> parse(const File& file);
    static std::unique_ptr<XmlElement> parse(const String& text);

private:
    struct ParseError
    {
        String text;
    };

    bool startsWith(const char* prefix) const;
    void skipWhitespace();
    void skipComment();
    void skipWhitespaceAndComments();
    void readDocumentType();
    void readEntityDeclarations();
    std::unique_ptr<XmlElement> readElement(bool alsoReadContent, int depth);
    /// Children and text up to the end tag; a `fragment` (an entity's markup) ends with its text.
    void readContent(XmlElement& element, int depth, bool fragment);
    void readText(XmlElement& element, int depth);
    void expandFragment(XmlElement& element, const String& fragment, int depth);
    String readName();
    /// The entity at `at` in `text` (just after its `&`), moving `at` past the `;`. The flag
    /// tells a DOCTYPE entity, whose name stays on `expanding` until the caller has used it.
    std::pair<String, bool> readEntity(const String& text, std::size_t& at);
    /// `text` with all its entities expanded, for attribute values.
    String unescaped(const String& text);
    [[noreturn]] void fail(const String& reason) const;

    bool atEnd() const { return position >= input.size(); }
    char peek(std::size_t offset = 0) const { return position + offset < input.size() ? input[position + offset] : char(0); }

    String source;
    File sourceFile;
    bool readFromFile = false;
    String input; ///< the text being read: the source, or an entity's markup while it is expanded
    std::size_t position = 0;
    bool outOfData = false;
    String lastError;
    String dtdText;
    bool ignoreEmptyTextElements = true;
    std::map<String, String> tokens;   ///< entities the DOCTYPE declares
    std::vector<String> expanding;     ///< DOCTYPE entities being expanded, innermost last
    std::size_t budget = 0;            ///< characters entities may still add
};
} // namespace ondo
