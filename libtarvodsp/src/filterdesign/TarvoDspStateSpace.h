#pragma once

#include "containers/TarvoDspComplex.h"
#include "containers/TarvoDspMatrix.h"

#include <complex>

namespace ondo
{
/// A single-input single-output linear system: x' = A x + B u, y = C x + D u (or the
/// difference equation x[n+1] = ..., for a digital model). A is n by n, B n by 1, C 1 by n,
/// D 1 by 1. Every operation runs on the control thread and allocates.
struct StateSpace
{
    Matrix<double> A, B, C, D;

    std::size_t getOrder() const { return static_cast<std::size_t>(A.getNumRows()); }

    /// s -> s / wn: the cut-off moves from 1 to `wn` (rad/s).
    StateSpace lowpassToLowpass(double wn) const;
    /// s -> wn / s: a low-pass with cut-off 1 becomes a high-pass with cut-off `wn`.
    StateSpace lowpassToHighpass(double wn) const;
    /// s -> (s^2 + wn^2) / (bw s): a band-pass centred on `wn`, `bw` wide; doubles the order.
    StateSpace lowpassToBandpass(double wn, double bw) const;
    /// s -> bw s / (s^2 + wn^2): a band-stop centred on `wn`, `bw` wide; doubles the order.
    StateSpace lowpassToBandstop(double wn, double bw) const;
    /// The bilinear map s = 2 fs (z - 1) / (z + 1), in the balanced form that splits sqrt(1/fs)
    /// between B and C.
    StateSpace bilinear(double fs) const;

    /// The eigenvalues of A.
    ComplexArray<double> getPoles() const;
    /// C (x I - A)^-1 B + D at the complex point `x`.
    std::complex<double> evaluate(std::complex<double> x) const;
};
} // namespace ondo
