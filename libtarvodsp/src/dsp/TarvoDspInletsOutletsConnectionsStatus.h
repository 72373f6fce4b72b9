#pragma once

#include "containers/TarvoDspVector.h"

#include <cstdint>

namespace ondo
{
/// Which inlets and outlets have something connected (1) or not (0). All start connected.
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

    Vector<std::int16_t> inletsConnected;
    Vector<std::int16_t> outletsConnected;
};
} // namespace ondo
