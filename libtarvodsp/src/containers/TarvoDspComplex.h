#pragma once

#include "containers/TarvoDspVector.h"

#include <algorithm>

namespace ondo
{
template <typename T>
struct Complex
{
    T re{};
    T im{};

    bool operator==(const Complex&) const = default;
};

/// An aligned array of complex numbers, with the two sort orders of pole and zero lists.
template <typename T>
class ComplexArray : public Vector<Complex<T>>
{
public:
    using Vector<Complex<T>>::Vector;

    void sortByAscendingReal()
    {
        std::stable_sort(this->begin(), this->end(), [](const Complex<T>& a, const Complex<T>& b) { return a.re < b.re; });
    }

    void sortByDescendingImaginary()
    {
        std::stable_sort(this->begin(), this->end(), [](const Complex<T>& a, const Complex<T>& b) { return a.im > b.im; });
    }
};
} // namespace ondo
