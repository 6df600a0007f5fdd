#pragma once

#include "orvane/Export.h"
#include "orvane/base/WatchedPtr.h"
#include "orvane/math/Color.h"
#include "orvane/overlay/Material2D.h"
#include "orvane/overlay/Rect.h"

#include <string>

namespace OV
{

struct FilePath;
class Scene2D;
class Shape2DNode;

/// A string in a layer: a rectangle with the text as its texture, at a node, and backdrops
/// behind it.
///
/// Sizes are those of the layer, whose unit is a pixel only while the renderer's device pixel
/// ratio is 1: with supersampling, which raises the ratio to 2, a text comes out twice as large.
///
/// The texture is made when the text is first drawn; its size is known at once, through the
/// measuring callback. Owns rectangle, node, material and the backdrops; a backdrop's material
/// that shows something else too is left to the layer. Layer and text may go in any order: with
/// the layer, or when that is cleared, goes all that, and the text is empty from then on. What a
/// host deletes of these on its own reads null afterwards.
class ORVANE_API Text
{
public:
    /// Gives the size in pixels of a text and of its texture.
    using SizeCallback = void (*)(const std::string& font, int fontSize, const std::string& text, int maxWidth,
                                  int& width, int& height, int& textureWidth, int& textureHeight);

    /// Stands at the layer's origin, flagged as left out of hit tests.
    /// @param scene not null.
    /// @param font, text in the encoding of the C locale in force. @param fontSize em in pixels;
    /// drawn at 12 at least, and smaller where the texture would pass 1024 pixels.
    /// @param centerX, centerY whether the box is centred on the node, or starts there.
    /// @param maxWidth in pixels; below 1: no limit.
    Text(const std::string& font, int fontSize, const std::string& text, Scene2D* scene, bool centerX,
         bool centerY, int maxWidth);
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    ~Text();

    /// Replaces the string; box and texture follow. Where a clip region is set, UpdateToClipRegion
    /// cuts the new box. GL, if the text was drawn before.
    void Update(const std::string& text);

    /// Empty without a material.
    std::string GetText();

    /// The colour of the letters, Material2D::color of the text's material: what a material
    /// inherits, SetDiffuse for one, does nothing to a text. Its alpha is the opacity. White at
    /// first, and white for an empty text.
    Color GetColor() const;

    /// Marks the layer dirty. Nothing for an empty text.
    void SetColor(const Color& color);

    /// Puts a plain rectangle 0.1 behind the text, moved by x and y from the node.
    void AddBackdrop(const Color& color, int width, int height, int x, int y);

    /// Puts three pictures 0.1 behind the text: two caps and a middle that is stretched to
    /// centerWidth, or to the text's width when that is negative.
    /// @param path, left, center, right directory and file names. @param y shift upward.
    /// @param alpha opacity, 0 to 1.
    void AddBackdrop(const FilePath& path, const std::string& left, const std::string& center,
                     const std::string& right, int leftWidth, int rightWidth, int height, int y, float alpha,
                     int centerWidth);

    /// The same with equal caps and the middle as wide as the text.
    void AddBackdrop(const FilePath& path, const std::string& left, const std::string& center,
                     const std::string& right, int capWidth, int height, int y, float alpha);

    /// Sets how texts are measured, for all of them; null: not at all. The engine's texture
    /// loader is set from the start.
    static void AddSizeCallback(SizeCallback callback);

    /// Measures a text as a Text would. Without a callback: 0 by 0, with a texture of 1 by 1.
    static void GetTextSize(const std::string& font, int fontSize, const std::string& text, int maxWidth,
                            int& width, int& height, int& textureWidth, int& textureHeight);

    /// The node of that index; null when there is none.
    Shape2DNode* GetInstance(int index);

    /// Hides every node, or shows those that the clip region does not hide.
    void Show(bool show);

    /// Flags the text's nodes as left out of hit tests, or not; whoever picks reads it.
    void IgnorePick(bool ignore);

    /// Cuts the text to a region of the layer, in pixels, from now on.
    void SetClipRegion(int x, int y, int width, int height);

    /// Cuts anew, after the text has moved; a text wholly outside is hidden, and one inside is
    /// shown, even if Show hid it. Nothing happens unless the text has exactly one node.
    /// @return false when it is outside.
    bool UpdateToClipRegion();

    /// The box, from the node, in pixels.
    int GetLeft() const { return left; }
    int GetRight() const { return right; }
    int GetTop() const { return top; }
    int GetBottom() const { return bottom; }

    /// The size asked for; the material has the one that is drawn.
    int GetFontSize() const { return fontSize; }

    /// Null once the layer is gone, like all below.
    Material2D* GetMaterial() const { return material; }
    Scene2D* GetScene2D() const { return scene; }

    /// Null until a backdrop is added; a plain one is the left one.
    Rect* GetLeftBackdrop() const { return leftBackdrop; }
    Rect* GetCenterBackdrop() const { return centerBackdrop; }
    Rect* GetRightBackdrop() const { return rightBackdrop; }

protected:
    /// Chooses the size that the texture is drawn with, and measures again where that is not
    /// the one asked for.
    void LimitFontSize(int& width, int& height, int& textureWidth, int& textureHeight);

    WatchedPtr<Material2D> material;
    WatchedPtr<Rect> rect;
    Scene2D* scene = nullptr;
    int fontSize = 0;
    bool centerX = false;
    bool centerY = false;
    WatchedPtr<Material2D> leftMaterial;
    WatchedPtr<Material2D> centerMaterial;
    WatchedPtr<Material2D> rightMaterial;
    WatchedPtr<Rect> leftBackdrop;
    WatchedPtr<Rect> centerBackdrop;
    WatchedPtr<Rect> rightBackdrop;
    int left = 0;
    int right = 0;
    int bottom = 0;
    int top = 0;
    int width = 0; ///< as measured at the size asked for
    int height = 0;
    bool clipped = false;    ///< a clip region is set
    bool clipActive = false; ///< the rectangle is cut or hidden now
    int clipLeft = 0;        ///< the region, pixels
    int clipTop = 0;
    int clipRight = 0;
    int clipBottom = 0;

private:
    friend class Scene2D;

    void Layout();
    void SetBox();
    void SetTextureRange(int textWidth, int textHeight, int textureWidth, int textureHeight);
    Material2D* NewBackdropMaterial(const char* name, const Color& color);
    void PlaceBackdrop(Rect* backdrop, Material2D* backdropMaterial, float y);
    static void DeleteBackdrop(Rect* backdrop, Material2D* backdropMaterial);

    /// Whether nothing of the text has been deleted behind its back.
    bool IsWhole() const { return scene && material && rect; }

    /// The layer is about to delete what it holds: nothing of the text is left.
    void OnLayerCleared();
};

} // namespace OV
