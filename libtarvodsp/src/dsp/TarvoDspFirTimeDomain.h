#pragma once

#include "containers/TarvoDspVector.h"
#include "dsp/TarvoDspFilter.h"

#include <cstdint>

namespace ondo
{
/// Direct convolution with L = order + 1 taps over a plain ring of past inputs. For short
/// responses: L multiply-adds a sample.
class FirTimeDomain : public Filter
{
public:
    /// Control thread; allocates. Taps start at zero.
    explicit FirTimeDomain(int order);

    /// Audio thread; real-time safe.
    void filter(float* out, const float* in, int numSamples) override;
    /// Copies L taps. Real-time safe.
    void setCoefficients(const float* values) override;
    /// Takes the other's history and position; both must have the same length.
    void copyStateFrom(const Filter& other) override;
    int getNumCoefficients() const override { return static_cast<int>(taps.size()); }
    /// Empties the history; the taps stay.
    void clear() override;

    /// Resizes taps and history. Control thread; allocates.
    void setNumCoefficients(int n);
    const Vector<float>& getTaps() const { return taps; }
    std::uint32_t getWritePosition() const { return writePosition; }

private:
    std::uint32_t writePosition = 0;
    Vector<float> taps;
    Vector<float> history;
};
} // namespace ondo
