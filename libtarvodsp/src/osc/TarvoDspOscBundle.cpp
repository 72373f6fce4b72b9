#include "osc/TarvoDspOscBundle.h"

#include "common/TarvoDspException.h"

#include <algorithm>

namespace ondo
{
OSCBundle::Element::Element(const OSCMessage& m) : message(std::make_unique<OSCMessage>(m)) {}
OSCBundle::Element::Element(OSCMessage&& m) : message(std::make_unique<OSCMessage>(std::move(m))) {}
OSCBundle::Element::Element(const OSCBundle& b) : bundle(std::make_unique<OSCBundle>(b)) {}
OSCBundle::Element::~Element() = default;

OSCBundle::Element::Element(const Element& other)
    : message(other.message ? std::make_unique<OSCMessage>(*other.message) : nullptr),
      bundle(other.bundle ? std::make_unique<OSCBundle>(*other.bundle) : nullptr)
{
}

OSCBundle::Element& OSCBundle::Element::operator=(const Element& other)
{
    if (this != &other)
        *this = Element(other);
    return *this;
}

const OSCMessage& OSCBundle::Element::getMessage() const
{
    if (message == nullptr)
        throw Exception("Access error in OSC bundle element.", ONDO_SOURCE_LOCATION, false);
    return *message;
}

const OSCBundle& OSCBundle::Element::getBundle() const
{
    if (bundle == nullptr)
        throw Exception("Access error in OSC bundle element.", ONDO_SOURCE_LOCATION, false);
    return *bundle;
}

bool OSCBundle::Element::operator==(const Element& other) const
{
    if (isMessage() != other.isMessage())
        return false;
    return isMessage() ? *message == *other.message : *bundle == *other.bundle;
}

OSCBundle& OSCBundle::add(const OSCMessage& message)
{
    elements.emplace_back(message);
    return *this;
}

OSCBundle& OSCBundle::add(OSCMessage&& message)
{
    elements.emplace_back(std::move(message));
    return *this;
}

OSCBundle& OSCBundle::add(const OSCBundle& bundle)
{
    elements.emplace_back(bundle);
    return *this;
}

OSCBundle& OSCBundle::addFlattened(const OSCBundle& bundle)
{
    for (const Element& e : bundle.elements)
    {
        if (e.isBundle())
            addFlattened(e.getBundle());
        else
            add(e.getMessage());
    }
    return *this;
}

OSCBundle& OSCBundle::add(const OSCAddress& address, const String& value)
{
    return add(OSCMessage(address).addArgument(value));
}

OSCBundle& OSCBundle::add(const OSCAddress& address, const char* value)
{
    return add(OSCMessage(address).addArgument(value));
}

OSCBundle& OSCBundle::add(const OSCAddress& address, std::int32_t value)
{
    return add(OSCMessage(address).addArgument(value));
}

OSCBundle& OSCBundle::add(const OSCAddress& address, std::uint32_t value)
{
    return add(OSCMessage(address).addArgument(value));
}

OSCBundle& OSCBundle::add(const OSCAddress& address, float value)
{
    return add(OSCMessage(address).addArgument(value));
}

OSCBundle& OSCBundle::add(const OSCAddress& address, double value)
{
    return add(OSCMessage(address).addArgument(value));
}

OSCBundle& OSCBundle::add(const OSCAddress& address, bool value)
{
    return add(OSCMessage(address).addArgument(value));
}

OSCBundle& OSCBundle::add(const OSCAddress& address, const std::array<float, 4>& values)
{
    OSCMessage message(address);
    for (const float v : values)
        message.addArgument(v);
    return add(std::move(message));
}

std::size_t OSCBundle::countMessages() const
{
    std::size_t count = 0;
    for (const Element& e : elements)
        count += e.isBundle() ? e.getBundle().countMessages() : 1;
    return count;
}

OSCBundle OSCBundle::flattened() const
{
    OSCBundle result;
    result.addFlattened(*this);
    const bool nested = std::any_of(elements.begin(), elements.end(), [](const Element& e) { return e.isBundle(); });
    result.timeTag = nested ? immediately : timeTag;
    return result;
}

std::vector<String> OSCBundle::toTextLines() const
{
    std::vector<String> lines;
    lines.reserve(elements.size());
    for (const Element& e : elements)
        lines.push_back(e.isBundle() ? e.getBundle().toText() : e.getMessage().toText());
    return lines;
}

String OSCBundle::toText() const
{
    return StringHelper::join(toTextLines(), "\n");
}

void OSCBundle::swap(OSCBundle& other) noexcept
{
    elements.swap(other.elements);
    std::swap(timeTag, other.timeTag);
}
} // namespace ondo
