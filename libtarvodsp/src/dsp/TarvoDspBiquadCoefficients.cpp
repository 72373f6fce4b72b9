#include "dsp/TarvoDspBiquadCoefficients.h"

#include "osc/TarvoDspOscMessage.h"

namespace ondo
{
void BiquadCoefficients::normalize()
{
    if (a0 == 0.0)
        return;
    const double d = a0;
    b0 /= d;
    b1 /= d;
    b2 /= d;
    a1 /= d;
    a2 /= d;
    a0 = 1.0;
}

BiquadCoefficients BiquadCoefficients::normalized() const
{
    BiquadCoefficients copy = *this;
    copy.normalize();
    return copy;
}

void BiquadCoefficients::getNormalized(double* five) const
{
    const BiquadCoefficients n = normalized();
    five[0] = n.b0;
    five[1] = n.b1;
    five[2] = n.b2;
    five[3] = n.a1;
    five[4] = n.a2;
}

void BiquadCoefficients::toFloats(float* six) const
{
    six[0] = static_cast<float>(b0);
    six[1] = static_cast<float>(b1);
    six[2] = static_cast<float>(b2);
    six[3] = static_cast<float>(a0);
    six[4] = static_cast<float>(a1);
    six[5] = static_cast<float>(a2);
}

CascadeCoefficients& CascadeCoefficients::operator=(const CascadeCoefficients& other)
{
    if (this != &other)
    {
        resize(other.size());
        for (std::size_t i = 0; i < size(); ++i)
            *sections[i] = *other.sections[i];
    }
    return *this;
}

void CascadeCoefficients::resize(std::size_t numSections)
{
    const std::size_t old = sections.size();
    if (numSections < old)
        sections.deletePointees(numSections);
    sections.resize(numSections);
    for (std::size_t i = old; i < numSections; ++i)
        sections[i] = new BiquadCoefficients();
}

bool CascadeCoefficients::isValidCount(std::size_t count, Format format)
{
    switch (format)
    {
    case sixPerSection:
        return count >= 2 && count % 6 == 0;
    case gainAndFourPerSection:
        return count >= 2 && count % 4 == 1;
    case fivePerSection:
        return count > 1 && count % 5 == 0;
    }
    return false;
}

bool CascadeCoefficients::setFromFlat(const float* values, std::size_t count, Format format)
{
    if (values == nullptr || !isValidCount(count, format))
        return false;
    switch (format)
    {
    case sixPerSection:
        resize(count / 6);
        for (std::size_t i = 0; i < size(); ++i)
        {
            const float* v = values + 6 * i;
            *sections[i] = {v[0], v[1], v[2], v[3], v[4], v[5]};
        }
        break;
    case gainAndFourPerSection:
    {
        resize(count / 4);
        const double g = values[0];
        for (std::size_t i = 0; i < size(); ++i)
        {
            const float* v = values + 1 + 4 * i;
            // The overall gain sits in the first section only.
            const double scale = i == 0 ? g : 1.0;
            *sections[i] = {scale, v[0] * scale, v[1] * scale, 1.0, v[2], v[3]};
        }
        break;
    }
    case fivePerSection:
        resize(count / 5);
        for (std::size_t i = 0; i < size(); ++i)
        {
            const float* v = values + 5 * i;
            *sections[i] = {v[0], v[1], v[2], 1.0, v[3], v[4]};
        }
        break;
    }
    return true;
}

Vector<float> CascadeCoefficients::toFlat() const
{
    Vector<float> flat(6 * size());
    for (std::size_t i = 0; i < size(); ++i)
        sections[i]->toFloats(flat.data() + 6 * i);
    return flat;
}

Vector<double> CascadeCoefficients::toFive() const
{
    Vector<double> five(5 * size());
    for (std::size_t i = 0; i < size(); ++i)
        sections[i]->getNormalized(five.data() + 5 * i);
    return five;
}

bool CascadeCoefficients::operator==(const CascadeCoefficients& other) const
{
    if (size() != other.size())
        return false;
    for (std::size_t i = 0; i < size(); ++i)
        if (!(*sections[i] == *other.sections[i]))
            return false;
    return true;
}

bool CascadeCoefficients::parseFromOsc(const OSCMessage& message, Format format)
{
    const Vector<float> values = message.getArgumentsAsFloats();
    if (values.size() != message.getNumArguments())
        return false;
    return setFromFlat(values.data(), values.size(), format);
}
} // namespace ondo
