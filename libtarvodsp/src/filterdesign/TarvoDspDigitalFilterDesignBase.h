#pragma once

#include <string_view>

namespace ondo
{
/// What the digital designers share: the shape of the response.
class DigitalFilterDesignBase
{
public:
    enum FilterType : int
    {
        lowpass = 0,
        highpass = 1,
        bandpass = 2,
        bandstop = 3,
    };

    /// "lowpass", "highpass", "bandpass", "bandstop"; any other name gives `lowpass`, the
    /// first shape, as any value outside 0 to 3 does. Any thread; allocates nothing after
    /// the first call (the table is built once).
    static FilterType filterTypeFromName(std::string_view name);
    static FilterType filterTypeFromValue(int value);
};
} // namespace ondo
