#pragma once

#include "dsp/TarvoDspInletsActivityAnalyzer.h"

#include <cstdint>

namespace ondo
{
/// A processor's inlet activity and outlet connections as they stood at one moment, so that
/// the audio thread can tell in one comparison whether any of them moved since: work derived
/// from them may then be kept.
class ActivitySnapshot
{
public:
    /// Audio thread; real-time safe.
    void take(const InletsActivityAnalyzer& activity)
    {
        changesSeen = activity.getChanges();
        taken = true;
    }

    /// Whether nothing was written to the tables since the last `take`. Audio thread;
    /// real-time safe.
    bool matches(const InletsActivityAnalyzer& activity) const
    {
        return taken && changesSeen == activity.getChanges();
    }

private:
    std::uint64_t changesSeen = 0;
    bool taken = false;
};
} // namespace ondo
