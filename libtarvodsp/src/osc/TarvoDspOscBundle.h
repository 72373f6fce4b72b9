#pragma once

#include "osc/TarvoDspOscMessage.h"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace ondo
{
/// A sequence of messages and nested bundles, with an OSC time tag (1, "immediately", by
/// default; kept and written back, never acted upon). A processor's state is a bundle.
/// Any thread; adding copies onto the heap.
class OSCBundle
{
public:
    /// One element: a message or a bundle, owned.
    class Element
    {
    public:
        explicit Element(const OSCMessage& message);
        explicit Element(OSCMessage&& message);
        explicit Element(const OSCBundle& bundle);
        Element(const Element& other);
        Element(Element&&) noexcept = default;
        Element& operator=(const Element& other);
        Element& operator=(Element&&) noexcept = default;
        ~Element();

        bool isMessage() const { return message != nullptr; }
        bool isBundle() const { return bundle != nullptr; }
        /// Throws `ondo::Exception` when the element holds a bundle.
        const OSCMessage& getMessage() const;
        /// Throws `ondo::Exception` when the element holds a message.
        const OSCBundle& getBundle() const;

        bool operator==(const Element& other) const;

    private:
        std::unique_ptr<OSCMessage> message;
        std::unique_ptr<OSCBundle> bundle;
    };

    static constexpr std::uint64_t immediately = 1;

    OSCBundle() = default;

    OSCBundle& add(const OSCMessage& message);
    OSCBundle& add(OSCMessage&& message);
    /// Nests a copy of `bundle`.
    OSCBundle& add(const OSCBundle& bundle);
    /// Appends the messages of `bundle`, nested bundles flattened.
    OSCBundle& addFlattened(const OSCBundle& bundle);
    /// A message to `address` with the value as its one argument (four for the array).
    OSCBundle& add(const OSCAddress& address, const String& value);
    OSCBundle& add(const OSCAddress& address, const char* value);
    OSCBundle& add(const OSCAddress& address, std::int32_t value);
    OSCBundle& add(const OSCAddress& address, std::uint32_t value);
    OSCBundle& add(const OSCAddress& address, float value);
    OSCBundle& add(const OSCAddress& address, double value);
    OSCBundle& add(const OSCAddress& address, bool value);
    OSCBundle& add(const OSCAddress& address, const std::array<float, 4>& values);
    /// The same with a strict address given as text: `state.add("/dsp/mute", mute)`.
    template <typename Value>
    OSCBundle& add(std::string_view address, const Value& value)
    {
        return add(OSCAddress(address), value);
    }

    std::size_t size() const { return elements.size(); }
    bool empty() const { return elements.empty(); }
    const Element& operator[](std::size_t i) const { return elements[i]; }
    const std::vector<Element>& getElements() const { return elements; }
    std::uint64_t getTimeTag() const { return timeTag; }
    void setTimeTag(std::uint64_t tag) { timeTag = tag; }
    /// Number of messages, nested bundles included.
    std::size_t countMessages() const;

    /// A copy in which each nested bundle is replaced, in order and recursively, by its
    /// messages. The time tag is kept when nothing was nested, and is 1 otherwise.
    OSCBundle flattened() const;
    /// One text line per element (see `OSCMessage::toText`); a nested bundle gives its own
    /// lines joined by line feeds.
    std::vector<String> toTextLines() const;
    /// The lines joined by line feeds.
    String toText() const;

    /// Exchanges contents and time tags without copying or allocating.
    void swap(OSCBundle& other) noexcept;

    bool operator==(const OSCBundle& other) const = default;

private:
    std::vector<Element> elements;
    std::uint64_t timeTag = immediately;
};
} // namespace ondo
