#pragma once

#include "dsp/TarvoDspFilter.h"

namespace ondo
{
/// A first-order section y = b0 x + b1 x[-1] - a1 y[-1], in single precision.
class FirstOrder : public Filter
{
public:
    FirstOrder() = default;

    /// Audio thread; real-time safe.
    void filter(float* out, const float* in, int numSamples) override;
    /// b0, b1, a1. Real-time safe.
    void setCoefficients(const float* values) override;
    void copyStateFrom(const Filter&) override { clear(); }
    int getNumCoefficients() const override { return 3; }
    /// Zeroes the memory; the coefficients stay.
    void clear() override
    {
        x1 = 0.0f;
        y1 = 0.0f;
    }

    float getB0() const { return b0; }
    float getB1() const { return b1; }
    float getA1() const { return a1; }

private:
    float b0 = 1.0f;
    float b1 = 0.0f;
    float a1 = 0.0f;
    float x1 = 0.0f;
    float y1 = 0.0f;
};
} // namespace ondo
