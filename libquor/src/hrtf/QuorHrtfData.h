#pragma once

#include <cstdint>
#include <string>

namespace Quor
{
/// A set of head-related filters: one filter per ear for each measured direction. For now
/// only the empty set exists, which panners without filters report.
class HrtfData
{
public:
    virtual ~HrtfData() = default;

    /// The set with no points, shared by every panner that has none. Any thread.
    static const HrtfData& empty();

    const std::string& getName() const { return name; }
    std::uint32_t getNumPoints() const { return numPoints; }
    std::uint32_t getNumChannels() const { return numChannels; }
    std::uint32_t getNumCoefficients() const { return numCoefficients; }
    /// Hz; 0 while the set is empty.
    float getSamplingRate() const { return samplingRate; }
    bool isEmpty() const { return numPoints == 0; }

private:
    std::string name;
    std::uint32_t numCoefficients = 0;
    std::uint32_t numChannels = 0;
    float samplingRate = 0.0f;
    std::uint32_t numPoints = 0;
};
} // namespace Quor
