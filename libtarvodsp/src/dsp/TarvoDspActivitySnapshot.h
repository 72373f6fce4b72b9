#pragma once

#include "containers/TarvoDspVector.h"
#include "dsp/TarvoDspInletsActivityAnalyzer.h"

#include <cstdint>
#include <cstring>

namespace ondo
{
/// A processor's inlet activity and outlet connections as they stood at one moment, so that
/// the audio thread can tell in one comparison whether any of them moved since: work derived
/// from them may then be kept. Allocates only in `take` when the counts grew.
class ActivitySnapshot
{
public:
    /// Copies the tables. Audio thread; real-time safe once sized for the counts.
    void take(const InletsActivityAnalyzer& activity)
    {
        copy(inlets, activity.inletsActive);
        copy(outlets, activity.outletsConnected);
    }

    /// Whether the tables equal those last taken. Audio thread; real-time safe.
    bool matches(const InletsActivityAnalyzer& activity) const
    {
        return same(inlets, activity.inletsActive) && same(outlets, activity.outletsConnected);
    }

    /// Room for the counts, so that `take` never allocates. Control thread; allocates.
    void reserve(std::size_t numInlets, std::size_t numOutlets)
    {
        inlets.reserve(numInlets);
        outlets.reserve(numOutlets);
    }

private:
    static void copy(Vector<std::int16_t>& into, const Vector<std::int16_t>& from)
    {
        into.resize(from.size());
        if (!from.empty())
            std::memcpy(into.data(), from.data(), from.size() * sizeof(std::int16_t));
    }

    static bool same(const Vector<std::int16_t>& kept, const Vector<std::int16_t>& now)
    {
        return kept.size() == now.size() &&
               (now.empty() || std::memcmp(kept.data(), now.data(), now.size() * sizeof(std::int16_t)) == 0);
    }

    Vector<std::int16_t> inlets;
    Vector<std::int16_t> outlets;
};
} // namespace ondo
