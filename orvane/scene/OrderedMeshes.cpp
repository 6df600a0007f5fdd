#include "orvane/scene/OrderedMeshes.h"

#include "orvane/scene/Mesh.h"

#include <algorithm>
#include <utility>

namespace OV
{

namespace
{

/// So long that hardly any room goes to the pieces themselves, so short that one is moved at once.
constexpr std::size_t kLongestPiece = 256;

} // namespace

OrderedMeshes::Place OrderedMeshes::PlaceOf(std::uint64_t sortID) const
{
    const auto isBelow = [sortID](const Mesh* one) { return one->GetSortID() < sortID; };
    const auto piece = std::partition_point(m_pieces.begin(), m_pieces.end(),
                                            [&](const Piece& one) { return isBelow(one.back()); });
    if (piece == m_pieces.end())
    {
        return {m_pieces.size(), 0};
    }
    const auto entry = std::partition_point(piece->begin(), piece->end(), isBelow);
    return {static_cast<std::size_t>(piece - m_pieces.begin()), static_cast<std::size_t>(entry - piece->begin())};
}

OrderedMeshes::Iterator OrderedMeshes::Behind(std::uint64_t sortID) const
{
    const Place place = PlaceOf(sortID + 1);
    return Iterator(m_pieces.data() + place.piece, place.index);
}

Mesh* OrderedMeshes::At(const Place& place) const
{
    return place.piece < m_pieces.size() ? m_pieces[place.piece][place.index] : nullptr;
}

Mesh* OrderedMeshes::Find(const Mesh* mesh) const
{
    Mesh* const found = mesh ? At(PlaceOf(mesh->GetSortID())) : nullptr;
    return found && found->GetSortID() == mesh->GetSortID() ? found : nullptr;
}

bool OrderedMeshes::Insert(Mesh* mesh)
{
    const std::uint64_t sortID = mesh->GetSortID();
    if (!m_pieces.empty() && m_pieces.back().size() < kLongestPiece && m_pieces.back().back()->GetSortID() < sortID)
    {
        // Most often the mesh is the newest.
        m_pieces.back().push_back(mesh);
        ++m_size;
        return true;
    }
    Place place = PlaceOf(sortID);
    const Mesh* const present = At(place);
    if (present && present->GetSortID() == sortID)
    {
        return false;
    }
    if (place.piece == m_pieces.size())
    {
        m_pieces.push_back(Piece(1, mesh));
        ++m_size;
        return true;
    }
    if (m_pieces[place.piece].size() == kLongestPiece)
    {
        Split(place.piece);
        if (place.index > kLongestPiece / 2)
        {
            ++place.piece;
            place.index -= kLongestPiece / 2;
        }
    }
    Piece& piece = m_pieces[place.piece];
    piece.insert(piece.begin() + static_cast<std::ptrdiff_t>(place.index), mesh);
    ++m_size;
    return true;
}

void OrderedMeshes::Split(std::size_t index)
{
    const auto middle = static_cast<std::ptrdiff_t>(kLongestPiece / 2);
    Piece second(m_pieces[index].begin() + middle, m_pieces[index].end());
    m_pieces.insert(m_pieces.begin() + static_cast<std::ptrdiff_t>(index) + 1, std::move(second));
    Piece& first = m_pieces[index];
    first.erase(first.begin() + middle, first.end());
}

void OrderedMeshes::Remove(const Mesh* mesh)
{
    const Place place = PlaceOf(mesh->GetSortID());
    Piece& piece = m_pieces[place.piece];
    piece.erase(piece.begin() + static_cast<std::ptrdiff_t>(place.index));
    if (piece.empty())
    {
        m_pieces.erase(m_pieces.begin() + static_cast<std::ptrdiff_t>(place.piece));
    }
    --m_size;
}

} // namespace OV
