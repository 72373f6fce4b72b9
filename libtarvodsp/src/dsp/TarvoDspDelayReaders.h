#pragma once

#include "containers/TarvoDspVector.h"

#include <cstdint>

namespace ondo
{
/// Control operations of the processors that hold a row of delay readers (economical lines
/// or taps), each with `setDelay`, `setDelayInSamples`, `setInterpolationMode`,
/// `setInterpolationTime`, `setEconomy` and `getDelay`.
namespace delayreaders
{
/// Runs `action` on reader `index`, if there is one.
template <typename Reader, typename Action>
void atIndex(Vector<Reader*>& readers, std::uint32_t index, Action&& action)
{
    if (index < readers.size())
        action(*readers[index]);
}

/// Runs `action` on every reader.
template <typename Reader, typename Action>
void forEach(Vector<Reader*>& readers, Action&& action)
{
    for (Reader* reader : readers)
        action(*reader);
}

/// The readers' target delays in milliseconds. Allocates.
template <typename Reader>
Vector<float> targetDelays(const Vector<Reader*>& readers)
{
    Vector<float> delays(readers.size());
    for (std::size_t i = 0; i < readers.size(); ++i)
        delays[i] = readers[i]->getDelay();
    return delays;
}
} // namespace delayreaders
} // namespace ondo
