#pragma once

#include "orvane/Export.h"
#include "orvane/base/Lifetime.h"
#include "orvane/scene/Mesh.h"

#include <cstdint>

namespace OV
{

/// A mesh with flat geometry, in pixels, that can be moved, resized and asked for points.
class ORVANE_API Shape2D : public Mesh
{
public:
    /// Makes a shape without geometry that the scene owns, unless that is null.
    explicit Shape2D(Scene* ownScene);

    /// As a copy of a mesh: it shares the geometry and has no scene, nodes or material.
    Shape2D(const Shape2D&) = default;
    Shape2D& operator=(const Shape2D&) = default;
    ~Shape2D() override;

    int Type() const override;

    /// Answers no to the tag of Mesh: that is meant.
    bool HasType(int type) override;

    /// Moves every vertex by a distance in pixels. Box, sphere and render data follow, and the
    /// scene is marked dirty. All that share the geometry see it.
    virtual void ShiftX(float distance);
    virtual void ShiftY(float distance);
    virtual void ShiftZ(float distance);

    /// These five do nothing, or say no, in a shape that is neither rectangle nor arrow.
    virtual void GetBounds(float& width, float& height);

    /// @param x, y in the shape's own space.
    virtual bool IsInside(float x, float y);
    virtual void ComputeEdgePoint(float& x, float& y, float angle);
    virtual void Resize(float width, float height);
    virtual void Padding(float padding);
    virtual void ComputeContentArea(int& width, int& height);

    /// For whoever points at this shape and must know when it is gone.
    Lifetime& GetLifetime() { return m_lifetime; }

protected:
    void Shift(const Vector& distance);

    /// Fits box and sphere to the vertices, drops the render data and marks the scene dirty.
    void GeometryChanged();

private:
    friend class Scene2D;
    friend class Sprite;

    /// Where a shape stands among all that was made for layers: shapes, and sprites of shapes
    /// that were made long before.
    struct Age
    {
        std::uint64_t mesh;   ///< sort ID of the last mesh before
        std::uint64_t sprite; ///< number among the sprites; 0: shown by none
    };

    /// A sprite of this shape is made now: the shape counts as made with it.
    void NoteSprite();

    Age m_age{sortID, 0};
    Lifetime m_lifetime;
};

} // namespace OV
