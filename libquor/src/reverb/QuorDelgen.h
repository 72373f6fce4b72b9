#pragma once

#include "containers/TarvoDspVector.h"
#include "osc/TarvoDspOscInterface.h"

#include <cstdint>

namespace Quor
{
/// Turns a shortest delay, a longest delay and a distribution into `numDelays` delay times
/// (ms) that share no simple ratios, so that the stages built on them sound smooth, without
/// audible periodicity. Up to 16 delays come from a hand-picked table of numbers with no
/// common multiples; more come from a random walk with a fixed seed. Both are repeatable.
///
/// Control side only: the audio thread receives copies of the delays.
class Delgen : public ondo::OscInterface
{
public:
    static constexpr float defaultDistribution = 0.5f;
    static constexpr float lowestDistribution = 0.1f;
    static constexpr float highestDistribution = 0.9f;
    static constexpr std::uint32_t largestCount = 64;
    /// The table's largest number, 145 samples at 44100 Hz, in ms: the narrowest span.
    static constexpr float narrowestSpanMs = 3.2879817f;

    /// Stores the four, makes the series, then `setMinMax(minimum, maximum, 0.5)`: the
    /// distribution given here is overwritten. Control thread; allocates.
    Delgen(std::uint32_t numDelays, float minimum, float maximum, float distribution);

    /// Clamps `n` to 1..64, makes the series and recomputes with the present range and the
    /// default distribution. Control thread; allocates.
    void setNumDelays(std::uint32_t n);
    /// `minimum` floored at 1 ms, `maximum` raised to it, `distribution` clamped to 0.1..0.9.
    /// Returns the delays (ms). Control thread; allocates.
    ondo::Vector<float> setMinMax(float minimum, float maximum, float distribution);
    /// Finds the maximum that gives delays summing to about `sum` ms, with `distribution`
    /// taken as given (0 divides by zero). Returns the delays. Control thread; allocates.
    ondo::Vector<float> setMinSum(float minimum, float sum, float distribution);
    /// `setMinSum` with the present minimum and distribution. Control thread; allocates.
    void setSum(float sum);

    /// "/numdelays" (an integer; below 1 counts as 0), "/min", "/max", "/distr", "/sum" (one
    /// number each), "/minmax" and "/minsum" (three numbers, or two with the distribution
    /// 0.5). The first match ends the search. Control thread; allocates.
    bool processOscMessage(const ondo::OSCMessage& message, std::int32_t& context) override;
    /// "/numdelays", "/min", "/max", "/sum", "/distr". Allocates.
    ondo::OSCBundle getState() const override;
    ondo::OscDocumentation getOscDocumentation() const override;

    const ondo::Vector<float>& getDelays() const { return delays; }
    std::uint32_t getNumDelays() const { return numDelays; }
    /// The sum of the delays as computed, before clamping.
    float getSum() const { return sum; }
    float getMinimum() const { return minimum; }
    float getMaximum() const { return maximum; }
    float getDistribution() const { return distribution; }
    float getSeriesMean() const { return seriesMean; }
    const ondo::Vector<float>& getSeries() const { return series; }
    const ondo::Vector<std::int32_t>& getOrder() const { return order; }

private:
    void makeSeries();
    void makeTableSeries();
    void makeSeededSeries();
    void computeDelays();
    bool usesTable() const { return numDelays <= tableSize; }

    static constexpr std::uint32_t tableSize = 16;

    std::uint32_t numDelays;
    float sum = 0.0f;
    float minimum;
    float maximum;
    float distribution;
    ondo::Vector<float> delays;
    ondo::Vector<float> series;
    ondo::Vector<std::int32_t> order;
    float seriesMean = 0.0f;
};
} // namespace Quor
