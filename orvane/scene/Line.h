#pragma once

#include "orvane/scene/Mesh.h"

namespace OV
{

class LineStyle;
class RawLine;

/// Lines of a width in pixels. They are a mesh with a style in place of a material, and stand
/// in the lines of their scene, not in its meshes.
class ORVANE_API Line : public Mesh
{
public:
    /// Makes a line that the scene owns, unless that is null. Given a null RawLine it gets an
    /// empty one.
    Line(const std::shared_ptr<RawLine>& geometry, Scene* ownScene);

    /// Makes a new line over the RawLine of the other; nothing else of it is taken.
    Line(const Line& other, Scene* ownScene);

    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;

    /// Leaves scene and style.
    ~Line() override;

    int Type() const override;
    bool HasType(int type) override;

    std::shared_ptr<RawLine> GetRawLine() const;

    LineStyle* GetStyle() const
    {
        return style;
    }

protected:
    LineStyle* style = nullptr;

private:
    friend class LineStyle;
};

} // namespace OV
