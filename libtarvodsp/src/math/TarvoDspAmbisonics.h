#pragma once

#include "text/TarvoDspString.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace ondo
{
/// The vocabulary of Ambisonics: normalisations, channel orderings, the order a channel count
/// gives, and the factors between normalisations. Components are indexed by degree l and
/// order m, -l <= m <= l; a 2-D stream carries only the sectoral ones, |m| = l.
/// All functions are pure and real-time safe, except that the first conversion from or to
/// FuMa or MaxN computes their table (allocates).
class Ambisonics
{
public:
    enum Normalization : std::int32_t
    {
        Unnormalized = 0,
        SN3D,
        SN2D,
        N3D,
        N2D,
        FuMa,
        MaxN
    };

    enum ChannelOrder : std::int32_t
    {
        ACN = 0,
        SID,
        FMH
    };

    /// Degree and order of one component.
    struct Component
    {
        int l = 0;
        int m = 0;
    };

    /// The highest degree the FuMa weights are tabulated for; beyond it they are 0.
    static constexpr int maxFuMaDegree = 16;
    /// The degree up to which factorials and square roots come from tables.
    static constexpr int tabulatedDegree = 60;

    Ambisonics() = delete;

    /// The printed name of a normalisation; "unknown" outside the table.
    static String toString(Normalization normalization);
    /// The normalisation of a name, exact case; `unknown` when the name is not one.
    static Normalization normalizationFromString(const String& name, Normalization unknown);
    static String toString(ChannelOrder order);

    /// Whether `normalization` makes sense for streams of `dimension` (2 or 3).
    static bool isLegal(Normalization normalization, std::uint32_t dimension);
    /// SN2D in 2-D, SN3D otherwise.
    static Normalization defaultNormalization(std::uint32_t dimension)
    {
        return static_cast<Normalization>((dimension == 2) + 1);
    }

    /// The order M that `numChannels` gives: 2M + 1 channels in 2-D, (M + 1)^2 in 3-D; -1
    /// when the count is of no such form or the dimension is neither.
    static int orderFromCount(std::uint32_t dimension, std::uint32_t numChannels);
    /// The channel count of order M; 0 for a dimension other than 2 or 3.
    static std::uint32_t countFromOrder(std::uint32_t dimension, std::uint32_t order);

    /// The component at channel `index` in `ordering`.
    static Component component(std::uint32_t index, std::uint32_t dimension, ChannelOrder ordering);
    /// "Y(l,m)", and with `extended` the letter of the Furse-Malham set, as "Y(1,-1) (Y)".
    static String label(std::uint32_t index, std::uint32_t dimension, ChannelOrder ordering, bool extended);

    /// The factor that takes a component in `from` to `to`. A pair with no meaning (a
    /// non-sectoral component in a 2-D normalisation, FuMa beyond degree 16) gives 0.
    /// The "Unnormalized" end of this conversion is the real or imaginary part of the
    /// orthonormal complex harmonic, with the Condon-Shortley phase.
    static double normalizationFactor(int l, int m, Normalization from, Normalization to);

    /// n!, from a table up to 60 and from the gamma function beyond.
    static double factorial(int n);
    /// sqrt(2 l + 1), from a table up to degree 60.
    static double sqrtTwoLPlusOne(int l);

    /// Where the Legendre value of degree l and order m >= 0 sits in `legendre`'s output.
    static constexpr std::size_t legendreIndex(int l, int m) { return std::size_t(l) * (l + 1) / 2 + m; }
    static constexpr std::size_t legendreCount(int maxDegree) { return legendreIndex(maxDegree + 1, 0); }

    /// The associated Legendre functions sqrt((2l + 1) (l - m)! / (l + m)!) P_l^m(x), without
    /// the Condon-Shortley phase, for 0 <= m <= l <= `maxDegree`, into `out`
    /// (`legendreCount(maxDegree)` values). `s` is sqrt(1 - x^2), given by the caller so that
    /// it keeps its precision near the poles. This normalisation keeps every value of order
    /// one, so the recurrence neither overflows nor loses itself up to degree 60 in double
    /// precision (single precision is good to degree 20). Real-time safe.
    template <typename T>
    static void legendre(int maxDegree, T x, T s, T* out)
    {
        out[0] = T(1);
        T diagonal = T(1);
        for (int m = 0; m <= maxDegree; ++m)
        {
            if (m > 0)
            {
                diagonal *= std::sqrt(T(2 * m + 1) / T(2 * m)) * s;
                out[legendreIndex(m, m)] = diagonal;
            }
            if (m + 1 > maxDegree)
                break;
            out[legendreIndex(m + 1, m)] = std::sqrt(T(2 * m + 3)) * x * diagonal;
            for (int l = m + 2; l <= maxDegree; ++l)
            {
                const T a = std::sqrt(T(4 * l * l - 1) / T(l * l - m * m));
                const T b = std::sqrt(T((l - 1) * (l - 1) - m * m) / T(4 * (l - 1) * (l - 1) - 1));
                out[legendreIndex(l, m)] = a * (x * out[legendreIndex(l - 1, m)] - b * out[legendreIndex(l - 2, m)]);
            }
        }
    }
};
} // namespace ondo
