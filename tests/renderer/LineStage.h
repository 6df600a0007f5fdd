#pragma once

#include "orvane/engine/AppContext.h"
#include "orvane/math/Color.h"
#include "orvane/math/Vector.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/RawLine.h"
#include "tests/effects/EffectSettingsGuard.h"
#include "tests/renderer/RendererDoubles.h"
#include "tests/support/GLFixture.h"

#include <glm/vec2.hpp>
#include <glm/vec4.hpp>

#include <memory>
#include <optional>
#include <vector>

namespace OV::Test
{

/// A segment as a picture should show it, in window pixels.
struct DrawnSegment
{
    glm::vec2 start{0.0f};
    glm::vec2 end{0.0f};
};

/// Base of tests that look at the pixels of lines.
///
/// The camera stands at (0, 0, 100) and looks down -Z; in the plane z = 0 a world unit is a
/// pixel in both projections, and the origin is the middle of the picture. Near is 1, far 200,
/// the background blue, and there is no fog.
class LineStage : public GLFixture
{
protected:
    static constexpr float Eye = 100.0f;
    static constexpr float NearDistance = 1.0f;
    static constexpr float FarDistance = 200.0f;
    static const glm::vec4 Background;

    LineStage();
    ~LineStage() override;

    void UsePerspective();

    /// A style of the scene in one colour; without antialias unless that is set afterwards.
    LineStyle& AddStyle(const Color& color, float width);

    /// A polyline of a style at a node of its own: (0,1), (1,2) and so on, and back if closed.
    Line& AddPolyline(LineStyle& style, const std::vector<Vector>& points, bool closed = false);
    Line& AddSegment(LineStyle& style, const Vector& start, const Vector& end);

    /// An unlit square of a colour at a height, as large as twice the half.
    void AddSquare(const Color& color, float half, float z);

    /// Takes styles and their lines out of the scene and deletes them.
    void DeleteLines();

    Picture Frame(bool capture = false);

    /// One frame of the scene's line styles alone, cut by the clip planes.
    Picture ClippedFrame();

    /// Where a point is seen; it must be in front of the eye.
    glm::vec2 Project(const Vector& point) const;
    DrawnSegment Project(const Vector& start, const Vector& end) const { return {Project(start), Project(end)}; }

    /// Every pixel shows the background or the segments of a style, by a model of the ribbon:
    /// as wide as the style says to each side, from end to end, nothing beyond. Pixels whose
    /// centre is on the very border are not looked at.
    /// @param color of the line, over the background.
    void ExpectRibbons(const Picture& picture, const std::vector<DrawnSegment>& segments, const LineStyle& style,
                       const glm::vec4& color) const;

    EffectSettingsGuard settings;
    std::unique_ptr<AppContext> context;
    std::unique_ptr<OpenRenderer20> renderer;
    Scene* scene = nullptr;
    std::vector<LineStyle*> styles;
    std::vector<Line*> lines;
};

} // namespace OV::Test
