#pragma once

#include "containers/TarvoDspComplex.h"

namespace ondo
{
/// A transfer function as its roots: k * prod(x - zeros) / prod(x - poles), in the s plane
/// for analog prototypes and in the z plane for digital designs.
struct ZeroPoleGain
{
    ComplexArray<double> zeros;
    ComplexArray<double> poles;
    double gain = 1.0;
};
} // namespace ondo
