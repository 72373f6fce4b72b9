#pragma once

namespace ondo::primitives
{
/// Status codes returned by every primitive. Callers may ignore them: a length of zero
/// reaches a primitive as `badLength` and does nothing, which is how empty blocks pass.
enum Status : int
{
    done = 0,
    badLength = -6,
    nullPointer = -8,
    divisionByZeroInTaps = -10,
    wrongStateKind = -17,
    badSectionCount = -25,
    squareRootOfNegative = 3,
    denormalModeUnsupported = -9998,
};
} // namespace ondo::primitives
