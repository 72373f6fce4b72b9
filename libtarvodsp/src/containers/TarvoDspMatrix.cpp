#include "containers/TarvoDspMatrix.h"

#include "common/TarvoDspException.h"

#include <cstdio>
#include <fstream>
#include <functional>
#include <ostream>
#include <type_traits>

namespace ondo
{
namespace
{
using NumberText = std::function<std::string(double)>;

// A format must hold exactly one conversion, of the element's kind: anything else would
// read an argument that is not there.
void checkNumberFormat(const std::string& format, bool isInteger)
{
    const std::string conversions = isInteger ? "di" : "eEfFgGaA";
    int count = 0;
    for (std::size_t i = 0; i < format.size(); ++i)
    {
        if (format[i] != '%')
            continue;
        if (i + 1 < format.size() && format[i + 1] == '%')
        {
            ++i;
            continue;
        }
        std::size_t j = format.find_first_not_of("-+ #0123456789.", i + 1);
        if (j == std::string::npos || conversions.find(format[j]) == std::string::npos)
            throw Exception("invalid number format \"" + format + "\"", ONDO_SOURCE_LOCATION);
        ++count;
        i = j;
    }
    if (count != 1)
        throw Exception("invalid number format \"" + format + "\"", ONDO_SOURCE_LOCATION);
}

NumberText fromFormat(const std::string& format, bool isInteger)
{
    checkNumberFormat(format, isInteger);
    return [format, isInteger](double value) {
        char text[128];
        if (isInteger)
            std::snprintf(text, sizeof text, format.c_str(), static_cast<int>(value));
        else
            std::snprintf(text, sizeof text, format.c_str(), value);
        return std::string(text);
    };
}

NumberText fromPrecision(int precision)
{
    return [precision](double value) {
        char text[128];
        std::snprintf(text, sizeof text, "%.*g", precision, value);
        return std::string(text);
    };
}

enum class TextForm
{
    plain,
    matlab,
    latex
};

template <typename T>
void printMatrix(std::ostream& out, const Matrix<T>& m, const NumberText& number, const std::string& name, TextForm form)
{
    const auto rows = m.getNumRows();
    const auto columns = m.getNumColumns();
    switch (form)
    {
    case TextForm::plain:
        out << "matrix " << rows << " x " << columns << "\n";
        if (!name.empty())
            out << name << " = " << "\n";
        for (std::uint64_t r = 0; r < rows; ++r)
        {
            for (std::uint64_t c = 0; c < columns; ++c)
                out << number(static_cast<double>(m(r, c))) << " ";
            out << "\n";
        }
        break;
    case TextForm::matlab:
        out << "% matrix " << rows << " x " << columns << "\n";
        out << (name.empty() ? std::string() : name + " = ") << "[ ..." << "\n";
        for (std::uint64_t r = 0; r < rows; ++r)
        {
            for (std::uint64_t c = 0; c < columns; ++c)
                out << number(static_cast<double>(m(r, c))) << " ";
            out << "; ..." << "\n";
        }
        out << "..." << "\n" << "]; " << "\n";
        break;
    case TextForm::latex:
        out << "\\begin{equation}" << "\n" << "\\begin{pmatrix}" << "\n";
        // The word "name" itself is printed, not the name passed in: long-standing output
        // that existing documents depend on.
        if (!name.empty())
            out << "name" << " = " << "\n";
        out << "\\begin{array}{" << std::string(columns, 'c') << "}" << "\n";
        for (std::uint64_t r = 0; r < rows; ++r)
        {
            out << (r == 0 ? std::string(21, ' ') : std::string("\\noalign{\\smallskip} "));
            for (std::uint64_t c = 0; c < columns; ++c)
                out << (c == 0 ? "" : " & ") << number(static_cast<double>(m(r, c)));
            out << " \\\\ " << "\n";
        }
        out << "\\end{array}" << "\n" << "\\end{pmatrix}" << "\n" << "\\end{equation}" << "\n";
        break;
    }
}
} // namespace

template <typename T>
void Matrix<T>::setSize(std::uint64_t rows, std::uint64_t columns)
{
    data.resize(rows * columns);
    numRows = rows;
    numColumns = columns;
    numElements = rows * columns;
}

template <typename T>
void Matrix<T>::multiplyElements(const Matrix& other)
{
    for (std::uint64_t i = 0; i < numElements; ++i)
        data[i] *= other.data[i];
}

template <typename T>
void Matrix<T>::multiply(ComplexArray<T>& out, const ComplexArray<T>& in) const
{
    out.resize(numRows);
    for (std::uint64_t r = 0; r < numRows; ++r)
    {
        Complex<T> sum{};
        for (std::uint64_t c = 0; c < numColumns; ++c)
        {
            sum.re += (*this)(r, c) * in[c].re;
            sum.im += (*this)(r, c) * in[c].im;
        }
        out[r] = sum;
    }
}

template <typename T>
void Matrix<T>::multiply(Matrix& out, const Vector<T>& in) const
{
    if (out.numRows != numRows || out.numColumns != 1)
        out.setSize(numRows, 1);
    multiply(out.data, in);
}

template <typename T>
void Matrix<T>::multiply(Vector<T>& out, const Vector<T>& in) const
{
    out.resize(numRows);
    for (std::uint64_t r = 0; r < numRows; ++r)
    {
        T sum{};
        for (std::uint64_t c = 0; c < numColumns; ++c)
            sum += (*this)(r, c) * in[c];
        out[r] = sum;
    }
}

template <typename T>
void Matrix<T>::print(std::ostream& stream, const std::string& numberFormat, const std::string& name) const
{
    printMatrix(stream, *this, fromFormat(numberFormat, std::is_integral_v<T>), name, TextForm::plain);
}

template <typename T>
void Matrix<T>::print(std::ostream& stream, int precision, const std::string& name) const
{
    printMatrix(stream, *this, fromPrecision(precision), name, TextForm::plain);
}

template <typename T>
void Matrix<T>::printMatlab(std::ostream& stream, const std::string& numberFormat, const std::string& name) const
{
    printMatrix(stream, *this, fromFormat(numberFormat, std::is_integral_v<T>), name, TextForm::matlab);
}

template <typename T>
void Matrix<T>::printMatlab(std::ostream& stream, int precision, const std::string& name) const
{
    printMatrix(stream, *this, fromPrecision(precision), name, TextForm::matlab);
}

template <typename T>
void Matrix<T>::printLatex(std::ostream& stream, const std::string& numberFormat, const std::string& name) const
{
    printMatrix(stream, *this, fromFormat(numberFormat, std::is_integral_v<T>), name, TextForm::latex);
}

template <typename T>
void Matrix<T>::printLatex(std::ostream& stream, int precision, const std::string& name) const
{
    printMatrix(stream, *this, fromPrecision(precision), name, TextForm::latex);
}

template <typename T>
bool Matrix<T>::writeToTextFile(const std::string& file, const std::string& numberFormat, const std::string& name) const
{
    std::ofstream stream(file);
    if (!stream.is_open())
        return false;
    print(stream, numberFormat, name);
    return static_cast<bool>(stream);
}

template <typename T>
bool Matrix<T>::writeToTextFile(const std::string& file, int precision, const std::string& name) const
{
    std::ofstream stream(file);
    if (!stream.is_open())
        return false;
    print(stream, precision, name);
    return static_cast<bool>(stream);
}

template class Matrix<float>;
template class Matrix<int>;
template class Matrix<double>;
} // namespace ondo
