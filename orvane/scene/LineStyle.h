#pragma once

#include "orvane/Export.h"
#include "orvane/base/Lifetime.h"
#include "orvane/base/Object.h"
#include "orvane/math/Color.h"
#include "orvane/scene/BitSet.h"
#include "orvane/scene/NodeType.h"

#include <memory>
#include <set>
#include <string>

namespace OV
{

class Line;
class Scene;

/// What the engine reads of a line style; other bits have no effect.
enum LineStyleFlags : unsigned
{
    /// Asks for a strip. The ribbons are drawn as triangles either way.
    LineStyleFlagStrip = 0x01,
    /// Turns the depth test round: drawn is what lies behind. GL_GREATER, else GL_LEQUAL.
    LineStyleFlagDepthLessEqual = 0x02,
};
ORVANE_BIT_SET(LineStyleFlags)

/// Look of lines and the set of lines that have it.
///
/// The fields are read by the line effect as they stand; no setter marks the scene dirty. The
/// two colours are added, and the second starts white: for its own colour to show, a host
/// blackens secondColor.
class ORVANE_API LineStyle
{
public:
    explicit LineStyle(const std::string& styleName);

    LineStyle(const LineStyle&) = delete;
    LineStyle& operator=(const LineStyle&) = delete;

    /// Leaves its scene. The lines stay alive, without a style.
    virtual ~LineStyle();

    virtual int Type() const;
    virtual bool HasType(int type);

    const std::string& GetName() const
    {
        return name;
    }

    /// LineStyleFlags.
    unsigned int GetFlags() const
    {
        return flags;
    }

    /// Sets bits; no operation clears them.
    void SetFlags(LineStyleFlags bits)
    {
        flags |= bits;
    }

    /// Ordered by address.
    const std::set<Line*>& GetLines() const
    {
        return lines;
    }

    Scene* GetScene() const
    {
        return scene;
    }

    bool IsDashed() const
    {
        return dashed;
    }

    void SetDashed(bool isDashed)
    {
        dashed = isDashed;
    }

    float GetDashFrequency() const
    {
        return dashFrequency;
    }

    void SetDashFrequency(float frequency)
    {
        dashFrequency = frequency;
    }

    bool IsClippingEnabled() const
    {
        return clipping;
    }

    /// Gives the line this style; it leaves its present one first.
    /// @return false for null and for a line that has it already.
    bool AddLine(Line* line);

    /// @return false for a line that does not have this style.
    bool RemoveLine(Line* line);

    /// For whoever points at this style and must know when it is gone.
    Lifetime& GetLifetime()
    {
        return m_lifetime;
    }

    Object* GetRenderData() const
    {
        return renderData.get();
    }

    /// Takes the object over and deletes the present one, even where they are the same: then
    /// none is left.
    void SetRenderData(Object* data);

    /// Deletes the render data; the next frame makes them anew.
    void Suspend();

    /// Does nothing.
    void Resume();

    Color color = Color(1.0f, 1.0f, 1.0f, 1.0f);
    /// Added to color in every pass but the ambient one; its alpha does not count.
    Color secondColor = Color(1.0f, 1.0f, 1.0f, 1.0f);
    /// In pixels, to each side of the line. With antialias the line fades to nothing over them, and
    /// so looks as wide as this in all.
    float width = 1.0f;
    unsigned int flags = 0;
    /// Shift towards the camera, in 1/500 of its depth range. Only an orthographic view shows it as
    /// that; in perspective it is a number to tune.
    float offset = 0.0f;
    bool dashed = false;
    /// Length of a dash, and of the gap after it, in pixels.
    float dashFrequency = 1.0f;
    bool antialias = true;
    bool noDepthTest = false;
    bool noDepthWrite = false;
    bool fog = true;
    bool overlay = false;
    bool clipping = true;
    std::string name;

protected:
    /// A style without a name, and with a dash frequency of 0.
    LineStyle();

    std::set<Line*> lines;
    std::unique_ptr<Object> renderData;
    Scene* scene = nullptr;

private:
    friend class Scene;

    Lifetime m_lifetime;
};

} // namespace OV
