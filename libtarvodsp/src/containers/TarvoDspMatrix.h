#pragma once

#include "containers/TarvoDspComplex.h"
#include "containers/TarvoDspVector.h"

#include <cstdint>
#include <iosfwd>
#include <string>

namespace ondo
{
/// A dense matrix in row-major order: element (r, c) lies at r * numColumns + c.
/// Instantiated for float, int and double.
template <typename T>
class Matrix
{
public:
    Matrix() = default;
    Matrix(std::uint64_t rows, std::uint64_t columns) { setSize(rows, columns); }
    virtual ~Matrix() = default;

    /// Reshapes; allocates when the element count grows. New elements are zero.
    void setSize(std::uint64_t rows, std::uint64_t columns);

    std::uint64_t getNumRows() const { return numRows; }
    std::uint64_t getNumColumns() const { return numColumns; }
    std::uint64_t getNumElements() const { return numElements; }
    T& operator()(std::uint64_t r, std::uint64_t c) { return data[r * numColumns + c]; }
    const T& operator()(std::uint64_t r, std::uint64_t c) const { return data[r * numColumns + c]; }
    Vector<T>& getData() { return data; }
    const Vector<T>& getData() const { return data; }

    /// this[i] *= other[i] over all elements.
    virtual void multiplyElements(const Matrix& other);
    /// out[r] = sum over c of this(r, c) * in[c], real and imaginary parts apart.
    virtual void multiply(ComplexArray<T>& out, const ComplexArray<T>& in) const;
    /// out becomes numRows by 1; out(r, 0) is row r dotted with `in`.
    virtual void multiply(Matrix& out, const Vector<T>& in) const;
    virtual void multiply(Vector<T>& out, const Vector<T>& in) const;

    /// Text forms; numbers made by a printf format (e.g. "%.3f") or with a precision count.
    virtual void print(std::ostream& stream, const std::string& numberFormat, const std::string& name = {}) const;
    virtual void print(std::ostream& stream, int precision, const std::string& name = {}) const;
    virtual void printMatlab(std::ostream& stream, const std::string& numberFormat, const std::string& name = {}) const;
    virtual void printMatlab(std::ostream& stream, int precision, const std::string& name = {}) const;
    virtual void printLatex(std::ostream& stream, const std::string& numberFormat, const std::string& name = {}) const;
    virtual void printLatex(std::ostream& stream, int precision, const std::string& name = {}) const;

    /// Writes the plain form to `file`; false when the file cannot be opened.
    virtual bool writeToTextFile(const std::string& file, const std::string& numberFormat,
                                 const std::string& name = {}) const;
    virtual bool writeToTextFile(const std::string& file, int precision, const std::string& name = {}) const;

private:
    std::uint64_t numRows = 0;
    std::uint64_t numColumns = 0;
    std::uint64_t numElements = 0;
    Vector<T> data;
};

extern template class Matrix<float>;
extern template class Matrix<int>;
extern template class Matrix<double>;
} // namespace ondo
