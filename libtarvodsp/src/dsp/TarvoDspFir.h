#pragma once

#include "dsp/TarvoDspFilter.h"

#include <memory>

namespace ondo
{
/// A FIR filter behind a choice of implementation. Only the time domain exists.
class Fir : public Filter
{
public:
    enum Method : int
    {
        timeDomain = 0,
    };

    /// `order` + 1 taps. Any method other than `timeDomain` is refused with an
    /// `ondo::Exception`. Control thread; allocates.
    Fir(int order, const Method& method);

    void filter(float* out, const float* in, int numSamples) override { implementation->filter(out, in, numSamples); }
    void setCoefficients(const float* values) override { implementation->setCoefficients(values); }
    /// Hands on the other's implementation.
    void copyStateFrom(const Filter& other) override;
    int getNumCoefficients() const override { return implementation->getNumCoefficients(); }
    void clear() override { implementation->clear(); }
    void setBufferSize(std::uint32_t size) override { implementation->changeBufferSize(size); }
    void setSampleRate(float rate) override { implementation->changeSampleRate(clampSampleRate(rate)); }

    /// Only `timeDomain` exists: the same method does nothing, any other is refused with
    /// an `ondo::Exception`. Control thread.
    void setMethod(Method newMethod);
    Method getMethod() const { return method; }
    /// Control thread; allocates.
    void setNumCoefficients(int n);

private:
    std::unique_ptr<Filter> implementation;
    Method method;
};
} // namespace ondo
