#include "reverb/QuorDelgen.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace Quor
{
namespace
{
// Numbers with no common multiples, chosen by hand, and from what count of delays on each
// takes part: two delays use 2 and 37, three add 23, and so on; from nine on the entries
// join in the table's own order.
constexpr float tableValues[16] = {2, 5, 7, 11, 18, 23, 29, 37, 46, 59, 71, 82, 97, 113, 127, 145};
constexpr std::int32_t tableOrder[16] = {1, 8, 7, 4, 6, 3, 5, 2, 9, 10, 11, 12, 13, 14, 15, 16};

std::uint32_t clampCount(std::uint32_t n)
{
    return std::clamp<std::uint32_t>(n, 1, Delgen::largestCount);
}
} // namespace

Delgen::Delgen(std::uint32_t count, float minimumMs, float maximumMs, float distributionValue)
    : numDelays(clampCount(count)), minimum(minimumMs), maximum(maximumMs), distribution(distributionValue)
{
    makeSeries();
    setMinMax(minimumMs, maximumMs, defaultDistribution);
}

void Delgen::setNumDelays(std::uint32_t n)
{
    numDelays = clampCount(n);
    makeSeries();
    setMinMax(minimum, maximum, defaultDistribution);
}

ondo::Vector<float> Delgen::setMinMax(float minimumMs, float maximumMs, float distributionValue)
{
    minimum = std::max(minimumMs, 1.0f);
    maximum = std::max(maximumMs, minimum);
    distribution = std::clamp(distributionValue, lowestDistribution, highestDistribution);
    computeDelays();
    return delays;
}

ondo::Vector<float> Delgen::setMinSum(float minimumMs, float sumMs, float distributionValue)
{
    minimum = minimumMs;
    distribution = distributionValue;
    maximum = (sumMs / static_cast<float>(numDelays) - minimum) / distribution + minimum;
    if (minimum > maximum)
        std::swap(minimum, maximum);
    minimum = std::max(minimum, 1.0f);
    computeDelays();
    return delays;
}

void Delgen::setSum(float sumMs)
{
    setMinSum(minimum, sumMs, distribution);
    computeDelays();
}

void Delgen::makeSeries()
{
    if (usesTable())
        makeTableSeries();
    else
        makeSeededSeries();
}

void Delgen::makeTableSeries()
{
    series.resize(tableSize);
    order.resize(tableSize);
    std::copy(std::begin(tableValues), std::end(tableValues), series.begin());
    std::copy(std::begin(tableOrder), std::end(tableOrder), order.begin());
    delays.resize(numDelays);
    delays.clear();
    // Up to eight delays the first eight entries span the range, so that adding a delay
    // fills in between rather than stretching it.
    const float first = series[0];
    const float last = numDelays >= 8 ? series[numDelays - 1] : series[7];
    const float span = last - first;
    float total = 0.0f;
    for (std::uint32_t i = 0; i < tableSize; ++i)
    {
        series[i] = (series[i] - first) / span;
        if (order[i] <= static_cast<std::int32_t>(numDelays))
            total += series[i];
    }
    seriesMean = total / static_cast<float>(numDelays);
}

void Delgen::makeSeededSeries()
{
    series.resize(numDelays);
    order.resize(0);
    delays.resize(numDelays);
    delays.clear();
    // A random walk of 15-bit steps with a fixed seed: the same series on every run.
    std::mt19937 generator(0);
    series[0] = 0.0f;
    for (std::uint32_t i = 1; i < numDelays; ++i)
        series[i] = series[i - 1] + static_cast<float>(generator() & 0x7fffu) / 32767.0f;
    const float first = series[0];
    const float span = series[numDelays - 1] - first;
    float total = 0.0f;
    for (float& entry : series)
    {
        entry = (entry - first) / span;
        total += entry;
    }
    seriesMean = total / static_cast<float>(numDelays);
}

void Delgen::computeDelays()
{
    if (maximum - minimum <= narrowestSpanMs)
        maximum = minimum + narrowestSpanMs;
    const float range = maximum - minimum;
    sum = 0.0f;
    // Maps the series' mean towards the centroid `distribution` of the range.
    const float exponent = (1.0f / distribution - 1.0f) / (1.0f / seriesMean - 1.0f);
    std::uint32_t next = 0;
    for (std::uint32_t i = 0; i < series.size() && next < numDelays; ++i)
    {
        if (usesTable() && order[i] > static_cast<std::int32_t>(numDelays))
            continue;
        const float d = std::pow(series[i], exponent) * range + minimum;
        sum += d;
        delays[next++] = std::clamp(d, minimum, maximum);
    }
}

bool Delgen::processOscMessage(const ondo::OSCMessage& message, std::int32_t& /*context*/)
{
    if (message.matches("/numdelays") && message.matchesSingle('i'))
    {
        const std::int64_t n = message.getArgument(0).getInt64();
        setNumDelays(static_cast<std::uint32_t>(std::clamp<std::int64_t>(n, 0, largestCount)));
    }
    else if (message.matches("/min") && message.matchesSingle('n'))
    {
        minimum = std::min(std::max(message.getFloat(0), 1.0f), maximum);
        computeDelays();
    }
    else if (message.matches("/max") && message.matchesSingle('n'))
    {
        maximum = std::max(std::max(message.getFloat(0), 1.0f), minimum);
        computeDelays();
    }
    else if (message.matches("/distr") && message.matchesSingle('n'))
    {
        distribution = std::clamp(message.getFloat(0), lowestDistribution, highestDistribution);
        computeDelays();
    }
    else if (message.matches("/sum") && message.matchesSingle('n'))
        setSum(message.getFloat(0));
    else if (message.matches("/minmax") && (message.matchesList("nnn") || message.matchesList("nn")))
        setMinMax(message.getFloat(0), message.getFloat(1),
                  message.getNumArguments() == 3 ? message.getFloat(2) : defaultDistribution);
    else if (message.matches("/minsum") && (message.matchesList("nnn") || message.matchesList("nn")))
        setMinSum(message.getFloat(0), message.getFloat(1),
                  message.getNumArguments() == 3 ? message.getFloat(2) : defaultDistribution);
    else
        return false;
    return true;
}

ondo::OSCBundle Delgen::getState() const
{
    ondo::OSCBundle state = ondo::OscInterface::getState();
    state.add("/numdelays", numDelays);
    state.add("/min", minimum);
    state.add("/max", maximum);
    state.add("/sum", sum);
    state.add("/distr", distribution);
    return state;
}

ondo::OscDocumentation Delgen::getOscDocumentation() const
{
    ondo::OscDocumentation documentation = ondo::OscInterface::getOscDocumentation();
    documentation.add({"/numdelays", "[int]", "sets the number of delays"});
    documentation.add({"/min", "[number]", "sets the shortest delay (in ms)"});
    documentation.add({"/max", "[number]", "sets the longest delay (in ms)"});
    documentation.add({"/distr", "[number]", "sets the distribution of the delays (0.1 to 0.9)"});
    documentation.add({"/sum", "[number]", "sets the sum of the delays (in ms)"});
    documentation.add({"/minmax", "[number][number][number]", "sets the shortest and longest delays and the distribution"});
    documentation.add({"/minsum", "[number][number][number]", "sets the shortest delay, the sum and the distribution"});
    return documentation;
}
} // namespace Quor
