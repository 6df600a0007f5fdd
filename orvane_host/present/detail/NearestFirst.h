#pragma once

#include "orvane/renderdata/RenderItemES20.h"
#include "orvane/renderdata/RenderPass.h"

#include <cstddef>
#include <vector>

namespace OV
{

class Matrix;

} // namespace OV

namespace OV::Host::Detail
{

/// The surfaces of a frame in the order of their distance, so that what others hide is left out before
/// it looks up how much light reaches it, which takes several times what the rest of a flat look does.
///
/// Distances fall into so many steps, within each of which the order stays as it was: the meshes of a material
/// stand in rows still, and a change of material is not paid at each mesh.
class NearestFirst
{
public:
    static constexpr std::size_t Steps = 64;

    NearestFirst() = default;
    NearestFirst(const NearestFirst&) = delete;
    NearestFirst& operator=(const NearestFirst&) = delete;

    /// @param items of which those before `end` are surfaces that are drawn as solid ones.
    /// @param pass in which they are to be drawn.
    /// @return the items in that order, kept until the next call; the list itself where the order counts, as with
    ///         effects of a host and materials that pass whatever is before them.
    const std::vector<RenderItemES20>& Arrange(const std::vector<RenderItemES20>& items, std::size_t end,
                                               const Matrix& worldToClip, RenderPass pass);

private:
    // They keep their memory from frame to frame.
    std::vector<double> m_distances;
    std::vector<RenderItemES20> m_sorted;
};

} // namespace OV::Host::Detail
