#pragma once

#include "containers/TarvoDspVector.h"

#include <cstdint>

namespace ondo
{
/// Which inlets and outlets have something connected (1) or not (0). All start connected.
/// Whoever writes the tables (or a derived class's own) calls `noteChange`, so that a
/// reader can tell in one comparison whether anything moved since it last looked.
class InletsOutletsConnectionsStatus
{
public:
    InletsOutletsConnectionsStatus(std::uint32_t numInlets, std::uint32_t numOutlets)
        : inletsConnected(numInlets, 1), outletsConnected(numOutlets, 1)
    {
    }
    virtual ~InletsOutletsConnectionsStatus() = default;

    virtual void resizeAnalysis(std::uint32_t /*numInlets*/) {}
    virtual void resetAnalysis() {}

    void noteChange() { ++changes; }
    /// How many times the tables were written with something new.
    std::uint64_t getChanges() const { return changes; }

    Vector<std::int16_t> inletsConnected;
    Vector<std::int16_t> outletsConnected;

private:
    std::uint64_t changes = 0;
};
} // namespace ondo
