#include "osc/TarvoDspOscPresetFile.h"

#include "common/TarvoDspException.h"
#include "files/TarvoDspFileReader.h"
#include "files/TarvoDspFileWriter.h"
#include "osc/TarvoDspOscInputStream.h"
#include "osc/TarvoDspOscOutputStream.h"
#include "text/TarvoDspXmlDocument.h"

#include <algorithm>

namespace ondo
{
namespace
{
bool hasContent(const String& text)
{
    return text.find_first_not_of(" \t\r\n") != String::npos;
}

bool isUnsignedInteger(const String& text)
{
    return !text.empty() && text.size() < 10 && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool writeBytes(const File& file, const void* data, std::size_t size, String* failure)
{
    if (!file.makeReadyForWriting(true, failure))
        return false;
    FileWriter out(file);
    const bool written = out.openedOk() && out.write(data, size) && out.close();
    if (!written && failure != nullptr)
        *failure = "Error writing " + file.getFullPathName();
    return written;
}

/// The text after the address in a message's text line.
String argumentText(const OSCMessage& message)
{
    const String line = message.toText();
    const auto blank = line.find(' ');
    return blank == String::npos ? String() : StringHelper::trim(line.substr(blank + 1));
}

void addToXml(XmlElement& root, const OSCMessage& message)
{
    XmlElement* element = &root;
    const auto& parts = message.getParts();
    for (std::size_t i = 0; i < parts.size();)
    {
        const String& part = parts[i];
        const bool indexed = i + 1 < parts.size() && isUnsignedInteger(parts[i + 1]);
        XmlElement* child = nullptr;
        if (indexed)
        {
            const int index = StringHelper::toInt(parts[i + 1]);
            for (auto* c = element->getFirstChildElement(); c != nullptr && child == nullptr; c = c->getNextElement())
                if (c->hasTagName(part) && c->getIntAttribute("index", -1) == index)
                    child = c;
            if (child == nullptr)
            {
                child = element->createNewChildElement(part);
                child->setAttribute("index", index);
            }
            i += 2;
        }
        else
        {
            child = element->getChildByName(part);
            if (child == nullptr)
                child = element->createNewChildElement(part);
            i += 1;
        }
        element = child;
    }
    String text = argumentText(message);
    // A quoted text keeps apostrophes, whichever quotes it came with.
    if (StringHelper::isQuoted(text))
        text.front() = text.back() = '\'';
    while (element->hasTextContent())
        for (auto* c = element->getFirstChildElement(); c != nullptr; c = c->getNextElement())
            if (c->isTextElement())
            {
                element->removeChildElement(c, true);
                break;
            }
    if (!text.empty())
        element->addTextElement(text);
}

void addXmlMessages(const XmlElement& element, const String& path, OSCBundle& bundle)
{
    bool hasElementChildren = false;
    for (auto* c = element.getFirstChildElement(); c != nullptr; c = c->getNextElement())
    {
        if (c->isTextElement())
            continue;
        hasElementChildren = true;
        String childPath = path + "/" + c->getTagName();
        const int index = c->getIntAttribute("index", -1);
        if (index >= 0)
            childPath.append("/").append(StringHelper::toString(static_cast<std::int32_t>(index)));
        addXmlMessages(*c, childPath, bundle);
    }
    // An element with children speaks through them only; its own text is never read.
    if (!hasElementChildren)
    {
        const String text = element.getText();
        if (hasContent(text))
            bundle.add(OSCMessage::fromText(path + " " + text));
    }
}

template <typename LineParser>
OSCBundle readLines(const File& file, LineParser parse)
{
    FileReader in(file);
    if (!in.openedOk())
        throw exceptions::UnsupportedFile(file.getFullPathName(), ONDO_SOURCE_LOCATION, false);
    OSCBundle bundle;
    String line;
    OSCMessage message;
    while (in.readLine(line, true))
        if (parse(line, message))
            bundle.add(message);
    return bundle;
}
} // namespace

OscPresetFile::Form OscPresetFile::classify(const File& file)
{
    if (file.hasFileExtension(".txt"))
        return Form::text;
    if (file.hasFileExtension(".osc"))
        return Form::binary;
    if (file.hasFileExtension(".xml"))
        return Form::xml;
    if (file.hasFileExtension(".coll"))
        return Form::coll;
    throw Exception("unexpected file extension for file \"" + file.getFullPathName() + "\"", ONDO_SOURCE_LOCATION, false);
}

std::vector<String> OscPresetFile::toCollLines(const OSCBundle& state)
{
    const OSCBundle flat = state.flattened();
    std::vector<String> lines;
    for (std::size_t i = 0; i < flat.size(); ++i)
        lines.push_back(StringHelper::toString(static_cast<std::uint64_t>(i + 1)) + ", " + flat[i].getMessage().toText() + ";");
    return lines;
}

bool OscPresetFile::parseTextLine(String line, OSCMessage& message)
{
    if (!hasContent(line))
        return false;
    line = StringHelper::trimEnd(line);
    if (!line.empty() && (line.back() == ',' || line.back() == ';'))
        line.pop_back();
    if (!hasContent(line))
        return false;
    message = OSCMessage::fromText(line);
    return true;
}

bool OscPresetFile::parseCollLine(String line, OSCMessage& message)
{
    line = StringHelper::trimEnd(line);
    if (line.empty())
        return false;
    if (line.back() == ',')
        line.pop_back();
    else if (line.back() == ';')
    {
        // "5, /foo 1.5;": the index before the first comma is not checked.
        line.pop_back();
        const auto comma = line.find(',');
        line = comma == String::npos ? String() : line.substr(comma + 1);
    }
    if (!hasContent(line))
        return false;
    message = OSCMessage::fromText(line);
    return true;
}

std::unique_ptr<XmlElement> OscPresetFile::toXml(const OSCBundle& state)
{
    auto root = std::make_unique<XmlElement>("preset");
    const OSCBundle flat = state.flattened();
    for (const auto& element : flat.getElements())
        addToXml(*root, element.getMessage());
    return root;
}

OSCBundle OscPresetFile::fromXml(const XmlElement& root)
{
    OSCBundle messages;
    String path = "/" + root.getTagName();
    const int index = root.getIntAttribute("index", -1);
    if (index >= 0)
        path.append("/").append(StringHelper::toString(static_cast<std::int32_t>(index)));
    addXmlMessages(root, path, messages);
    // The root's own tag leads every address; a preset's "/preset" is not the processor's.
    OSCBundle result;
    for (const auto& element : messages.getElements())
    {
        const OSCMessage& message = element.getMessage();
        result.add(message.size() > 0 && message.part(0) == "preset" ? message.withoutFirstParts(1) : message);
    }
    return result;
}

bool OscPresetFile::write(const OSCBundle& state, const File& file, String* failure)
{
    switch (classify(file))
    {
    case Form::text:
    {
        const String text = StringHelper::join(state.toTextLines(), "\n");
        return writeBytes(file, text.data(), text.size(), failure);
    }
    case Form::binary:
    {
        std::vector<std::uint8_t> packet;
        if (!OSCOutputStream::writePacket(state, packet))
        {
            if (failure != nullptr)
                *failure = "Cannot write the state as OSC: an argument has no binary form";
            return false;
        }
        return writeBytes(file, packet.data(), packet.size(), failure);
    }
    case Form::xml:
    {
        const bool written = toXml(state)->writeToFile(file, "", "UTF-8", 100);
        if (!written && failure != nullptr)
            *failure = "Error writing " + file.getFullPathName();
        return written;
    }
    case Form::coll:
    default:
    {
        String text;
        for (const String& line : toCollLines(state))
            text += line + "\n";
        return writeBytes(file, text.data(), text.size(), failure);
    }
    }
}

OSCBundle OscPresetFile::read(const File& file)
{
    if (!file.existsAsFile())
        throw exceptions::NoSuchFile(file.getFullPathName(), ONDO_SOURCE_LOCATION, false);
    switch (classify(file))
    {
    case Form::text: return readLines(file, parseTextLine);
    case Form::coll: return readLines(file, parseCollLine);
    case Form::binary:
    {
        FileReader in(file);
        if (!in.openedOk())
            throw exceptions::UnsupportedFile(file.getFullPathName(), ONDO_SOURCE_LOCATION, false);
        std::vector<std::uint8_t> packet;
        in.readIntoMemoryBlock(packet);
        return OSCInputStream::readPacket(packet.data(), packet.size());
    }
    case Form::xml:
    default:
    {
        XmlDocument document(file);
        const auto root = document.getDocumentElement();
        if (root == nullptr)
            throw Exception("Error reading XML preset \"" + file.getFullPathName() + "\": " + document.getLastParseError(),
                            ONDO_SOURCE_LOCATION, false);
        return fromXml(*root);
    }
    }
}
} // namespace ondo
