#include "hrtf/QuorHrtfData.h"

namespace Quor
{
const HrtfData& HrtfData::empty()
{
    static const HrtfData set;
    return set;
}
} // namespace Quor
