#pragma once

#include "orvane_host/geometry/detail/DepthRank.h"
#include "orvane/renderdata/RenderItemES20.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace OV
{

class Material;
class Mesh;

} // namespace OV

namespace OV::Host::Detail
{

/// Keeps the room that FeatureEdges::MakeRoom gives to lines out of the colours of a picture.
///
/// A face that is moved back by its slope comes to lie behind what it hides: up to half a pixel
/// of a wall that ends under it is seen through it. So surfaces get their colours where they are,
/// and room is only in the depth that lines are compared with, which is drawn by itself.
class LineRoom
{
public:
    /// Draws items, such as a part of a frame's list, or nothing but their depth.
    using DrawItems = std::function<void(const std::vector<RenderItemES20>& items, bool depthOnly)>;

    LineRoom() = default;
    LineRoom(const LineRoom&) = delete;
    LineRoom& operator=(const LineRoom&) = delete;

    /// Draws the list of a frame: opaque surfaces, lines from firstLine on, and transparent
    /// surfaces from firstAlpha on. GL.
    /// @param overDraw the depth that is there counts, so that it can't be drawn anew: surfaces
    ///        have their colours from where the room has moved them.
    void Draw(const std::vector<RenderItemES20>& items, std::size_t firstLine, std::size_t firstAlpha, bool overDraw,
              const DrawItems& draw);

    /// Draws items without their room besides the frame's own drawing: draw IDs are not used up. GL.
    void Without(const std::vector<RenderItemES20>& items, const std::vector<RenderItemES20>& more,
                 const std::function<void()>& draw);

private:
    struct Moved
    {
        Material* material;
        DepthOffset offset; ///< with room
    };

    bool TakeBack(const std::vector<RenderItemES20>& items, std::size_t end);
    void GiveAgain();

    void KeepDrawIDs(const std::vector<RenderItemES20>& items);
    void RestoreDrawIDs();

    // They keep their memory from frame to frame.
    std::vector<Moved> m_materials; ///< without room for now
    std::vector<Mesh*> m_meshes;        ///< of m_part, whose draw IDs drawing uses up
    std::vector<RenderItemES20> m_part;
};

} // namespace OV::Host::Detail
