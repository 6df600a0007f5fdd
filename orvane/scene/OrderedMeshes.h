#pragma once

#include "orvane/Export.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <vector>

namespace OV
{

class Mesh;

/// Meshes in order of creation, each sort ID once.
///
/// Takes little more than a pointer for each: they stand in pieces of a bounded length, so that
/// one that comes or leaves moves no others but those of its piece.
class ORVANE_API OrderedMeshes
{
    using Piece = std::vector<Mesh*>;

public:
    class Iterator
    {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = Mesh*;
        using difference_type = std::ptrdiff_t;
        using pointer = Mesh* const*;
        using reference = Mesh*;

        Iterator() = default;

        Mesh* operator*() const
        {
            return (*m_piece)[m_index];
        }

        Iterator& operator++()
        {
            if (++m_index == m_piece->size())
            {
                ++m_piece;
                m_index = 0;
            }
            return *this;
        }

        Iterator operator++(int)
        {
            const Iterator before = *this;
            ++*this;
            return before;
        }

        bool operator==(const Iterator& other) const
        {
            return m_piece == other.m_piece && m_index == other.m_index;
        }

        bool operator!=(const Iterator& other) const
        {
            return !(*this == other);
        }

    private:
        friend class OrderedMeshes;

        explicit Iterator(const Piece* piece, std::size_t index = 0) : m_piece(piece), m_index(index)
        {
        }

        const Piece* m_piece = nullptr;
        std::size_t m_index = 0;
    };

    Iterator begin() const
    {
        return Iterator(m_pieces.data());
    }

    Iterator end() const
    {
        return Iterator(m_pieces.data() + m_pieces.size());
    }

    /// The first one whose sort ID is above this.
    Iterator Behind(std::uint64_t sortID) const;

    std::size_t size() const
    {
        return m_size;
    }

    bool empty() const
    {
        return m_size == 0;
    }

    /// The one of that sort ID, or null; also for null.
    Mesh* Find(const Mesh* mesh) const;

    /// @return false, with nothing changed, when its sort ID is there already.
    bool Insert(Mesh* mesh);

    /// Takes out the one of that sort ID, which must be there.
    void Remove(const Mesh* mesh);

private:
    struct Place
    {
        std::size_t piece;
        std::size_t index;
    };

    /// The place of the first whose sort ID is not below this.
    Place PlaceOf(std::uint64_t sortID) const;
    Mesh* At(const Place& place) const;
    void Split(std::size_t piece);

    std::vector<Piece> m_pieces; ///< none of them empty
    std::size_t m_size = 0;
};

} // namespace OV
