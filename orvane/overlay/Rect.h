#pragma once

#include "orvane/overlay/Shape2D.h"

namespace OV
{

class Scene2D;

/// A rectangle, with or without a texture, that can be bent into any four corners and cut
/// without stretching its texture.
///
/// It has four vertices: lower left, lower right, upper right, upper left. Its box is kept
/// apart from them: a cut moves the vertices and leaves the box.
class ORVANE_API Rect : public Shape2D
{
public:
    /// From the origin to the right and upward, in pixels.
    /// @param hasTexture gives it texture coordinates, the whole picture.
    Rect(Scene2D* scene, float width, float height, bool hasTexture);
    Rect(const Rect&) = default;
    Rect& operator=(const Rect&) = default;
    ~Rect() override;

    int Type() const override;
    bool HasType(int type) override;
    void ShiftX(float distance) override;
    void ShiftY(float distance) override;

    /// Whether the point lies between the first three vertices, as if they stood upright, or
    /// in the pick padding around them. The edges are inside.
    bool IsInside(float x, float y) override;

    /// Makes it start at the origin again, with all its corners. A cut of the texture stays until
    /// the next Clip.
    void Resize(float width, float height) override;

    /// Cuts from the edges of the box, in pixels, each 0 or more; zeros restore all of it.
    ///
    /// A box without width or height divides by zero. Without texture coordinates only the
    /// vertices move.
    void Clip(float left, float top, float right, float bottom);

    /// Sets the four corners; the box becomes theirs.
    void SetCorners(float x0, float y0, float z0, float x1, float y1, float z1, float x2, float y2, float z2,
                    float x3, float y3, float z3);

    /// Sets u, then v of the four corners. Drops no render data: the caller does. Nothing
    /// happens to a rectangle without a texture.
    void SetTextureCoordinates(float u0, float v0, float u1, float v1, float u2, float v2, float u3, float v3);

    float GetMinX() const { return minX; }
    float GetMaxX() const { return maxX; }
    float GetMinY() const { return minY; }
    float GetMaxY() const { return maxY; }

protected:
    friend class Text;

    float minX = 0.0f;
    float maxX;
    float maxY;
    float minY = 0.0f;
    float pickPadding = 0.0f; ///< grows what IsInside accepts on all sides, pixels
    float pickLeft = 0.0f;    ///< on one side alone, likewise below
    float pickRight = 0.0f;
    float pickTop = 0.0f;
    float pickBottom = 0.0f;
    float fullU = 0.0f; ///< the texture range before the first cut
    float fullV = 0.0f;
    bool flipV = false; ///< the V axis of the texture runs downward
    bool uvPristine = true; ///< fullU and fullV aren't taken yet

private:
    /// Writes nothing when there are fewer than four vertices.
    void WriteCorners(const Vector (&corners)[4]);
    void ClipTexture(float left, float top, float right, float bottom);
};

} // namespace OV
