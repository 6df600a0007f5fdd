#pragma once

#include "orvane_host/present/PresentationStage.h"
#include "orvane/math/Vector.h"
#include "orvane/renderdata/RenderItemES20.h"

#include <memory>
#include <vector>

namespace OV
{

class Scene;

} // namespace OV

namespace OV::Host::Detail
{

/// A flat piece of a map in world space: three corners, or four in a row about it, with colours
/// between theirs.
struct SunMapCell
{
    Vector corners[4];
    int count = 4;
    float values[4] = {}; ///< of the corners, 0 to 1
};

/// Draws a map in the colours of scalar materials, unlit, over the surfaces.
class SunMapStage : public PresentationStage
{
public:
    explicit SunMapStage(const std::vector<SunMapCell>& cells);
    ~SunMapStage() override;

    /// It lies on surfaces.
    bool DrawsBesideScene() const override { return false; }
    void Draw(PresentationFrame& frame) override;
    void ReleaseGL() override;

private:
    void AddMesh(const SunMapCell* cells, std::size_t count);

    std::unique_ptr<Scene> m_scene; ///< of the map alone
    std::vector<RenderItemES20> m_items;
};

} // namespace OV::Host::Detail
