#pragma once

#include "text/TarvoDspString.h"

#include <cstdint>
#include <vector>

namespace ondo
{
/// One typed OSC argument, copied by value. The tag is the OSC type tag: 'T' and 'F'
/// (booleans), 'i' (int32), 'f' (float32), 'h' (int64), 'd' (float64), 's' (string),
/// 'b' (blob). 'I' and 'N' carry no value. Any thread; copying a string or blob allocates.
class OSCArgument
{
public:
    using Blob = std::vector<std::uint8_t>;

    /// A 'N' argument: no value.
    OSCArgument() = default;
    explicit OSCArgument(Blob value);
    explicit OSCArgument(String value);
    explicit OSCArgument(const char* value);
    explicit OSCArgument(std::int32_t value);
    explicit OSCArgument(float value);
    explicit OSCArgument(std::int64_t value);
    /// A 'd' argument. Messages built by the system carry floats; this serves the wire reader.
    explicit OSCArgument(double value);
    /// 'T' when true, 'F' otherwise.
    explicit OSCArgument(bool value);
    /// An argument of a tag without a value, such as 'I' or 'N'.
    static OSCArgument withoutValue(char tag);

    char getType() const { return type; }
    /// One of 'i', 'f', 'h', 'd'.
    bool isNumber() const;

    /// The number held, converted to the type asked; 0 for an argument that is not a number.
    std::int32_t getInt32() const;
    float getFloat32() const;
    std::int64_t getInt64() const;
    double getFloat64() const;
    /// 'T' and 'F' give the stored value; 'i' and 'h' are true only when equal to 1; anything
    /// else is false.
    bool getBool() const;
    /// The text of a 's' argument; empty for the others.
    const String& getString() const { return string; }
    /// The bytes of a 'b' argument; empty for the others.
    const Blob& getBlob() const { return blob; }

    /// The argument in a text line: "1"/"0" for booleans, decimal text for numbers, a string
    /// between single quotes (inner quotes become blanks, line feeds "\n"), and nothing for
    /// blobs and tags without a value.
    String toText() const;

    bool operator==(const OSCArgument& other) const;

private:
    char type = 'N';
    bool boolean = false;
    union Number
    {
        std::int32_t int32;
        float float32;
        std::int64_t int64;
        double float64;
    } number{.int64 = 0};
    String string;
    Blob blob;
};
} // namespace ondo
