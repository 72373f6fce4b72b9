#include "filterdesign/TarvoDspEigenvalues.h"

// Eigen's real Schur solver stands behind the designer's root finding: a Francis double-shift
// QR on the Hessenberg form. It runs on the control thread only.
#include <Eigen/Eigenvalues>

#include <cmath>

namespace ondo
{
ComplexArray<double> eigenvalues(const Matrix<double>& matrix)
{
    ComplexArray<double> result;
    const auto n = static_cast<Eigen::Index>(matrix.getNumRows());
    if (n == 0 || matrix.getNumColumns() != matrix.getNumRows())
        return result;
    // A matrix with a NaN or an infinity has no meaningful eigenvalues: NaN for all of them,
    // which every caller reads as "not inside the unit circle".
    for (double value : matrix.getData())
        if (!std::isfinite(value))
        {
            result.resize(static_cast<std::size_t>(n));
            result.fill({std::nan(""), std::nan("")});
            return result;
        }
    using RowMajor = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
    const Eigen::Map<const RowMajor> view(matrix.getData().data(), n, n);
    const Eigen::EigenSolver<Eigen::MatrixXd> solver(Eigen::MatrixXd(view), false);
    const auto& values = solver.eigenvalues();
    result.resize(static_cast<std::size_t>(n));
    for (Eigen::Index i = 0; i < n; ++i)
        result[static_cast<std::size_t>(i)] = {values[i].real(), values[i].imag()};
    return result;
}
} // namespace ondo
