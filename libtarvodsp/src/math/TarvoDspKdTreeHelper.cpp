#include "math/TarvoDspKdTreeHelper.h"

#include <algorithm>
#include <limits>

namespace ondo
{
namespace
{
constexpr std::size_t minimumStackSize = 50;

NPoint<3> toNPoint(const Point3& p)
{
    return {{p.x, p.y, p.z}};
}

struct WorkItem
{
    std::int32_t node = 0;
    int dimension = 0;
};
} // namespace

void KdTreeHelper::build(const Point3Array& input)
{
    const std::size_t n = input.size();
    points.resize(n);
    permutation.resize(n);
    for (std::size_t i = 0; i < n; ++i)
    {
        points[i] = toNPoint(input[i]);
        permutation[i] = static_cast<std::int32_t>(i);
    }
    std::size_t m = 1;
    while (m < n + 1)
        m *= 2;
    nodes.resize(0);
    nodes.reserve(std::max<std::size_t>(1, std::min(m, 2 * n > m / 2 ? 2 * n - m / 2 : 1) - 1));

    NBoxNode<3> root;
    const float big = std::numeric_limits<float>::max();
    for (int d = 0; d < 3; ++d)
    {
        root.lower.coordinates[d] = -big;
        root.upper.coordinates[d] = big;
    }
    root.startIndex = 0;
    root.endIndex = static_cast<std::int32_t>(n) - 1;
    nodes.pushBack(root);

    std::size_t depth = 0;
    Vector<WorkItem> work;
    Vector<std::size_t> depths;
    if (n > 0)
    {
        work.pushBack({0, 0});
        depths.pushBack(0);
    }
    while (!work.empty())
    {
        const WorkItem item = work.back();
        const std::size_t itemDepth = depths.back();
        work.resize(work.size() - 1);
        depths.resize(depths.size() - 1);
        depth = std::max(depth, itemDepth + 1);

        const std::int32_t s = nodes[item.node].startIndex, e = nodes[item.node].endIndex;
        const std::int32_t c = e - s + 1, h = (e - s) / 2;
        const int d = item.dimension;
        std::nth_element(permutation.begin() + s, permutation.begin() + s + h, permutation.begin() + e + 1,
                         [&](std::int32_t a, std::int32_t b) {
                             return points[a].coordinates[d] < points[b].coordinates[d];
                         });
        const float median = points[permutation[s + h]].coordinates[d];

        NBoxNode<3> left = nodes[item.node], right = nodes[item.node];
        left.parent = right.parent = item.node;
        left.leftChild = left.rightChild = right.leftChild = right.rightChild = 0;
        left.endIndex = s + h;
        left.upper.coordinates[d] = median;
        right.startIndex = s + h + 1;
        right.lower.coordinates[d] = median;
        const std::int32_t leftIndex = static_cast<std::int32_t>(nodes.size());
        nodes.pushBack(left);
        nodes.pushBack(right);
        nodes[item.node].leftChild = leftIndex;
        nodes[item.node].rightChild = leftIndex + 1;

        const int next = (d + 1) % 3;
        if (h > 1)
        {
            work.pushBack({leftIndex, next});
            depths.pushBack(itemDepth + 1);
        }
        if (c - h > 3)
        {
            work.pushBack({leftIndex + 1, next});
            depths.pushBack(itemDepth + 1);
        }
    }
    // A depth-first walk holds at most one pending sibling a level.
    stack.resize(std::max(minimumStackSize, 2 * depth + 2));
    heap.resize(n);
}

float KdTreeHelper::squaredDistance(const NPoint<3>& p, int index) const
{
    const NPoint<3>& q = points[index];
    const float dx = q.coordinates[0] - p.coordinates[0];
    const float dy = q.coordinates[1] - p.coordinates[1];
    const float dz = q.coordinates[2] - p.coordinates[2];
    return dx * dx + dy * dy + dz * dz;
}

int KdTreeHelper::locate(const NPoint<3>& p) const
{
    int node = 0;
    int d = 0;
    while (nodes[node].leftChild != 0)
    {
        const NBoxNode<3>& left = nodes[nodes[node].leftChild];
        node = p.coordinates[d] <= left.upper.coordinates[d] ? nodes[node].leftChild : nodes[node].rightChild;
        d = (d + 1) % 3;
    }
    return node;
}

template <typename Bound, typename Scan>
void KdTreeHelper::walk(const NPoint<3>& p, int scanned, Bound&& bound, Scan&& scan) const
{
    std::size_t top = 0;
    stack[top++] = 0;
    while (top > 0)
    {
        const std::int32_t index = stack[--top];
        if (index == scanned)
            continue;
        const NBoxNode<3>& node = nodes[index];
        if (node.squaredDistanceTo(p) >= bound())
            continue;
        if (node.leftChild == 0)
        {
            scan(node);
            continue;
        }
        stack[top++] = node.leftChild;
        stack[top++] = node.rightChild;
    }
}

int KdTreeHelper::findNearest(const Point3& point) const
{
    if (points.empty())
        return -1;
    const NPoint<3> p = toNPoint(point);
    int best = -1;
    float bestDistance = std::numeric_limits<float>::infinity();
    auto scan = [&](const NBoxNode<3>& node) {
        for (std::int32_t i = node.startIndex; i <= node.endIndex; ++i)
        {
            const float d = squaredDistance(p, permutation[i]);
            if (d < bestDistance)
            {
                bestDistance = d;
                best = permutation[i];
            }
        }
    };
    // The leaf of the point gives a first bound that prunes most of the walk.
    const int start = locate(p);
    scan(nodes[start]);
    walk(p, start, [&] { return bestDistance; }, scan);
    return best;
}

std::size_t KdTreeHelper::findNearest(const Point3& point, std::size_t k, int* indices) const
{
    k = std::min(k, points.size());
    if (k == 0 || indices == nullptr)
        return 0;
    const NPoint<3> p = toNPoint(point);
    std::size_t count = 0;
    // A max-heap of the k best: its top is the bound to beat.
    auto offer = [&](int index) {
        const float d = squaredDistance(p, index);
        std::size_t hole;
        if (count < k)
        {
            hole = count++;
            while (hole > 0 && heap[(hole - 1) / 2].distance < d)
            {
                heap[hole] = heap[(hole - 1) / 2];
                hole = (hole - 1) / 2;
            }
            heap[hole] = {d, index};
            return;
        }
        if (d >= heap[0].distance)
            return;
        hole = 0;
        for (;;)
        {
            std::size_t child = 2 * hole + 1;
            if (child >= count)
                break;
            if (child + 1 < count && heap[child + 1].distance > heap[child].distance)
                ++child;
            if (!(heap[child].distance > d))
                break;
            heap[hole] = heap[child];
            hole = child;
        }
        heap[hole] = {d, index};
    };
    auto scan = [&](const NBoxNode<3>& node) {
        for (std::int32_t i = node.startIndex; i <= node.endIndex; ++i)
            offer(permutation[i]);
    };
    // First the smallest subtree around the point that can fill the heap.
    int start = locate(p);
    while (start != 0 && static_cast<std::size_t>(nodes[start].endIndex - nodes[start].startIndex + 1) < k)
        start = nodes[start].parent;
    scan(nodes[start]);
    const float unbounded = std::numeric_limits<float>::infinity();
    walk(p, start, [&] { return count == k ? heap[0].distance : unbounded; }, scan);
    std::sort(heap.begin(), heap.begin() + count,
              [](const Candidate& a, const Candidate& b) { return a.distance < b.distance; });
    for (std::size_t i = 0; i < count; ++i)
        indices[i] = heap[i].index;
    return count;
}
} // namespace ondo
