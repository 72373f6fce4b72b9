#pragma once

#include "pan/QuorPan.h"

namespace Quor
{
/// The panner of a request the factory can't serve: silent, and deaf to every setting.
/// Both process forms clear every output, so in a chain of `processAdd` calls it also
/// erases what earlier stages summed there.
class NullPanning : public Pan
{
public:
    using Pan::Pan;

    /// Audio thread; real-time safe.
    void process(float** outputs, float** inputs, std::uint32_t numSamples) override;
    void processAdd(float** outputs, float** inputs, std::uint32_t numSamples) override;
    void setSourcePosition(std::uint32_t, const ondo::Point3&, bool) override {}
};
} // namespace Quor
