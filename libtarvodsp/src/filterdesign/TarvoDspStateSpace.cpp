#include "filterdesign/TarvoDspStateSpace.h"

#include "filterdesign/TarvoDspEigenvalues.h"

#include <Eigen/Dense>

namespace ondo
{
namespace
{
using Dense = Eigen::MatrixXd;
using RowMajor = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

Dense toDense(const Matrix<double>& m)
{
    const auto rows = static_cast<Eigen::Index>(m.getNumRows());
    const auto columns = static_cast<Eigen::Index>(m.getNumColumns());
    if (rows == 0 || columns == 0)
        return Dense(rows, columns);
    return Eigen::Map<const RowMajor>(m.getData().data(), rows, columns);
}

Matrix<double> fromDense(const Dense& d)
{
    Matrix<double> m(static_cast<std::uint64_t>(d.rows()), static_cast<std::uint64_t>(d.cols()));
    for (Eigen::Index r = 0; r < d.rows(); ++r)
        for (Eigen::Index c = 0; c < d.cols(); ++c)
            m(static_cast<std::uint64_t>(r), static_cast<std::uint64_t>(c)) = d(r, c);
    return m;
}

struct DenseModel
{
    Dense A, B, C, D;
    explicit DenseModel(const StateSpace& s) : A(toDense(s.A)), B(toDense(s.B)), C(toDense(s.C)), D(toDense(s.D)) {}
    StateSpace toStateSpace() const { return {fromDense(A), fromDense(B), fromDense(C), fromDense(D)}; }
};

// The doubling transformations share one shape: [[X, wn I], [-wn I, 0]].
Dense doubled(const Dense& x, double wn)
{
    const Eigen::Index n = x.rows();
    Dense a = Dense::Zero(2 * n, 2 * n);
    a.topLeftCorner(n, n) = x;
    a.topRightCorner(n, n) = wn * Dense::Identity(n, n);
    a.bottomLeftCorner(n, n) = -wn * Dense::Identity(n, n);
    return a;
}

Dense stackedOverZeros(const Dense& top)
{
    Dense b = Dense::Zero(2 * top.rows(), top.cols());
    b.topRows(top.rows()) = top;
    return b;
}

Dense besideZeros(const Dense& left)
{
    Dense c = Dense::Zero(left.rows(), 2 * left.cols());
    c.leftCols(left.cols()) = left;
    return c;
}
} // namespace

StateSpace StateSpace::lowpassToLowpass(double wn) const
{
    DenseModel m(*this);
    m.A *= wn;
    m.B *= wn;
    return m.toStateSpace();
}

StateSpace StateSpace::lowpassToHighpass(double wn) const
{
    DenseModel m(*this);
    if (m.A.rows() == 0)
        return *this;
    const auto lu = m.A.partialPivLu();
    const Dense inverseA = lu.inverse();
    const Dense inverseAB = lu.solve(m.B);
    const Dense cInverseA = m.C * inverseA;
    m.D -= m.C * inverseAB;
    m.A = wn * inverseA;
    m.B = -wn * inverseAB;
    m.C = cInverseA;
    return m.toStateSpace();
}

StateSpace StateSpace::lowpassToBandpass(double wn, double bw) const
{
    DenseModel m(*this);
    if (m.A.rows() == 0)
        return *this;
    m.A = doubled(bw * m.A, wn);
    m.B = stackedOverZeros(bw * m.B);
    m.C = besideZeros(m.C);
    return m.toStateSpace();
}

StateSpace StateSpace::lowpassToBandstop(double wn, double bw) const
{
    DenseModel m(*this);
    if (m.A.rows() == 0)
        return *this;
    const auto lu = m.A.partialPivLu();
    const Dense inverseA = lu.inverse();
    const Dense inverseAB = lu.solve(m.B);
    m.D -= m.C * inverseAB;
    m.C = besideZeros(m.C * inverseA);
    m.A = doubled(bw * inverseA, wn);
    m.B = stackedOverZeros(-bw * inverseAB);
    return m.toStateSpace();
}

StateSpace StateSpace::bilinear(double fs) const
{
    DenseModel m(*this);
    const Eigen::Index n = m.A.rows();
    if (n == 0)
        return *this;
    const double t = 1.0 / fs;
    const double r = std::sqrt(t);
    const Dense identity = Dense::Identity(n, n);
    const Dense t1 = identity + m.A * (t / 2.0);
    const auto t2 = (identity - m.A * (t / 2.0)).eval().partialPivLu();
    const Dense t2InverseB = t2.solve(m.B);
    const Dense cT2Inverse = m.C * t2.inverse();
    m.D = m.C * t2InverseB * (t / 2.0) + m.D;
    m.A = t2.solve(t1);
    m.B = (t / r) * t2InverseB;
    m.C = r * cT2Inverse;
    return m.toStateSpace();
}

ComplexArray<double> StateSpace::getPoles() const
{
    return eigenvalues(A);
}

std::complex<double> StateSpace::evaluate(std::complex<double> x) const
{
    const DenseModel m(*this);
    const Eigen::Index n = m.A.rows();
    const std::complex<double> direct = m.D.size() > 0 ? m.D(0, 0) : 0.0;
    if (n == 0)
        return direct;
    const Eigen::MatrixXcd resolvent = x * Eigen::MatrixXcd::Identity(n, n) - m.A.cast<std::complex<double>>();
    const Eigen::VectorXcd state = resolvent.partialPivLu().solve(m.B.cast<std::complex<double>>());
    return (m.C.cast<std::complex<double>>() * state)(0, 0) + direct;
}
} // namespace ondo
