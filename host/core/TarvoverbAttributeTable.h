#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace tarvo::host
{
/// One attribute of the object as every host presents it. Data only: the hosts' skins read
/// it to declare their attributes; nothing here calls a host.
struct AttributeEntry
{
    enum class Type
    {
        Long,
        Float32,
        Symbol
    };
    /// What counts the live length of an array attribute.
    enum class Length
    {
        Single,
        SourcesCount,  ///< 3 x numsources
        SpeakersCount, ///< 3 x numspeakers
        NumInternals,
        Fixed6
    };
    enum class Setter
    {
        None,   ///< the host writes the field
        Own,    ///< a setter of its own (automute)
        Common, ///< the common setter
        ReadOnly
    };

    const char* name;
    Type type;
    Length length;
    int capacity;          ///< values the field holds (1 for a single value)
    std::size_t offset;    ///< of the field in `ObjectState`
    bool clip;             ///< a clip filter with both limits
    double minimum;
    double maximum;
    bool rangeProperties;  ///< "minvalue" and "maxvalue" shown to the inspector
    const char* defaultValue; ///< as text, empty when there is none
    const char* label;
    const char* style;
    const char* units;
    const char* category;
    int order; ///< 0: none
    bool dontReset;
    Setter setter;
    const char* description;
};

/// The options group, then the main table, in the order of creation.
std::span<const AttributeEntry> attributeTable();
/// The attribute of that name, or null.
const AttributeEntry* findAttribute(std::string_view name);

/// A number as the inspector's text properties show it: six significant digits.
std::string formatPropertyNumber(double value);
} // namespace tarvo::host
