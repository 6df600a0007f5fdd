#define GL_GLEXT_PROTOTYPES

#include "orvane_host/present/detail/Batch.h"

#include "orvane/math/Transform.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/MeshNode.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <cmath>
#include <typeinfo>
#include <utility>

namespace OV::Host::Detail
{

namespace
{

constexpr std::size_t kIdentifierBytes = 4; ///< of a vertex

Vector MiddleOf(const WorldBox& box)
{
    return Vector(0.5f * (box.low.x + box.high.x), 0.5f * (box.low.y + box.high.y), 0.5f * (box.low.z + box.high.z));
}

float ExtentOf(const WorldBox& box)
{
    return std::hypot(box.high.x - box.low.x, box.high.y - box.low.y, box.high.z - box.low.z);
}

std::size_t CountIndices(const Mesh& mesh)
{
    // Of whole triangles.
    return mesh.GetIndices().size() / 3 * 3;
}

void CopyIndices(const Mesh& mesh, std::size_t firstVertex, unsigned short* out)
{
    const auto begin = mesh.GetIndices().begin();
    const std::size_t vertices = mesh.GetPositionBuffer().size();
    // A host's thread may have written others since they were looked at.
    std::transform(begin, begin + static_cast<std::ptrdiff_t>(CountIndices(mesh)), out,
                   [&](unsigned short index)
                   { return static_cast<unsigned short>((index < vertices ? index : 0) + firstVertex); });
}

} // namespace

void BatchMesh::Become(Material* ownMaterial, unsigned int ownFlags)
{
    material = ownMaterial;
    flags = ownFlags;
}

BatchMesh::~BatchMesh()
{
    // It never was among the material's, which may be gone.
    material = nullptr;
}

BatchES20::BatchES20(Mesh* shown, SharedBufferPool* bufferPool, const BatchNodes& nodes, const BatchKind& batchKind,
                     const std::vector<Piece>& pieces, const TextureFactors& factors, const BatchColors* colors) :
    MeshES20(shown, bufferPool), m_nodes(nodes), m_kind(batchKind), m_colors(colors)
{
    std::size_t vertexCount = 0;
    for (const Piece& piece : pieces)
    {
        vertexCount += piece.mesh->GetPositionBuffer().size();
    }
    const BatchLayout layout = LayoutOf(vertexCount);
    const auto offsetOf = [](int floats) { return floats < 0 ? -1 : floats * static_cast<int>(sizeof(float)); };
    stride = offsetOf(layout.size);
    normalOffset = offsetOf(layout.normal);
    textureOffset = offsetOf(layout.texture);
    colorOffset = offsetOf(layout.color);
    scalarOffset = -1;
    m_materialOffset = layout.MaterialByte();

    m_pieces.reserve(pieces.size() + 1);
    Room end{};
    for (const Piece& piece : pieces)
    {
        m_pieces.push_back({WorldBox(), end.firstVertex, end.firstIndex, piece.owner, piece.userData});
        end.firstVertex += static_cast<std::uint32_t>(piece.mesh->GetPositionBuffer().size());
        end.firstIndex += static_cast<std::uint32_t>(CountIndices(*piece.mesh));
    }
    m_pieces.push_back(end);
    m_vertexCount = end.firstVertex;
    m_areNormalsApart = layout.AreNormalsApart();
    indexCount = end.firstIndex;
    m_onCount = pieces.size();
    m_on.assign((pieces.size() + kRow - 1) / kRow, 0);
    m_isShifted.reserve(pieces.size());

    const std::size_t vertexBytes = vertexCount * static_cast<std::size_t>(layout.floats) * sizeof(float);
    const std::unique_ptr<float[]> vertices(new float[vertexBytes / sizeof(float)]);
    const std::unique_ptr<unsigned short[]> indices(new unsigned short[end.firstIndex]);
    for (std::size_t i = 0; i < pieces.size(); ++i)
    {
        Room& room = m_pieces[i];
        float* const out = vertices.get() + room.firstVertex * static_cast<std::size_t>(layout.size);
        room.box = ToWorld(WriteVertices(*pieces[i].mesh, pieces[i].place, factors, layout, out));
        if (m_colors)
        {
            WriteMaterial(pieces[i].material, VerticesOf(i), layout, out);
        }
        CopyIndices(*pieces[i].mesh, room.firstVertex, indices.get() + room.firstIndex);
        m_on[i / kRow] |= std::uint64_t{1} << (i % kRow);
        m_isShifted.push_back(IsShift(pieces[i].place));
    }
    m_seenBits = m_on;
    m_seenHolds.assign(m_on.size(), false);
    FitBoxes();

    glGenBuffers(1, &vertexBufferId);
    glGenBuffers(1, &indexBufferId);
    glBindBuffer(GL_ARRAY_BUFFER, vertexBufferId);
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(vertexBytes), vertices.get(), GL_DYNAMIC_DRAW);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, indexBufferId);
    glBufferData(GL_ELEMENT_ARRAY_BUFFER, static_cast<GLsizeiptr>(end.firstIndex * sizeof(unsigned short)),
                 indices.get(), GL_STATIC_DRAW);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    ResetBufferCache();
}

BatchES20::~BatchES20()
{
    if (s_vertexId == vertexBufferId)
    {
        ResetBufferCache();
    }
    const GLuint buffers[] = {vertexBufferId, indexBufferId, m_identifiers};
    glDeleteBuffers(3, buffers);
}

bool BatchES20::HoldsColors(const Mesh& drawn)
{
    if (typeid(drawn) != typeid(BatchMesh))
    {
        return false;
    }
    const Object* const data = drawn.GetRenderData();
    return data && typeid(*data) == typeid(BatchES20) && static_cast<const BatchES20*>(data)->m_colors;
}

std::size_t BatchES20::GetBytes() const
{
    const std::size_t identifiers = m_identifiers == 0 ? 0 : m_pieces.back().firstVertex * kIdentifierBytes;
    const auto floats = static_cast<std::size_t>(LayoutOf(0).floats);
    return m_pieces.back().firstVertex * floats * sizeof(float)
        + static_cast<std::size_t>(indexCount) * sizeof(unsigned short) + identifiers;
}

std::size_t BatchES20::GetTriangleCount() const
{
    std::size_t count = 0;
    for (std::size_t i = 0; i < GetPieceCount(); ++i)
    {
        count += IsOn(i) ? IndicesOf(i) / 3 : 0;
    }
    return count;
}

void BatchES20::WidenBoxes(std::size_t piece)
{
    m_partBoxes[piece / kPart].Widen(m_pieces[piece].box);
    m_rowBoxes[piece / kRow].Widen(m_pieces[piece].box);
    m_box.Widen(m_pieces[piece].box);
}

WorldBox BatchES20::ToWorld(const WorldBox& box) const
{
    return BoxAt(box, m_nodes.whole->GetGlobal());
}

void BatchES20::FitBoxes()
{
    m_writes = 0;
    m_rowBoxes.assign(m_on.size(), WorldBox::Empty());
    m_partBoxes.assign((GetPieceCount() + kPart - 1) / kPart, WorldBox::Empty());
    m_box = WorldBox::Empty();
    for (std::size_t i = 0; i < GetPieceCount(); ++i)
    {
        if (m_pieces[i].owner != NoOwner)
        {
            m_partBoxes[i / kPart].Widen(m_pieces[i].box);
        }
    }
    for (std::size_t i = 0; i < m_partBoxes.size(); ++i)
    {
        m_rowBoxes[i * kPart / kRow].Widen(m_partBoxes[i]);
    }
    for (const WorldBox& box : m_rowBoxes)
    {
        m_box.Widen(box);
    }
}

std::uint64_t BatchES20::NextRevision()
{
    static std::uint64_t revision = 0;
    return ++revision;
}

void BatchES20::Switch(std::size_t piece, bool on)
{
    if (IsOn(piece) != on)
    {
        m_revision = NextRevision();
        m_on[piece / kRow] ^= std::uint64_t{1} << (piece % kRow);
        m_onCount += on ? 1 : static_cast<std::size_t>(-1);
        m_seenHolds[piece / kRow] = false;
        m_whole.isValid = false;
        m_seen.isValid = false;
    }
}

void BatchES20::SetUserData(std::size_t piece, int userData)
{
    m_identifiersHold = m_identifiersHold && m_pieces[piece].userData == userData;
    m_pieces[piece].userData = userData;
}

bool BatchES20::Fits(std::size_t piece, const Mesh& other) const
{
    return other.GetPositionBuffer().size() == VerticesOf(piece) && CountIndices(other) == IndicesOf(piece);
}

void BatchES20::Write(std::size_t index, const Piece& piece, const TextureFactors& factors, bool isReshaped,
                      std::vector<float>& scratch)
{
    const std::size_t vertices = VerticesOf(index);
    const BatchLayout layout = LayoutOf(vertices);
    m_revision = NextRevision();
    Room& room = m_pieces[index];
    const std::size_t floats = vertices * static_cast<std::size_t>(layout.floats);
    if (scratch.size() < floats)
    {
        scratch.resize(floats);
    }
    const bool isShift = IsShift(piece.place);
    const bool keepsNormals = !isReshaped && isShift && HasNormalsOfMesh(index);
    m_isShifted[index] = isShift;
    room.box = ToWorld(keepsNormals ? WriteShiftedPositions(*piece.mesh, piece.place, scratch.data())
                                    : WriteVertices(*piece.mesh, piece.place, factors, layout, scratch.data()));
    if (m_colors && !keepsNormals)
    {
        WriteMaterial(piece.material, vertices, layout, scratch.data());
    }
    glBindBuffer(GL_ARRAY_BUFFER, vertexBufferId);
    const std::size_t bytes = vertices * static_cast<std::size_t>(stride);
    glBufferSubData(GL_ARRAY_BUFFER, static_cast<GLintptr>(room.firstVertex * static_cast<std::size_t>(stride)),
                    static_cast<GLsizeiptr>(bytes), scratch.data());
    if (m_areNormalsApart && !keepsNormals)
    {
        glBufferSubData(GL_ARRAY_BUFFER,
                        normalOffset + static_cast<GLintptr>(room.firstVertex * static_cast<std::size_t>(stride)),
                        static_cast<GLsizeiptr>(bytes), scratch.data() + layout.normal);
    }
    if (isReshaped)
    {
        std::vector<unsigned short> indices(IndicesOf(index));
        CopyIndices(*piece.mesh, room.firstVertex, indices.data());
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, indexBufferId);
        glBufferSubData(GL_ELEMENT_ARRAY_BUFFER, static_cast<GLintptr>(room.firstIndex * sizeof(unsigned short)),
                        static_cast<GLsizeiptr>(indices.size() * sizeof(unsigned short)), indices.data());
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    }
    s_isBound = true;
    m_seenHolds[index / kRow] = false;
    WidenBoxes(index);
    if (++m_writes >= GetPieceCount())
    {
        FitBoxes();
    }
    SetUserData(index, piece.userData);
}

void BatchES20::EndWriting()
{
    if (std::exchange(s_isBound, false))
    {
        glBindBuffer(GL_ARRAY_BUFFER, 0);
        ResetBufferCache();
    }
}

void BatchES20::GiveUp(std::size_t piece)
{
    Switch(piece, false);
    m_vertexCount -= VerticesOf(piece);
    m_pieces[piece].owner = NoOwner;
}

bool BatchES20::See(const ViewVolume& view, float leastShare, std::uint64_t look)
{
    if (m_look != look || m_lookRevision != m_revision)
    {
        if (m_look != look)
        {
            m_seenHolds.assign(m_on.size(), false);
        }
        m_look = look;
        m_lookRevision = m_revision;
        m_seesAny = Search(view, leastShare);
    }
    return m_seesAny;
}

std::uint64_t BatchES20::BitsSeen(const ViewVolume& view, ViewVolume::PlaneSet planes, float leastShare,
                                  std::size_t row) const
{
    const std::uint64_t on = m_on[row];
    planes = on == 0 ? ViewVolume::NoneSeen : view.PlanesAcross(m_rowBoxes[row], planes);
    std::uint64_t seen = planes == 0 ? on : 0;
    if (planes != 0 && planes != ViewVolume::NoneSeen)
    {
        constexpr std::uint64_t whole = (std::uint64_t{1} << kPart) - 1;
        for (std::size_t i = 0; i < kRow; i += kPart)
        {
            const std::uint64_t part = on & whole << i;
            const bool isSeen =
                part != 0 && view.PlanesAcross(m_partBoxes[(row * kRow + i) / kPart], planes) != ViewVolume::NoneSeen;
            seen |= isSeen ? part : 0;
        }
    }
    if (!(leastShare > 0.0f))
    {
        return seen;
    }
    for (std::size_t i = 0; i < kRow && seen != 0; ++i)
    {
        const std::uint64_t bit = std::uint64_t{1} << i;
        if ((seen & bit) != 0)
        {
            const WorldBox& box = m_pieces[row * kRow + i].box;
            seen = view.ShareOfHeight(MiddleOf(box), ExtentOf(box)) < leastShare ? seen & ~bit : seen;
        }
    }
    return seen;
}

bool BatchES20::Search(const ViewVolume& view, float leastShare)
{
    const ViewVolume::PlaneSet planes = view.PlanesAcross(m_box);
    if (planes == ViewVolume::NoneSeen || m_onCount == 0)
    {
        return false;
    }
    m_seesAll = planes == 0 && !(leastShare > 0.0f);
    if (m_seesAll)
    {
        return true;
    }
    bool seesAny = false;
    for (std::size_t row = 0; row < m_on.size(); ++row)
    {
        if (!m_seenHolds[row])
        {
            m_seenBits[row] = BitsSeen(view, planes, leastShare, row);
            m_seenHolds[row] = true;
        }
        seesAny = seesAny || m_seenBits[row] != 0;
    }
    m_seen.isValid = m_seen.isValid && m_seen.bits == m_seenBits;
    return seesAny;
}

} // namespace OV::Host::Detail
