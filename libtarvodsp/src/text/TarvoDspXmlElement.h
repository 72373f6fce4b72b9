#pragma once

#include "files/TarvoDspFile.h"
#include "text/TarvoDspString.h"

#include <memory>

namespace ondo
{
/// One node of a small XML tree: a tag with attributes and children, or a text node (no tag).
/// An element owns its attributes and children. Control thread; building and writing allocate.
class XmlElement
{
public:
    /// An element with `tagName`; an empty name makes a text node, for `createTextElement`.
    explicit XmlElement(const String& tagName);
    ~XmlElement();
    XmlElement(const XmlElement&) = delete;
    XmlElement& operator=(const XmlElement&) = delete;

    static std::unique_ptr<XmlElement> createTextElement(const String& text);

    const String& getTagName() const { return tagName; }
    bool hasTagName(const String& name) const { return tagName == name; }
    bool isTextElement() const { return tagName.empty(); }

    // Children, in document order; text nodes count as children.
    int getNumChildElements() const;
    /// Null when `index` is out of range.
    XmlElement* getChildElement(int index) const;
    /// The first child with `tagName`, or null.
    XmlElement* getChildByName(const String& tagName) const;
    XmlElement* getFirstChildElement() const { return firstChild.get(); }
    XmlElement* getNextElement() const { return nextSibling.get(); }
    /// Appends `child` (ignored when null) and returns it.
    XmlElement* addChildElement(std::unique_ptr<XmlElement> child);
    /// Appends a new child with `tagName` and returns it.
    XmlElement* createNewChildElement(const String& tagName);
    /// Unlinks `child` if it is one of this element's children. With `deleteIt` it is destroyed
    /// and null returned; otherwise ownership goes to the caller.
    std::unique_ptr<XmlElement> removeChildElement(XmlElement* child, bool deleteIt);

    // Attributes, in the order they were set.
    int getNumAttributes() const;
    const String& getAttributeName(int index) const;
    const String& getAttributeValue(int index) const;
    bool hasAttribute(const String& name) const;
    String getStringAttribute(const String& name, const String& defaultValue = {}) const;
    /// The attribute read as a decimal integer (as atoi), or `defaultValue` when it is missing.
    int getIntAttribute(const String& name, int defaultValue = 0) const;
    /// Replaces the value of an existing attribute, or appends a new one.
    void setAttribute(const String& name, const String& value);
    void setAttribute(const String& name, int value);
    void removeAttribute(const String& name);

    /// The text of a text node, or the text children of this element joined together.
    String getText() const;
    /// Appends a text node.
    void addTextElement(const String& text);
    /// True when at least one child is a text node.
    bool hasTextContent() const;

    /// The whole document as text: XML declaration, `dtd` if not empty, a comment saying what
    /// made it (unless `allOnOneLine`), then this element. Lines end with CR LF; attributes
    /// wrap past `lineLimit` characters.
    String createDocument(const String& dtd = {}, bool allOnOneLine = false, bool includeXmlHeader = true,
                          const String& encoding = "UTF-8", int lineLimit = 60) const;
    /// Writes `createDocument(dtd, false, true, encoding, lineLimit)` to `file`, replacing it.
    /// False when the file cannot be written.
    bool writeToFile(const File& file, const String& dtd = {}, const String& encoding = "UTF-8", int lineLimit = 60) const;

    /// `text` with the characters that XML reserves, and any that are not plain printable
    /// ASCII, written as entities.
    static String escapeText(const String& text);

private:
    struct Attribute
    {
        String name;
        String value;
        std::unique_ptr<Attribute> next;
    };

    const Attribute* findAttribute(const String& name) const;
    void writeElement(String& out, int indent, bool allOnOneLine, int lineLimit) const;

    String tagName;
    std::unique_ptr<Attribute> firstAttribute;
    std::unique_ptr<XmlElement> firstChild;
    std::unique_ptr<XmlElement> nextSibling;
    XmlElement* lastChild = nullptr; ///< where the next child goes; null when not known
};
} // namespace ondo
