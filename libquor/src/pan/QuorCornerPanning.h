#pragma once

#include "pan/QuorAmplitudePanning.h"

namespace Quor
{
/// The common ground of the panners built on four corners: a source's azimuth is warped so
/// that the corners fall on the diagonals of a square, and its position on that square
/// gives four corner powers by a bilinear law. Sources inside the unit sphere move towards
/// the centre, where all corners sound equally.
class CornerPanning : public AmplitudePanning
{
public:
    bool is2D() const override { return false; }

protected:
    CornerPanning(std::uint32_t numSources, std::uint32_t numSpeakers, float c0, float c1, float c2, float c3);

    /// The corner powers of a position, front-left, front-right, back-right, back-left,
    /// and the left-right and back-front products they are made of.
    struct Corners
    {
        float fl, fr, br, bl;
        float left, right, back, front;
    };
    Corners cornersOf(const ondo::Point3& position) const;
    /// The position on the square, x to the right and y to the front, within [-1, 1].
    void squarePosition(const ondo::Point3& position, float& x, float& y) const;

    /// (clamp(a - b), a + b - clamp(a - b) - clamp(b - a), clamp(b - a)), clamps to [0, 1]:
    /// one power split over three speakers, the sum kept.
    static void split(float a, float b, float* out);
    static float clamp01(float v);

    /// Navigational degrees: front-left, front-right, back-right, back-left.
    float cornerAzimuths[4];
};
} // namespace Quor
