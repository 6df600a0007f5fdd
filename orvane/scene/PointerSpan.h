#pragma once

#include <cstddef>

namespace OV
{

/// A run of pointers that another object holds; good until that object changes.
template <class T>
class PointerSpan
{
public:
    PointerSpan() = default;

    PointerSpan(T* const* firstEntry, std::size_t count) : m_first(firstEntry), m_size(count)
    {
    }

    T* const* begin() const
    {
        return m_first;
    }

    T* const* end() const
    {
        return m_first + m_size;
    }

    std::size_t size() const
    {
        return m_size;
    }

    bool empty() const
    {
        return m_size == 0;
    }

    T* front() const
    {
        return m_first[0];
    }

    T* back() const
    {
        return m_first[m_size - 1];
    }

    T* operator[](std::size_t index) const
    {
        return m_first[index];
    }

private:
    T* const* m_first = nullptr;
    std::size_t m_size = 0;
};

} // namespace OV
