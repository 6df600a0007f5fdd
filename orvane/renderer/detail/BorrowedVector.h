#pragma once

#include <utility>
#include <vector>

namespace OV::Detail
{

/// Takes a scratch vector from its owner for a scope and gives it back empty.
///
/// Whoever borrows in the meantime finds an empty vector and works on that, so that a pass may
/// run another one; of the two, the one with more room is kept.
template <class T>
class BorrowedVector
{
public:
    explicit BorrowedVector(std::vector<T>& owner) :
        m_owner(owner), m_vector(std::move(owner))
    {
        m_owner = std::vector<T>();
        m_vector.clear();
    }

    BorrowedVector(const BorrowedVector&) = delete;
    BorrowedVector& operator=(const BorrowedVector&) = delete;

    ~BorrowedVector()
    {
        if (m_vector.capacity() > m_owner.capacity())
        {
            m_owner = std::move(m_vector);
        }
        m_owner.clear();
    }

    std::vector<T>& operator*() { return m_vector; }

private:
    std::vector<T>& m_owner;
    std::vector<T> m_vector;
};

} // namespace OV::Detail
