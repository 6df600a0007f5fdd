#pragma once

#include "orvane/Export.h"
#include "orvane/base/WatchedPtr.h"
#include "orvane/math/Color.h"
#include "orvane/overlay/Material2D.h"
#include "orvane/overlay/Shape2D.h"
#include "orvane/overlay/Shape2DNode.h"

namespace OV
{

class Scene2D;

/// One thing in a layer: a shape, the node that places it and the material that colours it.
///
/// Owns the shape, and the material if it made it. Layer and sprite may go in any order: with
/// the layer, or when that is cleared, go shape, node and own material, and the sprite is empty
/// from then on. What a host deletes of these on its own reads null afterwards.
class ORVANE_API Sprite
{
public:
    /// Makes a material of its own, named "sprite".
    /// @param scene not null. @param shape taken over.
    Sprite(Scene2D* scene, Shape2D* shape);

    /// @param material stays the caller's; drawn when it is in the layer. Null for none yet: drawn
    /// with the one that SetOverrideMaterial sets.
    Sprite(Material2D* material, Scene2D* scene, Shape2D* shape);
    Sprite(const Sprite&) = delete;
    Sprite& operator=(const Sprite&) = delete;
    virtual ~Sprite();

    void Show(bool visible);
    bool IsVisible();

    /// The colour of the sprite's material, also while another one stands in. White for an
    /// empty sprite.
    Color GetColor();
    void SetColor(const Color& color);

    /// Draws the shape with another material, or with its own again for null.
    /// @param newMaterial stays the caller's.
    void SetOverrideMaterial(Material2D* newMaterial);

    /// Flags the sprite's nodes as left out of hit tests, or not; whoever picks reads it.
    void IgnorePick(bool ignore);

    /// Cuts the sprite to a region of the layer, in pixels, from now on. Only a Rect at one
    /// node is cut.
    void SetClipRegion(int x, int y, int width, int height);

    /// Cuts anew, after the sprite has moved; a sprite wholly outside is hidden.
    /// @return false when it is outside.
    bool UpdateToClipRegion();

    /// Lets the region's right edge be the sprite's, even where the sprite ends before it.
    void ClampToRightClip(bool clamp) { clampToRightClip = clamp; }

    /// Null once the layer is gone, like the node and the shape.
    Material2D* GetMaterial() const { return material; }
    Shape2DNode* GetNode() const { return node; }
    Shape2D* GetShape() const { return shape; }
    bool HasOverrideMaterial() const { return overrideMaterial != nullptr; }

protected:
    WatchedPtr<Material2D> material;
    WatchedPtr<Material2D> overrideMaterial;
    WatchedPtr<Shape2D> shape;
    WatchedPtr<Shape2DNode> node;
    Scene2D* scene = nullptr;
    bool ownsMaterial = false;
    bool clipped = false;    ///< a clip region is set
    bool clipActive = false; ///< the shape is cut now
    bool clampToRightClip = false;
    int clipLeft = 0; ///< the region, pixels
    int clipTop = 0;
    int clipRight = 0;
    int clipBottom = 0;

private:
    friend class Scene2D;

    void Attach();

    /// The layer is about to delete what it holds; what it does not hold of this goes here.
    void OnLayerCleared();
};

} // namespace OV
