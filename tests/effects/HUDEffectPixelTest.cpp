#include "tests/overlay/LayerStage.h"

#include "orvane/overlay/Material2D.h"

#include <cstdlib>
#include <cstring>

namespace OV::Test
{

namespace
{

class HUDPixels : public LayerStage
{
protected:
    /// Gives a sprite a texture of two columns, the left one first.
    static void SetColumns(Sprite& sprite, const Pixel& left, const Pixel& right)
    {
        Material2D& material = *sprite.GetMaterial();
        material.pixelWidth = 2;
        material.pixelHeight = 1;
        material.pixels = static_cast<unsigned char*>(std::malloc(8));
        const unsigned char bytes[8] = {
            static_cast<unsigned char>(left.r),  static_cast<unsigned char>(left.g),
            static_cast<unsigned char>(left.b),  static_cast<unsigned char>(left.a),
            static_cast<unsigned char>(right.r), static_cast<unsigned char>(right.g),
            static_cast<unsigned char>(right.b), static_cast<unsigned char>(right.a),
        };
        std::memcpy(material.pixels, bytes, sizeof(bytes));
    }

    // A quarter of each texture's width is one colour alone: sampling is linear and clamped.
    static constexpr PixelRect kPlace{20, 20, 80, 40};
    static constexpr PixelRect kLeft{22, 22, 16, 36};
    static constexpr PixelRect kRight{82, 22, 16, 36};
};

TEST_F(HUDPixels, APlainSpriteIsItsColour)
{
    AddSprite({20, 30, 40, 50}, Color(1, 0, 0, 1));
    const Picture picture = Frame();
    EXPECT_EQ(picture.Count(kRed), 40 * 50);
    ExpectColorInRect(picture, {20, 30, 40, 50}, kRed);
    EXPECT_EQ(picture.Count(kWhite), DefaultSize * DefaultSize - 40 * 50);
}

TEST_F(HUDPixels, AnAlphaOfAHalfMixesWithTheGround)
{
    AddSprite({20, 30, 40, 50}, Color(1, 0, 0, 0.5f));
    const Picture picture = Frame();
    ExpectColorInRect(picture, {20, 30, 40, 50}, {255, 128, 128, picture.At(30, 40).a}, 1);
}

TEST_F(HUDPixels, AnOpacityBelowOneBlendsByTheColoursAlpha)
{
    Sprite& sprite = AddSprite({20, 30, 40, 50}, Color(1, 0, 0, 1));
    sprite.GetMaterial()->SetOpacity(0.25f);
    ExpectColorInRect(Frame(), {20, 30, 40, 50}, kRed);
}

TEST_F(HUDPixels, ATextureIsTimesTheColour)
{
    Sprite& sprite = AddSprite(kPlace, Color(1, 1, 0, 1), 0.0f, true);
    SetColumns(sprite, {255, 255, 255, 255}, {0, 128, 255, 255});
    const Picture picture = Frame();
    ExpectColorInRect(picture, kLeft, {255, 255, 0, 255});
    ExpectColorInRect(picture, kRight, {0, 128, 0, 255});
}

TEST_F(HUDPixels, TheTexturesAlphaMixesWithTheGround)
{
    Sprite& sprite = AddSprite(kPlace, Color(1, 1, 1, 1), 0.0f, true);
    SetColumns(sprite, {0, 0, 255, 0}, {0, 0, 255, 51});
    const Picture picture = Frame();
    ExpectColorInRect(picture, kLeft, kWhite);
    ExpectColorInRect(picture, kRight, {204, 204, 255, picture.At(90, 40).a}, 1);
}

TEST_F(HUDPixels, WithoutTheBlendFlagATextureReplacesTheGround)
{
    Sprite& sprite = AddSprite(kPlace, Color(1, 1, 1, 1), 0.0f, true);
    sprite.GetMaterial()->blend = 0;
    SetColumns(sprite, {10, 20, 30, 0}, {0, 0, 255, 51});
    const Picture picture = Frame();
    ExpectColorInRect(picture, kLeft, {10, 20, 30, 0});
    ExpectColorInRect(picture, kRight, {0, 0, 255, 51});
}

TEST_F(HUDPixels, TheNextSpriteDoesNotInheritBlending)
{
    Sprite& glass = AddSprite({0, 0, 128, 128}, Color(0, 0, 1, 0.5f));
    AddSprite({20, 20, 40, 40}, Color(0, 1, 0, 1), 1.0f);
    ExpectColorInRect(Frame(), {20, 20, 40, 40}, kGreen);
    glass.SetColor(Color(0, 0, 1, 1));
    ExpectColorInRect(Frame(), {80, 80, 40, 40}, kBlue);
}

TEST_F(HUDPixels, AMaterialWithoutDepthWritesHidesNothing)
{
    Sprite& upper = AddSprite({20, 20, 60, 60}, Color(1, 0, 0, 0.0f), 5.0f);
    upper.GetMaterial()->noDepthWrite = true;
    upper.GetMaterial()->transparent = false;
    Layer().ProcessChangedMaterial(upper.GetMaterial());
    AddSprite({20, 20, 60, 60}, Color(0, 0, 1, 1));
    ExpectColorInRect(Frame(), {20, 20, 60, 60}, kBlue);
    upper.GetMaterial()->noDepthWrite = false;
    Layer().MarkDirty();
    ExpectColorInRect(Frame(), {20, 20, 60, 60}, kWhite);
}

} // namespace

} // namespace OV::Test
