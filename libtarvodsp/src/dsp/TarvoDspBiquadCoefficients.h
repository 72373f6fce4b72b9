#pragma once

#include "containers/TarvoDspVector.h"

#include <cstddef>

namespace ondo
{
class OSCMessage;
/// One second-order section: (b0 + b1 z^-1 + b2 z^-2) / (a0 + a1 z^-1 + a2 z^-2), designed
/// and kept in double precision. The default is a unit gain.
struct BiquadCoefficients
{
    double b0 = 1.0;
    double b1 = 0.0;
    double b2 = 0.0;
    double a0 = 1.0;
    double a1 = 0.0;
    double a2 = 0.0;

    /// Divides all six by `a0`, which is exactly 1 afterwards; nothing when `a0` is 0.
    void normalize();
    BiquadCoefficients normalized() const;
    /// b0 b1 b2 a1 a2 over `a0` (as they stand when `a0` is 0) into `five`.
    void getNormalized(double* five) const;
    void setUnit() { *this = BiquadCoefficients{}; }
    /// The six values narrowed to float, in the order of the record.
    void toFloats(float* six) const;
    /// No memory in the section: b1, b2, a1 and a2 all 0.
    bool isGainOnly() const { return a2 == 0.0 && b2 == 0.0 && a1 == 0.0 && b1 == 0.0; }

    bool operator==(const BiquadCoefficients&) const = default;
};

/// The sections of a cascade, in order; owns its records. Copying copies the records.
/// Control thread; every operation that changes the count allocates.
class CascadeCoefficients
{
public:
    /// The flat forms in which a cascade arrives as a list of numbers.
    enum Format : int
    {
        sixPerSection = 0,         ///< b0 b1 b2 a0 a1 a2 a section
        gainAndFourPerSection = 1, ///< a gain g, then b1 b2 a1 a2 a section; g scales section 0
        fivePerSection = 2,        ///< b0 b1 b2 a1 a2 a section, a0 = 1
    };

    explicit CascadeCoefficients(std::size_t numSections = 0) { resize(numSections); }
    CascadeCoefficients(const CascadeCoefficients& other) { *this = other; }
    CascadeCoefficients& operator=(const CascadeCoefficients& other);
    ~CascadeCoefficients() { sections.deletePointees(); }

    std::size_t size() const { return sections.size(); }
    /// New sections are unit sections; surplus ones are destroyed.
    void resize(std::size_t numSections);
    void setSection(std::size_t i, const BiquadCoefficients& coefficients) { *sections[i] = coefficients; }
    BiquadCoefficients& operator[](std::size_t i) { return *sections[i]; }
    const BiquadCoefficients& operator[](std::size_t i) const { return *sections[i]; }

    /// True when `count` numbers are a valid length for `format`.
    static bool isValidCount(std::size_t count, Format format);
    /// Replaces the list from `count` numbers in `format`; an invalid count is refused
    /// (false) and leaves the list as it was.
    bool setFromFlat(const float* values, std::size_t count, Format format);
    /// `setFromFlat` from the message's arguments read as floats; a message holding anything
    /// but numbers is refused like an invalid count. Allocates.
    bool parseFromOsc(const OSCMessage& message, Format format);
    /// Six floats a section, in the order of the record.
    Vector<float> toFlat() const;
    /// Five normalized doubles a section.
    Vector<double> toFive() const;

    bool operator==(const CascadeCoefficients& other) const;

private:
    Vector<BiquadCoefficients*> sections;
};
} // namespace ondo
