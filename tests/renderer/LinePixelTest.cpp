#include "orvane/effects/SolidLineEffectES20.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/NodeLineStyle.h"
#include "tests/renderer/LineStage.h"
#include "tests/support/ShadingModel.h"

#include <GL/glew.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

namespace OV::Test
{

namespace
{

const Color kRed(1.0f, 0.0f, 0.0f, 1.0f);
const Color kGreen(0.0f, 1.0f, 0.0f, 1.0f);
const glm::vec4 kRedVec(1.0f, 0.0f, 0.0f, 1.0f);
const Pixel kRedPixel = ToPixel(1, 0, 0);
const Pixel kGreenPixel = ToPixel(0, 1, 0);
const Pixel kBluePixel = ToPixel(0, 0, 1);

class LinePixels : public LineStage
{
protected:
    SolidLineEffectES20& Effect()
    {
        auto* effect = renderer->effectCache.GetEffect(EffectCache::SolidLine);
        effect->Release();
        return static_cast<SolidLineEffectES20&>(*effect);
    }

    /// Middle of the picture.
    Pixel Middle(const Picture& picture) const { return picture.At(Width() / 2, Height() / 2); }

    /// A texture of the size of the picture, one colour left of the middle, or below it, and one
    /// beyond.
    unsigned MakeHalves(const std::array<unsigned char, 4>& before, const std::array<unsigned char, 4>& beyond,
                        bool upright = false)
    {
        std::vector<unsigned char> texels;
        for (int y = 0; y < Height(); ++y)
        {
            for (int x = 0; x < Width(); ++x)
            {
                const auto& texel = (upright ? y < Height() / 2 : x < Width() / 2) ? before : beyond;
                texels.insert(texels.end(), texel.begin(), texel.end());
            }
        }
        unsigned texture = 0;
        glGenTextures(1, &texture);
        glBindTexture(GL_TEXTURE_2D, texture);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, Width(), Height(), 0, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
        glBindTexture(GL_TEXTURE_2D, 0);
        return texture;
    }
};

} // namespace

TEST_F(LinePixels, WidthIsInPixelsInAllDirectionsAndBothProjections)
{
    constexpr int directions = 9;
    for (const bool perspective : {false, true})
    {
        if (perspective)
        {
            UsePerspective();
        }
        for (const bool antialias : {false, true})
        {
            for (const float width : {1.0f, 2.0f, 5.0f, 20.0f})
            {
                for (int i = 0; i < directions; ++i)
                {
                    const float angle = static_cast<float>(i) * 6.2831853f / directions;
                    // Sloping in depth, which must not matter.
                    const Vector start(-1.3f, 2.2f, 0.0f);
                    const Vector end(start.x + 32.7f * std::cos(angle), start.y + 32.7f * std::sin(angle), -10.0f);
                    LineStyle& style = AddStyle(kRed, width);
                    style.antialias = antialias;
                    AddSegment(style, start, end);
                    SCOPED_TRACE(std::to_string(perspective) + std::to_string(antialias) + " width " +
                                 std::to_string(width) + " direction " + std::to_string(i));
                    ExpectRibbons(Frame(), {Project(start, end)}, style, kRedVec);
                    DeleteLines();
                    if (HasFailure())
                    {
                        return;
                    }
                }
            }
        }
    }
}

TEST_F(LinePixels, AHorizontalLineIsTwiceItsWidthWithoutAntialias)
{
    LineStyle& style = AddStyle(kRed, 5.0f);
    AddSegment(style, Vector(-20.0f, 0.0f, 0.0f), Vector(20.0f, 0.0f, 0.0f));
    EXPECT_EQ(Frame().Count(kRedPixel), 40 * 10);
}

TEST_F(LinePixels, ThePixelRatioCountsTwice)
{
    LineStyle& style = AddStyle(kRed, 2.0f);
    AddSegment(style, Vector(-20.0f, 0.0f, 0.0f), Vector(20.0f, 0.0f, 0.0f));
    Frame();
    Effect().SetPixelRatio(2.0f);
    EXPECT_EQ(Frame().Count(kRedPixel), 40 * 16);
    Effect().SetPixelRatio(0.5f);
    EXPECT_EQ(Frame().Count(kRedPixel), 40 * 4);
}

TEST_F(LinePixels, ASegmentThroughTheNearPlaneEndsThere)
{
    UsePerspective();
    LineStyle& style = AddStyle(kRed, 3.0f);
    const Vector start(-30.0f, 10.0f, 0.0f);
    const Vector behind(0.5f, -0.3f, 150.0f);
    AddSegment(style, start, behind);
    const float t = (Eye - NearDistance) / 150.0f;
    const Vector clipped(start.x + t * (behind.x - start.x), start.y + t * (behind.y - start.y), Eye - NearDistance);
    ExpectRibbons(Frame(), {Project(start, clipped)}, style, kRedVec);
    DeleteLines();
    // The other way round.
    LineStyle& back = AddStyle(kRed, 3.0f);
    AddSegment(back, behind, start);
    ExpectRibbons(Frame(), {Project(clipped, start)}, back, kRedVec);
}

TEST_F(LinePixels, WhatHasNoLengthOnTheScreenIsNotDrawn)
{
    const struct
    {
        const char* label;
        bool perspective;
        Vector start;
        Vector end;
    } cases[] = {
        {"wholly behind the eye", true, {-10, 0, 110}, {10, 5, 150}},
        {"wholly behind the near plane", true, {-0.1f, 0, 99.5f}, {0.1f, 0, 99.7f}},
        {"wholly behind, orthographic", false, {-10, 0, 110}, {10, 5, 150}},
        {"of no length", true, {5, 5, 0}, {5, 5, 0}},
        {"of no length, orthographic", false, {5, 5, 0}, {5, 5, 0}},
        {"end-on", true, {0, 0, -20}, {0, 0, 20}},
        {"end-on, orthographic", false, {7, 7, -20}, {7, 7, 20}},
        {"end-on through the eye", true, {0, 0, 0}, {0, 0, 150}},
        {"beyond the far plane", false, {-10, 0, -150}, {10, 0, -160}},
    };
    for (const auto& c : cases)
    {
        scene->GetCameraNode()->SetProjection(c.perspective ? CameraNode::Perspective : CameraNode::Orthographic);
        for (const bool rich : {false, true})
        {
            LineStyle& style = AddStyle(kRed, 8.0f);
            style.antialias = rich;
            style.SetDashed(rich);
            AddSegment(style, c.start, c.end);
            EXPECT_EQ(Frame().Count(kBluePixel), Width() * Height()) << c.label << rich;
            DeleteLines();
        }
    }
}

TEST_F(LinePixels, DashesAreMeasuredInPixelsFromTheStartOfEachSegment)
{
    for (const bool perspective : {false, true})
    {
        if (perspective)
        {
            UsePerspective();
        }
        for (const float frequency : {3.0f, 8.0f, 200.0f})
        {
            LineStyle& style = AddStyle(kRed, 2.0f);
            style.SetDashed(true);
            style.SetDashFrequency(frequency);
            const std::vector<Vector> points = {{-50.2f, -40.7f, 0}, {45.1f, -20.3f, -30}, {-10.4f, 50.6f, 10}};
            AddPolyline(style, points);
            SCOPED_TRACE(frequency);
            ExpectRibbons(Frame(), {Project(points[0], points[1]), Project(points[1], points[2])}, style, kRedVec);
            DeleteLines();
        }
    }
}

TEST_F(LinePixels, DashesAndAntialiasGoTogether)
{
    LineStyle& style = AddStyle(kRed, 6.0f);
    style.antialias = true;
    style.SetDashed(true);
    style.SetDashFrequency(10.0f);
    const Vector start(-50.0f, -10.0f, 0.0f);
    const Vector end(40.0f, 30.0f, 0.0f);
    AddSegment(style, start, end);
    ExpectRibbons(Frame(), {Project(start, end)}, style, kRedVec);
}

TEST_F(LinePixels, FogTakesTheColourByDistance)
{
    SkySettings::inst().SetUseFog(true);
    SkySettings::inst().SetHorizonColor(Color(0.0f, 1.0f, 0.0f, 1.0f));
    for (const bool perspective : {false, true})
    {
        scene->GetCameraNode()->SetProjection(perspective ? CameraNode::Perspective : CameraNode::Orthographic);
        // What the snippet takes for the distance of z = 0.
        const float distance = perspective ? FarDistance * (Eye - NearDistance) / (FarDistance - NearDistance)
                                           : (Eye - NearDistance) / (FarDistance - NearDistance);
        SkySettings::inst().SetFogStart(0.0f);
        SkySettings::inst().SetFogEnd(distance * 4.0f);
        LineStyle& style = AddStyle(kRed, 4.0f);
        const Vector start(-30.0f, 5.0f, 0.0f);
        const Vector end(30.0f, 5.0f, 0.0f);
        AddSegment(style, start, end);
        ExpectRibbons(Frame(), {Project(start, end)}, style, {0.75f, 0.25f, 0.0f, 1.0f});
        style.fog = false;
        ExpectRibbons(Frame(), {Project(start, end)}, style, kRedVec);
        style.fog = true;
        SkySettings::inst().SetMonotone(true);
        ExpectRibbons(Frame(), {Project(start, end)}, style, {1.0f, 0.25f, 0.25f, 1.0f});
        SkySettings::inst().SetMonotone(false);
        DeleteLines();
    }
}

TEST_F(LinePixels, FogMixesTheAlphaOfAnAntialiasedLineToo)
{
    SkySettings::inst().SetUseFog(true);
    SkySettings::inst().SetHorizonColor(Color(0.0f, 1.0f, 0.0f, 1.0f));
    SkySettings::inst().SetFogStart(-2.0f);
    SkySettings::inst().SetFogEnd(-1.0f);
    LineStyle& style = AddStyle(kRed, 4.0f);
    style.antialias = true;
    AddSegment(style, Vector(-30.0f, 0.0f, 0.0f), Vector(30.0f, 0.0f, 0.0f));
    EXPECT_EQ(Frame().Count(kGreenPixel), 60 * 8);
}

TEST_F(LinePixels, TheTwoColoursAreAdded)
{
    LineStyle& style = AddStyle(Color(0.25f, 0.5f, 0.0f, 1.0f), 4.0f);
    style.secondColor = Color(0.5f, 0.25f, 0.25f, 1.0f);
    AddSegment(style, Vector(-30.0f, 0.0f, 0.0f), Vector(30.0f, 0.0f, 0.0f));
    ExpectColorInRect(Frame(), Inset({34, 60, 60, 8}), ToPixel(0.75f, 0.75f, 0.25f), 1);
}

TEST_F(LinePixels, TheAlphaOfTheFirstColourIsTheOpacity)
{
    LineStyle& style = AddStyle(Color(1.0f, 0.0f, 0.0f, 0.25f), 4.0f);
    const Vector start(-30.0f, -20.0f, 0.0f);
    const Vector end(30.0f, 20.0f, 0.0f);
    AddSegment(style, start, end);
    const Picture first = Frame();
    ExpectRibbons(first, {Project(start, end)}, style, {1.0f, 0.0f, 0.0f, 0.25f});
    EXPECT_EQ(Frame(), first);
}

TEST_F(LinePixels, DepthRulesInAllFourCombinations)
{
    // A square before the line, a line far behind all after it.
    for (const bool test : {true, false})
    {
        for (const bool write : {true, false})
        {
            LineStyle& style = AddStyle(kRed, 4.0f);
            style.noDepthTest = !test;
            style.noDepthWrite = !write;
            AddSegment(style, Vector(-40.0f, 0.0f, 0.0f), Vector(40.0f, 0.0f, 0.0f));
            LineStyle& later = AddStyle(kGreen, 4.0f);
            AddSegment(later, Vector(30.0f, -40.0f, -50.0f), Vector(30.0f, 40.0f, -50.0f));
            if (scene->GetOptimizedMaterials().empty())
            {
                AddSquare(Color(1.0f, 1.0f, 0.0f, 1.0f), 10.0f, 20.0f);
            }
            const Picture picture = Frame();
            SCOPED_TRACE(std::to_string(test) + std::to_string(write));
            EXPECT_EQ(Middle(picture), test ? ToPixel(1, 1, 0) : kRedPixel);
            EXPECT_EQ(picture.At(40, 64), kRedPixel);
            // GL writes no depth without the test.
            EXPECT_EQ(picture.At(94, 64), test && write ? kRedPixel : kGreenPixel);
            EXPECT_EQ(picture.At(94, 34), kGreenPixel);
            DeleteLines();
        }
    }
}

TEST_F(LinePixels, DepthWritesComeBackAfterTheFirstLineOfAStyle)
{
    LineStyle& style = AddStyle(kRed, 4.0f);
    style.noDepthWrite = true;
    AddSegment(style, Vector(-40.0f, 20.0f, 0.0f), Vector(40.0f, 20.0f, 0.0f));
    AddSegment(style, Vector(-40.0f, -20.0f, 0.0f), Vector(40.0f, -20.0f, 0.0f));
    LineStyle& later = AddStyle(kGreen, 4.0f);
    AddSegment(later, Vector(0.0f, -40.0f, -50.0f), Vector(0.0f, 40.0f, -50.0f));
    const Picture picture = Frame();
    const bool upperFirst = *style.GetLines().begin() == lines[0];
    EXPECT_EQ(picture.At(64, upperFirst ? 84 : 44), kGreenPixel);
    EXPECT_EQ(picture.At(64, upperFirst ? 44 : 84), kRedPixel);
}

TEST_F(LinePixels, TheDepthFlagTurnsTheTestRound)
{
    AddSquare(Color(1.0f, 1.0f, 0.0f, 1.0f), 10.0f, 20.0f);
    LineStyle& style = AddStyle(kRed, 4.0f);
    style.SetFlags(LineStyleFlagDepthLessEqual);
    AddSegment(style, Vector(-40.0f, 0.0f, 0.0f), Vector(40.0f, 0.0f, 0.0f));
    const Picture picture = Frame();
    EXPECT_EQ(Middle(picture), kRedPixel);
    EXPECT_EQ(picture.At(40, 64), kBluePixel);
}

TEST_F(LinePixels, OffsetBringsALineForwardInBothProjections)
{
    constexpr float depth = 5.0f;
    AddSquare(Color(1.0f, 1.0f, 0.0f, 1.0f), 30.0f, 0.0f);
    LineStyle& style = AddStyle(kRed, 4.0f);
    AddSegment(style, Vector(-20.0f, 0.0f, -depth), Vector(20.0f, 0.0f, -depth));
    constexpr float range = FarDistance - NearDistance;
    const float orthographic = depth * 500.0f / range;
    // The shift of z in clip space that makes up for the same depth.
    const float shift = 2.0f * FarDistance * NearDistance / range * depth / Eye;
    const float perspective = shift * 128.0f * 500.0f / range;
    for (const bool isPerspective : {false, true})
    {
        scene->GetCameraNode()->SetProjection(isPerspective ? CameraNode::Perspective : CameraNode::Orthographic);
        const float needed = isPerspective ? perspective : orthographic;
        for (const auto& [share, seen] : {std::pair{0.0f, false}, {0.97f, false}, {1.03f, true}, {-1.0f, false}})
        {
            style.offset = needed * share;
            EXPECT_EQ(Middle(Frame()) == kRedPixel, seen) << isPerspective << ' ' << share;
        }
    }
}

TEST_F(LinePixels, OffsetMovesNothingOnTheScreen)
{
    for (const bool perspective : {false, true})
    {
        scene->GetCameraNode()->SetProjection(perspective ? CameraNode::Perspective : CameraNode::Orthographic);
        LineStyle& style = AddStyle(kRed, 3.0f);
        style.offset = 4.0f;
        const Vector start(-31.0f, -12.0f, -20.0f);
        const Vector end(23.0f, 33.0f, 10.0f);
        AddSegment(style, start, end);
        ExpectRibbons(Frame(), {Project(start, end)}, style, kRedVec);
        DeleteLines();
    }
}

TEST_F(LinePixels, ClipPlanesCutWhereTheStyleIsCut)
{
    EffectES20::AddClipPlane(glm::vec3(1.0f, 0.0f, 0.0f), glm::vec3(10.0f, 0.0f, 0.0f));
    EffectES20::AddClipPlane(glm::vec3(-1.0f, 0.0f, 0.0f), glm::vec3(-20.0f, 0.0f, 0.0f));
    LineStyle& style = AddStyle(kRed, 4.0f);
    AddSegment(style, Vector(-40.0f, 0.0f, 0.0f), Vector(40.0f, 0.0f, 0.0f));
    EXPECT_EQ(ClippedFrame().Count(kRedPixel), 30 * 8);
    style.clipping = false;
    EXPECT_EQ(ClippedFrame().Count(kRedPixel), 80 * 8);
    style.clipping = true;
    EXPECT_EQ(Frame().Count(kRedPixel), 80 * 8) << "the frame's own pass does not clip";
}

TEST_F(LinePixels, ClipPlanesAreInWorldSpace)
{
    EffectES20::AddClipPlane(glm::vec3(1.0f, 0.0f, 0.0f), glm::vec3(10.0f, 0.0f, 0.0f));
    LineStyle& style = AddStyle(kRed, 4.0f);
    Line& line = AddSegment(style, Vector(-40.0f, 0.0f, 0.0f), Vector(40.0f, 0.0f, 0.0f));
    Transform place;
    place.SetPosition(Vector(20.0f, 0.0f, 0.0f));
    line.GetNodes().front()->SetLocal(place);
    EXPECT_EQ(ClippedFrame().Count(kRedPixel), 30 * 8);
}

TEST_F(LinePixels, ASharedRawLineIsDrawnByBothItsLines)
{
    LineStyle& red = AddStyle(kRed, 4.0f);
    LineStyle& green = AddStyle(kGreen, 4.0f);
    Line& first = AddSegment(red, Vector(-20.0f, 0.0f, 0.0f), Vector(20.0f, 0.0f, 0.0f));
    auto* second = new Line(first, scene);
    auto* node = new MeshNode(scene);
    Transform place;
    place.SetPosition(Vector(0.0f, 30.0f, 0.0f));
    node->SetLocal(place);
    scene->GetRoot()->AddChild(node, false);
    second->AddNode(node);
    green.AddLine(second);
    lines.push_back(second);
    for (int frame = 0; frame < 2; ++frame)
    {
        const Picture picture = Frame();
        EXPECT_EQ(picture.Count(kRedPixel), 40 * 8);
        EXPECT_EQ(picture.Count(kGreenPixel), 40 * 8);
        EXPECT_EQ(picture.At(64, 94), kGreenPixel);
    }
    // One of them dies, the other goes on.
    scene->DeleteSubtree(first.GetNodes().front());
    delete &first;
    lines.erase(lines.begin());
    const Picture picture = Frame();
    EXPECT_EQ(picture.Count(kRedPixel), 0);
    EXPECT_EQ(picture.Count(kGreenPixel), 40 * 8);
}

TEST_F(LinePixels, OpenAndClosedPolylinesRunFromPointToPoint)
{
    const std::vector<Vector> points = {{-40.3f, -30.2f, 0}, {41.1f, -33.7f, 0}, {38.4f, 35.5f, 0}, {-44.6f, 30.9f, 0}};
    const auto side = [&](std::size_t i) { return Project(points[i], points[(i + 1) % points.size()]); };
    LineStyle& open = AddStyle(kRed, 2.0f);
    AddPolyline(open, points);
    ExpectRibbons(Frame(), {side(0), side(1), side(2)}, open, kRedVec);
    DeleteLines();
    LineStyle& closed = AddStyle(kRed, 2.0f);
    AddPolyline(closed, points, true);
    ExpectRibbons(Frame(), {side(0), side(1), side(2), side(3)}, closed, kRedVec);
}

TEST_F(LinePixels, ALineOfANodeLineStyleIsDrawnAtItsNodeAlone)
{
    LineStyle& style = AddStyle(kRed, 4.0f);
    Line& line = AddSegment(style, Vector(-20.0f, 0.0f, 0.0f), Vector(20.0f, 0.0f, 0.0f));
    auto* elsewhere = new MeshNode(scene);
    Transform place;
    place.SetPosition(Vector(0.0f, 30.0f, 0.0f));
    elsewhere->SetLocal(place);
    scene->GetRoot()->AddChild(elsewhere, false);
    line.AddNode(elsewhere);
    auto* bound = new NodeLineStyle;
    bound->color = kGreen;
    bound->secondColor = Color(0.0f, 0.0f, 0.0f, 0.0f);
    bound->width = 4.0f;
    bound->antialias = false;
    bound->SetNode(elsewhere);
    scene->AddLineStyle(bound);
    styles.push_back(bound);
    const Picture picture = Frame();
    EXPECT_EQ(picture.Count(kRedPixel), 40 * 8);
    EXPECT_EQ(picture.Count(kGreenPixel), 40 * 8);
    EXPECT_EQ(Middle(picture), kRedPixel);
    EXPECT_EQ(picture.At(64, 94), kGreenPixel);
}

TEST_F(LinePixels, OverAPictureOfIdsOnlyEdgesShow)
{
    const unsigned ids = MakeHalves({1, 0, 0, 255}, {2, 0, 0, 255});
    const unsigned same = MakeHalves({7, 0, 0, 255}, {7, 0, 0, 255});
    const unsigned nearLeft = MakeHalves({0, 0, 0, 255}, {255, 255, 255, 255});
    LineStyle& style = AddStyle(kRed, 4.0f);
    style.overlay = true;
    AddSegment(style, Vector(-40.0f, 0.0f, 0.0f), Vector(40.0f, 0.0f, 0.0f));
    EXPECT_EQ(Frame().Count(kRedPixel), 80 * 8) << "without ids the whole line shows";

    SolidLineEffectES20& effect = Effect();
    effect.SetIdTexture(ids);
    effect.SetGroupTexture(same);
    Picture picture = Frame();
    EXPECT_EQ(picture.Count(kRedPixel), 2 * 8);
    EXPECT_EQ(picture.At(63, 64), kRedPixel);
    EXPECT_EQ(picture.At(64, 64), kRedPixel);

    effect.SetIdTexture(same);
    EXPECT_EQ(Frame().Count(kRedPixel), 0);
    effect.SetGroupTexture(ids);
    EXPECT_EQ(Frame().Count(kRedPixel), 2 * 8) << "groups are edges too";

    // Depth 0 left and 1 right of the edge: one passing neighbour suffices.
    effect.SetDepthTexture(nearLeft);
    EXPECT_EQ(Frame().Count(kRedPixel), 2 * 8);
    effect.SetDepthTexture(same);
    EXPECT_EQ(Frame().Count(kRedPixel), 0) << "7 of 255 lies before the line";

    effect.SetIdTexture(0);
    effect.SetGroupTexture(0);
    effect.SetDepthTexture(0);
    for (const unsigned texture : {ids, same, nearLeft})
    {
        glDeleteTextures(1, &texture);
    }
    for (const unsigned unit : {0u, 1u, 2u})
    {
        glActiveTexture(GL_TEXTURE0 + unit);
        glBindTexture(GL_TEXTURE_2D, 0);
    }
    glActiveTexture(GL_TEXTURE0);
}

TEST_F(LinePixels, OverAPictureOfIdsEachOfFourNeighboursMakesAnEdgeAndLetsDepthPass)
{
    for (const bool upright : {false, true})
    {
        SCOPED_TRACE(upright);
        const unsigned ids = MakeHalves({1, 0, 0, 255}, {0, 1, 0, 255}, upright);
        const unsigned same = MakeHalves({7, 0, 0, 255}, {7, 0, 0, 255}, upright);
        const unsigned nearBefore = MakeHalves({0, 0, 0, 255}, {255, 255, 255, 255}, upright);
        const unsigned nearBeyond = MakeHalves({255, 255, 255, 255}, {0, 0, 0, 255}, upright);
        LineStyle& style = AddStyle(kRed, 4.0f);
        style.overlay = true;
        AddSegment(style, Vector(upright ? 0.0f : -40.0f, upright ? -40.0f : 0.0f, 0.0f),
                   Vector(upright ? 0.0f : 40.0f, upright ? 40.0f : 0.0f, 0.0f));
        Frame();
        SolidLineEffectES20& effect = Effect();
        effect.SetIdTexture(ids);
        effect.SetGroupTexture(same);
        // The pixel before the border has its one odd neighbour beyond it, and the other way round.
        const PixelRect border = upright ? PixelRect{60, 63, 8, 2} : PixelRect{63, 60, 2, 8};
        for (const unsigned depth : {0u, nearBefore, nearBeyond})
        {
            effect.SetDepthTexture(depth);
            const Picture picture = Frame();
            EXPECT_EQ(picture.Count(kRedPixel), 2 * 8) << depth;
            ExpectColorInRect(picture, border, kRedPixel);
        }
        effect.SetIdTexture(0);
        effect.SetGroupTexture(0);
        effect.SetDepthTexture(0);
        DeleteLines();
        for (const unsigned texture : {ids, same, nearBefore, nearBeyond})
        {
            glDeleteTextures(1, &texture);
        }
    }
    for (const unsigned unit : {2u, 1u, 0u})
    {
        glActiveTexture(GL_TEXTURE0 + unit);
        glBindTexture(GL_TEXTURE_2D, 0);
    }
}

TEST_F(LinePixels, InALayerALineStandsInItsPixels)
{
    Scene2D layer(nullptr);
    auto* style = new LineStyle("layer");
    style->color = kRed;
    style->secondColor = Color(0.0f, 0.0f, 0.0f, 0.0f);
    style->width = 3.0f;
    style->antialias = false;
    style->fog = false;
    style->offset = 5.0f;
    layer.AddLineStyle(style);
    auto raw = std::make_shared<RawLine>();
    raw->SetPositionBuffer({Vector(10.0f, 20.0f, 0.0f), Vector(50.0f, 20.0f, 0.0f)});
    raw->SetIndices({0, 1});
    auto* line = new Line(raw, &layer);
    style->AddLine(line);
    auto* node = new MeshNode(&layer);
    layer.GetRoot()->AddChild(node, false);
    line->AddNode(node);
    layer.UpdateGraph(static_cast<float>(Width()), static_cast<float>(Height()));
    renderer->BeginRender(false, Color(0.0f, 0.0f, 1.0f, 1.0f));
    renderer->Render2D(&layer);
    renderer->EndRender();
    const Picture picture = ReadPixels();
    EXPECT_EQ(picture.Count(kRedPixel), 40 * 6);
    ExpectColorInRect(picture, {10, 17, 40, 6}, kRedPixel);
}

/// A closed curve around the middle of the picture, tilted about X.
struct Curve
{
    const char* label;
    float tilt = 0.0f;
    /// Points crowd towards one end of the curve with this power.
    float crowding = 1.0f;
    bool perspective = false;
    bool antialias = false;
};

constexpr float kCurveRadius = 20.0f;

Vector OnCurve(const Curve& curve, float share)
{
    const float angle = 2.0f * 3.14159265f * std::pow(share, curve.crowding);
    return Vector(kCurveRadius * std::cos(angle), kCurveRadius * std::sin(angle) * std::cos(curve.tilt),
                  kCurveRadius * std::sin(angle) * std::sin(curve.tilt));
}

TEST_F(LinePixels, ACurveOfManyPointsIsAsWholeAsOneOfFew)
{
    constexpr float width = 3.0f;
    // Ribbons have no joins: what is open between them on the outside adds up, however many they
    // are, to a disc of the width, 28 pixels; where they are shorter than the steps that corners
    // are rounded to, half as much is lost again. A ring has 750.
    constexpr int mostHoles = 42;
    const Curve curves[] = {
        {"even"},
        {"uneven", 0.0f, 3.0f},
        {"very uneven", 0.0f, 8.0f},
        {"tilted", 1.0f},
        {"in perspective", 0.5f, 1.0f, true},
        {"uneven and tilted in perspective", 1.2f, 2.0f, true},
        {"antialiased", 0.0f, 1.0f, false, true},
        {"antialiased and uneven", 0.7f, 3.0f, true, true},
    };
    for (const Curve& curve : curves)
    {
        scene->GetCameraNode()->SetProjection(curve.perspective ? CameraNode::Perspective : CameraNode::Orthographic);
        std::vector<glm::vec2> model;
        for (int i = 0; i < 4000; ++i)
        {
            const Curve even{"", curve.tilt};
            model.push_back(Project(OnCurve(even, static_cast<float>(i) / 4000.0f)));
        }
        for (const int count : {500, 2000, 9000})
        {
            SCOPED_TRACE(std::string(curve.label) + ", " + std::to_string(count));
            LineStyle& style = AddStyle(kRed, width);
            style.antialias = curve.antialias;
            std::vector<Vector> points;
            for (int i = 0; i < count; ++i)
            {
                points.push_back(OnCurve(curve, static_cast<float>(i) / static_cast<float>(count)));
            }
            AddPolyline(style, points, true);
            const Picture picture = Frame();
            DeleteLines();
            int holes = 0;
            int strays = 0;
            for (int y = 0; y < Height(); ++y)
            {
                for (int x = 0; x < Width(); ++x)
                {
                    const glm::vec2 pixel(static_cast<float>(x) + 0.5f, static_cast<float>(y) + 0.5f);
                    float distance = 1000.0f;
                    for (const glm::vec2& point : model)
                    {
                        distance = std::min(distance, glm::length(pixel - point));
                    }
                    const bool drawn = picture.At(x, y) != kBluePixel;
                    holes += distance < width - 0.8f && !drawn ? 1 : 0;
                    strays += distance > width + 0.8f && drawn ? 1 : 0;
                }
            }
            EXPECT_LE(holes, mostHoles);
            EXPECT_EQ(strays, 0);
        }
    }
}

TEST_F(LinePixels, AFrameThatEndsWithALineLeavesBlendingOff)
{
    AddSegment(AddStyle(kRed, 3.0f), Vector(-40.0f, 0.0f, 0.0f), Vector(40.0f, 10.0f, 0.0f));
    for (const bool capture : {false, true})
    {
        Frame(capture);
        EXPECT_FALSE(glIsEnabled(GL_BLEND)) << capture;
    }
    Scene2D& layer = *context->GetContext()->GetForeground2D();
    auto* const style = new LineStyle("over all");
    layer.AddLineStyle(style);
    auto raw = std::make_shared<RawLine>();
    raw->SetPositionBuffer({Vector(10.0f, 10.0f, 0.0f), Vector(60.0f, 20.0f, 0.0f)});
    raw->SetIndices({0, 1});
    auto* const line = new Line(raw, &layer);
    auto* const node = new MeshNode(&layer);
    layer.GetRoot()->AddChild(node, false);
    line->AddNode(node);
    style->AddLine(line);
    Frame();
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
}

} // namespace OV::Test
