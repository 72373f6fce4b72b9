#pragma once

#include <cstdint>

namespace Quor
{
class TarvoVerb;
}

namespace tarvo::host
{
/// What an instance holds beyond its host header, in the order the hosts' attribute tables
/// address it: every attribute's field, the engine and the live lengths of the arrays.
/// A plain record, so that hosts bind attributes to its fields by offset. The whole-number
/// fields have the width of a host's atom integer (64 bits), which is what a host reads
/// through an integer attribute or an array's count.
struct ObjectState
{
    static constexpr int positionsCapacity = 750; ///< floats: 250 points, above the 64 allowed
    static constexpr int delaysCapacity = 250;
    static constexpr int filterSize = 6;

    std::int64_t mute;
    std::int64_t bypass;
    float automute;
    Quor::TarvoVerb* processor; ///< owned
    bool initialized;
    std::int64_t speakersCount; ///< 3 x numspeakers
    std::int64_t sourcesCount;  ///< 3 x numsources
    std::int64_t numsources;
    std::int64_t numspeakers;
    std::int64_t numinternals;
    float sourcespositions[positionsCapacity];
    float speakerspositions[positionsCapacity];
    float gain, tr0, trl, trm, trh, fl, fh, airfreq;
    std::int64_t air, infinite;
    float modaldensity;
    float delays[delaysCapacity];
    float direct[filterSize];
    float room[filterSize];
    float early[filterSize];
    float cluster[filterSize];
    float early_start, early_end, early_distr, early_width, early_shape, cluster_start, cluster_end, cluster_distr,
        reverb_start;
};
} // namespace tarvo::host
