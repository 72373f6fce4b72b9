#include "filterdesign/TarvoDspDigitalFilterDesignBase.h"

#include <map>
#include <string>

namespace ondo
{
DigitalFilterDesignBase::FilterType DigitalFilterDesignBase::filterTypeFromName(std::string_view name)
{
    static const std::map<std::string, FilterType, std::less<>> names{
        {"lowpass", lowpass}, {"highpass", highpass}, {"bandpass", bandpass}, {"bandstop", bandstop}};
    const auto found = names.find(name);
    return found == names.end() ? lowpass : found->second;
}

DigitalFilterDesignBase::FilterType DigitalFilterDesignBase::filterTypeFromValue(int value)
{
    return value >= lowpass && value <= bandstop ? static_cast<FilterType>(value) : lowpass;
}
} // namespace ondo
