#pragma once

#include "containers/TarvoDspComplex.h"
#include "containers/TarvoDspMatrix.h"

namespace ondo
{
/// The eigenvalues of a real square matrix, complex ones in conjugate pairs, by Hessenberg
/// reduction and shifted QR iteration. A matrix that is not square gives an empty list;
/// one holding a NaN or an infinity gives NaNs.
/// Control thread; allocates.
ComplexArray<double> eigenvalues(const Matrix<double>& matrix);
} // namespace ondo
