#include "osc/TarvoDspOscArgument.h"

namespace ondo
{
OSCArgument::OSCArgument(Blob value) : type('b'), blob(std::move(value)) {}
OSCArgument::OSCArgument(String value) : type('s'), string(std::move(value)) {}
OSCArgument::OSCArgument(const char* value) : type('s'), string(value != nullptr ? value : "") {}
OSCArgument::OSCArgument(std::int32_t value) : type('i') { number.int32 = value; }
OSCArgument::OSCArgument(float value) : type('f') { number.float32 = value; }
OSCArgument::OSCArgument(std::int64_t value) : type('h') { number.int64 = value; }
OSCArgument::OSCArgument(double value) : type('d') { number.float64 = value; }
OSCArgument::OSCArgument(bool value) : type(value ? 'T' : 'F'), boolean(value) {}

OSCArgument OSCArgument::withoutValue(char tag)
{
    OSCArgument argument;
    argument.type = tag;
    return argument;
}

bool OSCArgument::isNumber() const
{
    return type == 'i' || type == 'f' || type == 'h' || type == 'd';
}

std::int32_t OSCArgument::getInt32() const
{
    return type == 'i' ? number.int32 : static_cast<std::int32_t>(getInt64());
}

std::int64_t OSCArgument::getInt64() const
{
    switch (type)
    {
    case 'i': return number.int32;
    case 'h': return number.int64;
    case 'f':
    case 'd':
    {
        // Out-of-range and NaN values would be undefined as a conversion: saturate instead.
        const double value = getFloat64();
        if (!(value == value))
            return 0;
        if (value >= 9.2233720368547758e18)
            return INT64_MAX;
        if (value <= -9.2233720368547758e18)
            return INT64_MIN;
        return static_cast<std::int64_t>(value);
    }
    default: return 0;
    }
}

float OSCArgument::getFloat32() const
{
    return type == 'f' ? number.float32 : static_cast<float>(getFloat64());
}

double OSCArgument::getFloat64() const
{
    switch (type)
    {
    case 'i': return number.int32;
    case 'h': return static_cast<double>(number.int64);
    case 'f': return number.float32;
    case 'd': return number.float64;
    default: return 0.0;
    }
}

bool OSCArgument::getBool() const
{
    switch (type)
    {
    case 'T':
    case 'F': return boolean;
    case 'i': return number.int32 == 1;
    case 'h': return number.int64 == 1;
    default: return false;
    }
}

String OSCArgument::toText() const
{
    switch (type)
    {
    case 'T':
    case 'F': return boolean ? "1" : "0";
    case 'i': return StringHelper::toString(number.int32);
    case 'h': return StringHelper::toString(number.int64);
    case 'f': return StringHelper::toString(number.float32);
    case 'd': return StringHelper::toString(number.float64);
    case 's':
        // A quote inside would end the string early when the line is read back.
        return StringHelper::quoted(StringHelper::replaceAll(StringHelper::replaceAll(string, "'", " "), "\n", "\\n"),
                                    '\'');
    default: return {};
    }
}

bool OSCArgument::operator==(const OSCArgument& other) const
{
    if (type != other.type)
        return false;
    switch (type)
    {
    case 'T':
    case 'F': return boolean == other.boolean;
    case 'i': return number.int32 == other.number.int32;
    case 'h': return number.int64 == other.number.int64;
    case 'f': return number.float32 == other.number.float32;
    case 'd': return number.float64 == other.number.float64;
    case 's': return string == other.string;
    case 'b': return blob == other.blob;
    default: return true;
    }
}
} // namespace ondo
