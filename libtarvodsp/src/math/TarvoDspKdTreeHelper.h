#pragma once

#include "containers/TarvoDspVector.h"
#include "math/TarvoDspPoint3Array.h"

#include <cstdint>

namespace ondo
{
template <int N>
struct NPoint
{
    float coordinates[N] = {};
};

/// An axis-aligned box given by its lower and upper corners.
template <int N>
struct NBox
{
    NPoint<N> lower;
    NPoint<N> upper;

    /// Squared distance from `p` to the box: 0 inside, else the squared overruns summed.
    float squaredDistanceTo(const NPoint<N>& p) const
    {
        float sum = 0.0f;
        for (int d = 0; d < N; ++d)
        {
            const float c = p.coordinates[d];
            if (c < lower.coordinates[d])
                sum += (lower.coordinates[d] - c) * (lower.coordinates[d] - c);
            if (c > upper.coordinates[d])
                sum += (c - upper.coordinates[d]) * (c - upper.coordinates[d]);
        }
        return sum;
    }
};

/// A node of the tree: its box, its family as indices into the node array (0 means none,
/// the root being node 0) and its range [startIndex, endIndex] of the point permutation.
template <int N>
struct NBoxNode : NBox<N>
{
    std::int32_t parent = 0;
    std::int32_t leftChild = 0;
    std::int32_t rightChild = 0;
    std::int32_t startIndex = 0;
    std::int32_t endIndex = -1;
};

/// A k-d tree over 3-D points for nearest-point queries. Building allocates (control
/// thread); queries allocate nothing and may run on any one thread at a time.
class KdTreeHelper
{
public:
    KdTreeHelper() = default;
    explicit KdTreeHelper(const Point3Array& points) { build(points); }

    void build(const Point3Array& points);

    /// Index of the point nearest to `p`; -1 for an empty tree.
    int findNearest(const Point3& p) const;
    /// The `k` nearest points, nearest first, into `indices` (which must hold k entries).
    /// Returns how many were found: min(k, number of points).
    std::size_t findNearest(const Point3& p, std::size_t k, int* indices) const;

    std::size_t getNumPoints() const { return points.size(); }
    std::size_t getNumNodes() const { return nodes.size(); }

private:
    int locate(const NPoint<3>& p) const;
    float squaredDistance(const NPoint<3>& p, int index) const;
    /// Depth first from the root, skipping the subtree `scanned` (already done) and every
    /// box not nearer than `bound()`; `scan` visits the leaves.
    template <typename Bound, typename Scan>
    void walk(const NPoint<3>& p, int scanned, Bound&& bound, Scan&& scan) const;

    struct Candidate
    {
        float distance = 0.0f;
        int index = 0;
    };

    Vector<NPoint<3>> points;
    Vector<std::int32_t> permutation;
    Vector<NBoxNode<3>> nodes;
    mutable Vector<std::int32_t> stack;
    mutable Vector<Candidate> heap;
};
} // namespace ondo
