#pragma once

#include "containers/TarvoDspVector.h"
#include "osc/TarvoDspOscAddress.h"
#include "osc/TarvoDspOscArgument.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace ondo
{
/// An OSC message: an address followed by its arguments. Any thread; building one allocates.
///
/// Handlers test a message with the class letters of its arguments: 'b' boolean (T, F, i, h),
/// 'd' float64, 'f' float32, 'i' and 'l' integers (i, h), 'n' any number (f, i, h, d),
/// 's' string, 'u' an integer not below zero. Any other letter matches nothing.
class OSCMessage : public OSCAddress
{
public:
    /// A message to the root address, without arguments.
    OSCMessage() = default;
    explicit OSCMessage(const OSCAddress& address) : OSCAddress(address) {}
    /// A message to the strict address `address` (see `OSCAddress`).
    explicit OSCMessage(std::string_view address) : OSCAddress(address) {}

    /// Parses a text line: blank-separated tokens, a stretch between two single quotes kept
    /// in one token. The first token is the address (pattern flavour); each further token
    /// becomes an integer ('i', or 'h' beyond 32 bits), a boolean for "true"/"false" in any
    /// case, a number ('f'), a string with its enclosing quotes removed, or the token as a
    /// string. Throws `ondo::Exception` "invalid OSC message" for a line without content.
    static OSCMessage fromText(const String& line);

    OSCMessage& addArgument(const OSCArgument& argument);
    OSCMessage& addArgument(const String& value) { return addArgument(OSCArgument(value)); }
    OSCMessage& addArgument(const char* value) { return addArgument(OSCArgument(value)); }
    OSCMessage& addArgument(std::int32_t value) { return addArgument(OSCArgument(value)); }
    OSCMessage& addArgument(std::int64_t value) { return addArgument(OSCArgument(value)); }
    /// Integers above the 32-bit range become 'h'.
    OSCMessage& addArgument(std::uint32_t value);
    OSCMessage& addArgument(float value) { return addArgument(OSCArgument(value)); }
    /// Stored as float32 ('f'), as all numbers of the system's own messages.
    OSCMessage& addArgument(double value) { return addArgument(OSCArgument(static_cast<float>(value))); }
    OSCMessage& addArgument(bool value) { return addArgument(OSCArgument(value)); }
    /// Appends each value as a float32 ('f') argument.
    OSCMessage& addArgument(const Vector<double>& values);

    std::size_t getNumArguments() const { return arguments.size(); }
    const OSCArgument& getArgument(std::size_t i) const { return arguments[i]; }
    const std::vector<OSCArgument>& getArguments() const { return arguments; }
    /// One type tag per argument.
    Vector<char> getTypeTags() const;
    /// All arguments as float32 when every one is a number; otherwise empty. Allocates.
    Vector<float> getArgumentsAsFloats() const;
    /// Argument `i` read as a boolean (see `OSCArgument::getBool`); false when there is none.
    bool getBool(std::size_t i) const;
    /// Argument `i` read as a float32 from any number; 0 when there is none.
    float getFloat(std::size_t i) const;

    /// Exactly one argument, of the class `letter`. Real-time safe.
    bool matchesSingle(char letter) const;
    /// One class letter per argument. With `exact` the counts must be equal; otherwise
    /// `letters` may be shorter than the arguments. An empty letters matches when not `exact`.
    /// Real-time safe.
    bool matchesList(std::string_view letters, bool exact = true) const;
    /// True when `argument` belongs to the class `letter`. Real-time safe.
    static bool isOfClass(const OSCArgument& argument, char letter);

    using OSCAddress::matches;
    using OSCAddress::startsWith;
    /// The address tests against a literal address, parsed once and kept in
    /// `OSCAddressCache`: real-time safe once the literal has been prepared or used before.
    bool matches(std::string_view address) const;
    bool startsWith(std::string_view prefix) const;

    /// A copy without the first `n` address parts: "/set/dsp/mute 1" becomes "/dsp/mute 1".
    OSCMessage withoutFirstParts(std::size_t n = 1) const;

    /// The text line: the address, a blank, then the arguments' texts separated by blanks.
    /// A message without arguments keeps the blank after its address.
    String toText() const;

    bool operator==(const OSCMessage& other) const
    {
        return OSCAddress::operator==(other) && arguments == other.arguments;
    }

private:
    std::vector<OSCArgument> arguments;
};
} // namespace ondo
