#pragma once

#include "common/TarvoDspAlloc.h"
#include "math/TarvoDspVectorPrimitives.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <initializer_list>
#include <type_traits>
#include <utility>

namespace ondo
{
/// Aligned, zero-initialised storage for samples, coefficients and plain records.
/// Elements are moved as bytes, so `T` must be trivially copyable. Growth allocates
/// (control thread); element access, `fill` and `clear` are real-time safe.
template <typename T>
class Vector
{
    static_assert(std::is_trivially_copyable_v<T>, "ondo::Vector holds plain values only");

public:
    Vector() = default;
    explicit Vector(std::size_t n) { resize(n); }
    Vector(std::size_t n, const T& value)
    {
        resize(n);
        fill(value);
    }
    Vector(std::initializer_list<T> values)
    {
        resize(values.size());
        std::copy(values.begin(), values.end(), first);
    }
    Vector(const Vector& other) { *this = other; }
    Vector(Vector&& other) noexcept { swap(other); }
    virtual ~Vector() { release(); }

    Vector& operator=(const Vector& other)
    {
        if (this != &other)
        {
            resize(other.size());
            copyBytes(first, other.first, other.size());
        }
        return *this;
    }
    Vector& operator=(Vector&& other) noexcept
    {
        if (this != &other)
        {
            release();
            swap(other);
        }
        return *this;
    }

    std::size_t size() const { return static_cast<std::size_t>(last - first); }
    std::size_t capacity() const { return static_cast<std::size_t>(capacityEnd - first); }
    bool empty() const { return first == last; }

    T* data() { return first; }
    const T* data() const { return first; }
    T* begin() { return first; }
    T* end() { return last; }
    const T* begin() const { return first; }
    const T* end() const { return last; }
    T& operator[](std::size_t i) { return first[i]; }
    const T& operator[](std::size_t i) const { return first[i]; }
    T& back() { return last[-1]; }

    /// Nothing if `n` is the size; a shrink keeps the head; a growth keeps the head and
    /// zeroes the tail. A failed allocation raises `ondo::Exception` and keeps the contents.
    void resize(std::size_t n)
    {
        const std::size_t oldSize = size();
        if (n == oldSize)
            return;
        if (n > maxSize())
            rethrowAsOutOfRange();
        if (n > capacity())
            reallocate(n, oldSize);
        last = first + n;
        if (n > oldSize)
            std::memset(static_cast<void*>(first + oldSize), 0, (n - oldSize) * sizeof(T));
    }

    /// Makes room for `n` elements without changing the size.
    void reserve(std::size_t n)
    {
        if (n > capacity())
            reallocate(n, size());
    }

    /// Appends one element; grows the storage geometrically.
    void pushBack(const T& value)
    {
        const std::size_t n = size();
        if (n == capacity())
            reallocate(std::max<std::size_t>(4, 2 * n), n);
        first[n] = value;
        last = first + n + 1;
    }

    void fill(const T& value)
    {
        const int n = static_cast<int>(size());
        if constexpr (std::is_same_v<T, float>)
            primitives::vectorSet32(value, first, n);
        else if constexpr (std::is_same_v<T, double>)
            primitives::vectorSet64(value, first, n);
        else
            std::fill(first, last, value);
    }

    /// Sets every element to zero bytes; the size stays.
    void clear()
    {
        if (!empty())
            std::memset(static_cast<void*>(first), 0, size() * sizeof(T));
    }

    /// Removes the elements at `indices` (in any order, repeats allowed). An index past the
    /// end removes nothing at all. Returns how many elements went.
    std::size_t eraseAt(const std::size_t* indices, std::size_t count)
    {
        if (indices == nullptr || count == 0)
            return 0;
        Vector<std::size_t> order(count);
        std::copy(indices, indices + count, order.begin());
        std::sort(order.begin(), order.end());
        const std::size_t distinct = static_cast<std::size_t>(std::unique(order.begin(), order.end()) - order.begin());
        if (order[distinct - 1] >= size())
            return 0;
        std::size_t write = 0;
        std::size_t next = 0;
        for (std::size_t read = 0; read < size(); ++read)
        {
            if (next < distinct && order[next] == read)
            {
                ++next;
                continue;
            }
            first[write++] = first[read];
        }
        last = first + write;
        return distinct;
    }

    Vector sorted() const
    {
        Vector copy(*this);
        std::sort(copy.begin(), copy.end());
        return copy;
    }

    /// A copy without repeated elements (the first of each kept), optionally sorted first.
    Vector unique(bool sortFirst = false) const
    {
        Vector result;
        if (empty())
            return result;
        Vector source = sortFirst ? sorted() : *this;
        result.reserve(source.size());
        for (const T& value : source)
            if (std::find(result.begin(), result.end(), value) == result.end())
                result.pushBack(value);
        return result;
    }

    /// For a vector of owning pointers: deletes each pointee from `from` to the end,
    /// leaving null in the slots.
    void deletePointees(std::size_t from = 0)
        requires std::is_pointer_v<T>
    {
        for (std::size_t i = from; i < size(); ++i)
        {
            delete first[i];
            first[i] = nullptr;
        }
    }

    void swap(Vector& other) noexcept
    {
        std::swap(first, other.first);
        std::swap(last, other.last);
        std::swap(capacityEnd, other.capacityEnd);
    }

    bool operator==(const Vector& other) const { return std::equal(begin(), end(), other.begin(), other.end()); }

    static constexpr std::size_t maxSize() { return static_cast<std::size_t>(PTRDIFF_MAX) / sizeof(T); }

private:
    [[noreturn]] static void rethrowAsOutOfRange()
    {
        try
        {
            throw std::length_error("allocation overflow.");
        }
        catch (...)
        {
            rethrowAllocationFailure();
        }
    }

    static void copyBytes(T* destination, const T* source, std::size_t n)
    {
        if (n > 0)
            std::memcpy(static_cast<void*>(destination), static_cast<const void*>(source), n * sizeof(T));
    }

    void reallocate(std::size_t newCapacity, std::size_t keep)
    {
        T* block = nullptr;
        try
        {
            block = static_cast<T*>(alignedAllocate(newCapacity, sizeof(T)));
        }
        catch (...)
        {
            rethrowAllocationFailure();
        }
        copyBytes(block, first, keep);
        alignedFree(first);
        first = block;
        last = block + keep;
        capacityEnd = block + newCapacity;
    }

    void release() noexcept
    {
        alignedFree(first);
        first = last = capacityEnd = nullptr;
    }

    T* first = nullptr;
    T* last = nullptr;
    T* capacityEnd = nullptr;
};
} // namespace ondo
