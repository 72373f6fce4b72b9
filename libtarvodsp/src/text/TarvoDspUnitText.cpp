#include "text/TarvoDspUnitText.h"

#include <cmath>
#include <cstdio>

namespace ondo
{
namespace
{
String wholePart(double value)
{
    return StringHelper::toString(std::trunc(value));
}

String twoDecimals(double value)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.2f", value);
    return text;
}

String frequencyWithUnit(double hz)
{
    if (hz == 44100.0)
        return "44.1 kHz";
    if (hz < 1000.0)
        return wholePart(hz) + " Hz";
    if (hz < 1.0e6)
    {
        const double khz = hz / 1000.0;
        return khz == std::trunc(khz) ? wholePart(khz) + " kHz" : wholePart(hz) + " Hz";
    }
    if (hz < 1.0e9)
        return twoDecimals(hz / 1.0e6) + " MHz";
    return twoDecimals(hz / 1.0e9) + " GHz";
}
} // namespace

String UnitText::frequency(double hz, bool withUnit)
{
    const String text = frequencyWithUnit(hz);
    return withUnit ? text : StringHelper::trimEnd(StringHelper::replaceAll(text, "Hz", ""));
}

String UnitText::duration(double ms)
{
    return wholePart(ms) + " ms";
}
} // namespace ondo
