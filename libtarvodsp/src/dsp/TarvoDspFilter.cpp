#include "dsp/TarvoDspFilter.h"

#include <cstring>

namespace ondo
{
void Filter::process(float** outputs, float** inputs, std::uint32_t numSamples)
{
    if (isInletActive(0) && isOutletConnected(0))
        filter(outputs[0], inputs[0], static_cast<int>(numSamples));
    else
        std::memset(outputs[0], 0, numSamples * sizeof(float));
}
} // namespace ondo
