#include "pan/QuorRecursivePanning.h"

#include "math/TarvoDspCoordinates.h"

#include <cmath>

namespace Quor
{
using ondo::Coordinates;

RecursivePanning::RecursivePanning(std::uint32_t numSources, std::uint32_t numSpeakers)
    : CornerPanning(numSources, numSpeakers, -45.0f, 45.0f, 135.0f, -135.0f)
{
    recomputeAllSources();
}

void RecursivePanning::setSpeakers(const ondo::Point3Array& speakers)
{
    speakersPosition = speakers;
    static constexpr int cornerSpeakers[5][4] = {{0, 1, 2, 3}, {0, 2, 3, 4}, {0, 1, 3, 4}, {0, 2, 4, 5}, {0, 2, 4, 6}};
    const std::size_t n = speakers.size();
    if (n >= 4 && n <= 8)
        for (int k = 0; k < 4; ++k)
            cornerAzimuths[k] = Coordinates::azimuthOf(speakers[cornerSpeakers[n - 4][k]]);
    else if (n == 12)
    {
        // Each corner lies between two speakers: the mean of their angles.
        static constexpr int pairs[4][2] = {{11, 0}, {3, 2}, {5, 6}, {9, 8}};
        for (int k = 0; k < 4; ++k)
        {
            const ondo::Point3& a = speakers[pairs[k][0]];
            const ondo::Point3& b = speakers[pairs[k][1]];
            const float mean = (std::atan2(a.y, a.x) + std::atan2(b.y, b.x)) / 2.0f;
            cornerAzimuths[k] = Coordinates::radiansToNavigational(mean);
        }
    }
    recomputeAllSources();
}

void RecursivePanning::computeGains(const ondo::Point3& position, float* row, std::uint32_t)
{
    const Corners c = cornersOf(position);
    float t[12] = {};
    float s[3], u[3], v[3];
    switch (numOutputs)
    {
        case 4:
            t[0] = c.fl, t[1] = c.fr, t[2] = c.br, t[3] = c.bl;
            break;
        case 5:
            split(c.fl, c.fr, t);
            t[3] = c.br, t[4] = c.bl;
            break;
        case 6:
        case 8:
        case 12:
        {
            split(c.fl, c.bl, s);
            split(c.fr, c.br, u);
            float six[6] = {s[0], u[0], u[1], u[2], s[2], s[1]};
            if (numOutputs == 6)
            {
                std::copy(six, six + 6, t);
                break;
            }
            float eight[8];
            split(six[0], six[1], eight);
            eight[3] = six[2];
            split(six[3], six[4], eight + 4);
            eight[7] = six[5];
            if (numOutputs == 8)
            {
                std::copy(eight, eight + 8, t);
                break;
            }
            float p[3], p1[3], p2[3], p3[3];
            split(eight[0], eight[1], p);
            split(p[2], eight[2], p1);
            split(eight[4], eight[5], p2);
            split(p2[2], eight[6], p3);
            const float twelve[12] = {p[0], p[1], p1[0], p1[1], p1[2], eight[3],
                                      p2[0], p2[1], p3[0], p3[1], p3[2], eight[7]};
            std::copy(twelve, twelve + 12, t);
            break;
        }
        case 7:
            split(c.fl, c.fr, s);
            split(s[0], c.bl, u);
            split(s[2], c.br, v);
            t[0] = u[0], t[1] = s[1], t[2] = v[0], t[3] = v[1], t[4] = v[2], t[5] = u[2], t[6] = u[1];
            break;
        default: return;
    }
    // The law works in powers.
    for (std::uint32_t o = 0; o < numOutputs; ++o)
        row[o] = std::sqrt(t[o]);
}
} // namespace Quor
