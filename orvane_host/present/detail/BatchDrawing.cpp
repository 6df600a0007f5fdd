// How a batch is drawn: the ranges of its pieces, in the colours of their materials or by their identifiers.

#define GL_GLEXT_PROTOTYPES

#include "orvane_host/present/detail/Batch.h"

#include "orvane_host/present/detail/BatchColors.h"
#include "orvane/effects/DepthIdPassEffectES20.h"
#include "orvane/effects/EffectES20.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/MeshNode.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <typeinfo>
#include <utility>

namespace OV::Host::Detail
{

namespace
{

/// The attribute of the engine's effect that identifiers of vertices come from, and the option that
/// makes them come from there.
constexpr GLuint kIdentifierAttribute = 1;
constexpr std::uint64_t kIdentifiersOfVertices = 1;
constexpr std::uint64_t kIdentifiersOfNodes = 2;

using Rgba = std::array<unsigned char, 4>;

Rgba IdentifierOf(int userData)
{
    float color[4];
    DepthIdPassEffectES20::EncodeId(userData, color);
    Rgba bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i)
    {
        // As GL stores what a shader writes.
        bytes[i] = static_cast<unsigned char>(std::lround(255.0f * std::clamp(color[i], 0.0f, 1.0f)));
    }
    return bytes;
}

const void* OffsetOf(std::size_t firstIndex)
{
    return reinterpret_cast<const void*>(firstIndex * sizeof(unsigned short));
}

} // namespace

const BatchES20::Runs& BatchES20::RunsOf(const MeshNode* node)
{
    const bool isWhole = node != m_nodes.seen || m_seesAll;
    Runs& runs = isWhole ? m_whole : m_seen;
    if (!runs.isValid)
    {
        MakeRuns(runs, isWhole ? m_on : m_seenBits);
    }
    return runs;
}

void BatchES20::MakeRuns(Runs& runs, const std::vector<std::uint64_t>& bits) const
{
    runs.counts.clear();
    runs.offsets.clear();
    runs.bits = bits;
    runs.isValid = true;
    std::uint32_t end = 0; // of the last run, in indices
    for (std::size_t row = 0; row < bits.size(); ++row)
    {
        // What a piece that was switched off since it was seen has is not to be drawn.
        std::uint64_t left = bits[row] & m_on[row];
        while (left != 0)
        {
            // From one range of pieces to the next, however many each has.
            const auto first = static_cast<std::size_t>(__builtin_ctzll(left));
            const std::uint64_t gaps = ~(left >> first);
            const std::size_t length = gaps == 0 ? kRow : static_cast<std::size_t>(__builtin_ctzll(gaps));
            const std::uint32_t firstIndex = m_pieces[row * kRow + first].firstIndex;
            const std::uint32_t nextIndex = m_pieces[row * kRow + first + length].firstIndex;
            if (!runs.counts.empty() && end == firstIndex)
            {
                runs.counts.back() += static_cast<int>(nextIndex - firstIndex);
            }
            else
            {
                runs.counts.push_back(static_cast<int>(nextIndex - firstIndex));
                runs.offsets.push_back(OffsetOf(firstIndex));
            }
            end = nextIndex;
            left = first + length < kRow ? left & ~std::uint64_t{0} << (first + length) : 0;
        }
    }
}

void BatchES20::Render(EffectES20* effect, const std::vector<MeshNode*>& nodes, bool)
{
    if (!effect || vertexBufferId == 0 || indexBufferId == 0 || nodes.empty())
    {
        return;
    }
    const Runs& runs = RunsOf(nodes.front());
    if (runs.counts.empty())
    {
        return;
    }
    ApplyBuffer(vertexBufferId, indexBufferId);
    const unsigned int meshFlags = mesh->GetFlags();
    const bool cullOff = (meshFlags & MeshFlagNoCull) != 0 && (mesh->GetMaterial()->GetFlags() & MaterialFlagNoCull) == 0;
    if (cullOff)
    {
        glDisable(GL_CULL_FACE);
    }
    effect->clipPlanesActive = true;
    effect->meshNodeFlag = (meshFlags & MeshFlagEffectFlag) != 0;
    // Of an effect that derives from it nobody knows what it makes of a node.
    const bool isIdentifying = typeid(*effect) == typeid(DepthIdPassEffectES20);
    if (isIdentifying && static_cast<DepthIdPassEffectES20*>(effect)->GetIdMode() != 0)
    {
        DrawIdentifiers(static_cast<DepthIdPassEffectES20&>(*effect), nodes.front(), runs);
    }
    else
    {
        effect->BindMeshAttributes(this);
        EffectES20::DisableSpareAttributes();
        effect->BindMeshUniforms(nodes.front());
        if (m_colors && EffectES20::TakesMaterialColors())
        {
            DrawRunsInColors(*effect, runs);
        }
        else
        {
            DrawRuns(runs);
        }
        effect->ReleaseMeshAttributes(this);
    }
    if (cullOff)
    {
        glEnable(GL_CULL_FACE);
    }
}

void BatchES20::DrawRuns(const Runs& runs) const
{
    if (runs.counts.size() == 1)
    {
        glDrawElements(GL_TRIANGLES, runs.counts.front(), GL_UNSIGNED_SHORT, runs.offsets.front());
        return;
    }
    glMultiDrawElements(GL_TRIANGLES, runs.counts.data(), GL_UNSIGNED_SHORT, runs.offsets.data(),
                        static_cast<GLsizei>(runs.counts.size()));
}

void BatchES20::DrawRunsInColors(EffectES20& effect, const Runs& runs) const
{
    m_colors->Send(effect);
    glVertexAttribPointer(EffectES20::AttributeMaterial, 1, GL_UNSIGNED_BYTE, GL_FALSE, stride,
                          reinterpret_cast<const void*>(static_cast<std::intptr_t>(m_materialOffset)));
    glEnableVertexAttribArray(EffectES20::AttributeMaterial);
    DrawRuns(runs);
    glDisableVertexAttribArray(EffectES20::AttributeMaterial);
}

bool BatchES20::UploadIdentifiers()
{
    if (m_identifiersHold)
    {
        return true;
    }
    if (m_identifiers == 0)
    {
        glGenBuffers(1, &m_identifiers);
    }
    if (m_identifiers == 0)
    {
        return false;
    }
    std::vector<Rgba> colors(m_pieces.back().firstVertex);
    for (std::size_t i = 0; i < GetPieceCount(); ++i)
    {
        std::fill_n(colors.begin() + m_pieces[i].firstVertex, VerticesOf(i), IdentifierOf(m_pieces[i].userData));
    }
    glBindBuffer(GL_ARRAY_BUFFER, m_identifiers);
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(colors.size() * sizeof(Rgba)), colors.data(),
                 GL_STATIC_DRAW);
    m_identifiersHold = true;
    return true;
}

void BatchES20::DrawIdentifiers(DepthIdPassEffectES20& effect, MeshNode* node, const Runs& runs)
{
    // Each vertex has the identifier of its node, in place of the colour that it may have.
    if (!UploadIdentifiers())
    {
        return;
    }
    effect.SetIdMode(0);
    effect.UseOptions(kIdentifiersOfVertices);
    const int colors = std::exchange(colorOffset, -1);
    glBindBuffer(GL_ARRAY_BUFFER, vertexBufferId);
    effect.BindMeshAttributes(this);
    EffectES20::DisableSpareAttributes();
    glBindBuffer(GL_ARRAY_BUFFER, m_identifiers);
    glVertexAttribPointer(kIdentifierAttribute, 4, GL_UNSIGNED_BYTE, GL_TRUE, sizeof(Rgba), nullptr);
    glEnableVertexAttribArray(kIdentifierAttribute);
    glBindBuffer(GL_ARRAY_BUFFER, vertexBufferId);
    effect.BindMeshUniforms(node);
    DrawRuns(runs);
    glDisableVertexAttribArray(kIdentifierAttribute);
    effect.ReleaseMeshAttributes(this);
    colorOffset = colors;
    effect.SetIdMode(1);
    effect.UseOptions(kIdentifiersOfNodes);
}

} // namespace OV::Host::Detail
