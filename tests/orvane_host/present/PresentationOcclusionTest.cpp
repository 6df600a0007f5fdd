#include "orvane/math/Quaternion.h"
#include "orvane/math/Transform.h"
#include "orvane/renderer/AAMode.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"
#include "tests/orvane_host/present/PresentationStage.h"
#include "tests/support/OcclusionModel.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>
#include <optional>

namespace OV::Test
{

namespace
{

using Host::EdgeLook;
using Host::Identity;

const Color kGrey(0.5f, 0.5f, 0.5f);

/// Turned about the x axis by an angle in radians.
Transform Tilted(float angle, const Vector& position)
{
    Quaternion turn;
    turn.x = std::sin(angle / 2.0f);
    turn.w = std::cos(angle / 2.0f);
    Transform place;
    place.SetRotation(turn);
    place.SetPosition(position);
    return place;
}

class PresentationOcclusion : public FlatStage
{
protected:
    using FlatStage::FlatStage;

    /// Looks at the middle of the picture, as high as before at the distance of the target.
    void UsePerspective(float distance)
    {
        CameraNode& camera = Camera();
        camera.SetProjection(CameraNode::Perspective);
        camera.SetFOV(std::atan(static_cast<float>(Height()) / 2.0f / distance));
        camera.SetDistanceToTarget(distance);
        camera.SetNearFar(10.0f, 3.0f * distance);
        Transform place;
        place.SetPosition(Vector(static_cast<float>(Width()) / 2.0f, static_cast<float>(Height()) / 2.0f, distance));
        camera.SetLocal(place);
    }

    Picture DrawOcclusion(bool capture = false)
    {
        renderer->ShowAmbientOcclusion(true);
        Picture picture = Draw(capture);
        renderer->ShowAmbientOcclusion(false);
        return picture;
    }

    /// Depths of the one depth texture that there is, bottom row first.
    static std::vector<float> DepthPicture(int width, int height)
    {
        std::vector<float> depths;
        int found = 0;
        const GLObjects objects = GLState::CaptureObjects();
        for (const unsigned int name : objects.at("texture"))
        {
            GLint bits = 0;
            GLint actualWidth = 0;
            GLint actualHeight = 0;
            glBindTexture(GL_TEXTURE_2D, name);
            glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_DEPTH_SIZE, &bits);
            glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &actualWidth);
            glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &actualHeight);
            if (bits > 0)
            {
                ++found;
                EXPECT_EQ(actualWidth, width);
                EXPECT_EQ(actualHeight, height);
                depths.resize(static_cast<std::size_t>(actualWidth) * static_cast<std::size_t>(actualHeight));
                glGetTexImage(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT, GL_FLOAT, depths.data());
            }
            glBindTexture(GL_TEXTURE_2D, 0);
        }
        EXPECT_EQ(found, 1) << "there is one depth picture";
        return depths;
    }

    /// How many pictures of depth are looked up between the middles of their pixels.
    static int SmoothDepthTextures()
    {
        int count = 0;
        const GLObjects objects = GLState::CaptureObjects();
        for (const unsigned int name : objects.at("texture"))
        {
            GLint bits = 0;
            GLint filter = 0;
            glBindTexture(GL_TEXTURE_2D, name);
            glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_DEPTH_SIZE, &bits);
            glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &filter);
            glBindTexture(GL_TEXTURE_2D, 0);
            count += bits > 0 && filter == GL_LINEAR ? 1 : 0;
        }
        return count;
    }

    /// Near and far as the shader is told.
    struct Range
    {
        double zNear;
        double zFar;
    };

    /// Expects the model on the picture of depth wherever something of the scene is, and the plain
    /// picture elsewhere.
    void ExpectModel(const Range& range)
    {
        const Picture plain = Draw();
        const Picture picture = DrawOcclusion();
        OcclusionModel model(Width(), Height());
        model.linear = true;
        model.zNear = range.zNear;
        model.zFar = range.zFar;
        model.depths = DepthPicture(Width(), Height());
        ASSERT_EQ(model.depths.size(), static_cast<std::size_t>(Width() * Height()));
        int worst = 0;
        int darkened = 0;
        for (int y = 0; y < Height(); ++y)
        {
            for (int x = 0; x < Width(); ++x)
            {
                const Pixel before = plain.At(x, y);
                Pixel expected = before;
                if (before != Ground)
                {
                    const glm::dvec3 color = *model.Shade(x, y, glm::dvec3(before.r, before.g, before.b) / 255.0);
                    expected = ToPixel(static_cast<float>(color.r), static_cast<float>(color.g),
                                       static_cast<float>(color.b));
                    darkened += before.g - expected.g > 5 ? 1 : 0;
                    worst = std::max(worst, ChannelDifference(picture.At(x, y), expected));
                }
                else
                {
                    ASSERT_EQ(picture.At(x, y), before) << "the ground at " << x << ", " << y;
                }
            }
        }
        EXPECT_LE(worst, 3);
        EXPECT_GT(darkened, 50);
    }

    /// Expects the picture of depth, which the last frame has drawn, to have a depth at a pixel.
    void ExpectDepth(int x, int y, double expected) const
    {
        const std::vector<float> depths = DepthPicture(Width(), Height());
        EXPECT_NEAR(double(depths.at(static_cast<std::size_t>(y * Width() + x))), expected, 1e-5);
    }

    /// Depth of a distance, as perspective puts it.
    static double DepthOf(double distance, const Range& range)
    {
        return range.zFar * (1.0 - range.zNear / distance) / (range.zFar - range.zNear);
    }

    /// Share of its light that a pixel keeps.
    static double Kept(const Picture& plain, const Picture& picture, int x, int y)
    {
        return static_cast<double>(picture.At(x, y).g) / plain.At(x, y).g;
    }
};

} // namespace

TEST_F(PresentationOcclusion, OfAStepInPerspectiveFollowsTheModelOnThePictureOfDepth)
{
    UsePerspective(100.0f);
    AddRect(kGrey, {10, 5, 40, 50}, 0.0f, 1);
    AddRect(Color(0.7f, 0.5f, 0.3f), {30, 15, 50, 30}, 8.0f, 2);
    // As far as occlusion sees: 12 times the distance of the target.
    ExpectModel({10.0, 1200.0});
    ExpectDepth(15, 10, DepthOf(100.0, {10.0, 1200.0}));
    ExpectDepth(50, 30, DepthOf(92.0, {10.0, 1200.0}));
    ExpectDepth(95, 63, 1.0);
}

TEST_F(PresentationOcclusion, OfACornerOfSlantedFacesFollowsTheModel)
{
    UsePerspective(100.0f);
    AddRect(kGrey, {-48, -20, 96, 20}, 0.0f, 1).SetLocal(Tilted(-0.8f, Vector(48, 32, 0)));
    AddRect(kGrey, {-48, 0, 96, 20}, 0.0f, 1).SetLocal(Tilted(0.8f, Vector(48, 32, 0)));
    ExpectModel({10.0, 1200.0});
}

TEST_F(PresentationOcclusion, ReachesAsFarAsTheCameraSees)
{
    UsePerspective(50.0f);
    Camera().SetNearFar(10.0f, 2000.0f);
    AddRect(kGrey, {10, 5, 40, 50}, 0.0f, 1);
    AddRect(kGrey, {30, 15, 50, 30}, 8.0f, 2);
    ExpectModel({10.0, 2000.0});
    ExpectDepth(15, 10, DepthOf(50.0, {10.0, 2000.0}));
}

TEST_F(PresentationOcclusion, OfAStepWithoutPerspectiveFollowsTheModel)
{
    AddRect(kGrey, {10, 5, 40, 50}, 0.0f, 1);
    AddRect(Color(0.7f, 0.5f, 0.3f), {30, 15, 50, 30}, 8.0f, 2);
    ExpectModel({0.25, 1.0});
    // Twice the depth of the view is drawn.
    ExpectDepth(15, 10, (100.0 - 1.0) / 398.0);
    ExpectDepth(50, 30, (92.0 - 1.0) / 398.0);
}

TEST_F(PresentationOcclusion, DarkensAnInnerCornerAndHardlyAFlatFace)
{
    UsePerspective(100.0f);
    AddRect(kGrey, {-48, -20, 96, 20}, 0.0f, 1).SetLocal(Tilted(-0.8f, Vector(48, 32, 0)));
    AddRect(kGrey, {-48, 0, 96, 20}, 0.0f, 1).SetLocal(Tilted(0.8f, Vector(48, 32, 0)));
    const Picture plain = Draw();
    const Picture picture = DrawOcclusion();
    const double corner = std::min(Kept(plain, picture, 48, 31), Kept(plain, picture, 48, 32));
    const double flat = Kept(plain, picture, 48, 22);
    EXPECT_LT(corner, flat - 0.1);
    EXPECT_GT(flat, 0.75) << "a slanted face loses about a fifth, as the effect is";
}

TEST_F(PresentationOcclusion, LeavesBackgroundAndSkyAsTheyWere)
{
    AddRect(kGrey, {10, 5, 40, 50}, 0.0f, 1);
    AddRect(kGrey, {30, 15, 20, 30}, 8.0f, 2);
    const Picture identifiers = DrawIdentifiers();
    for (const bool sky : {false, true})
    {
        renderer->ShowSky(sky);
        for (const int samples : {0, 4})
        {
            UseFramebuffer(Width(), Height(), samples);
            const Picture plain = Draw();
            const Picture picture = DrawOcclusion();
            EXPECT_NE(picture, plain);
            for (int y = 0; y < Height(); ++y)
            {
                for (int x = 0; x < Width(); ++x)
                {
                    const bool isBackground = identifiers.At(x, y) == Pixel{0, 0, 0, 255};
                    ASSERT_TRUE(!isBackground || picture.At(x, y) == plain.At(x, y))
                        << x << ", " << y << (sky ? " of the sky" : " of the background") << ", samples " << samples;
                }
            }
        }
    }
}

TEST_F(PresentationOcclusion, KeepsTheAlphaOfThePicture)
{
    app.GetContext()->SetBackgroundColor(Color(0.0f, 0.0f, 1.0f, 0.25f));
    // Blended, so that the alpha of the picture is neither that of the ground nor whole.
    AddRect(Color(0.5f, 0.5f, 0.5f, 0.5f), {10, 5, 40, 50}, 0.0f, 1);
    AddRect(kGrey, {30, 15, 50, 30}, 8.0f, 2);
    for (const int samples : {0, 4})
    {
        UseFramebuffer(Width(), Height(), samples);
        const Picture plain = Draw();
        const Picture picture = DrawOcclusion();
        for (int y = 0; y < Height(); ++y)
        {
            for (int x = 0; x < Width(); ++x)
            {
                ASSERT_EQ(picture.At(x, y).a, plain.At(x, y).a) << x << ", " << y;
            }
        }
        EXPECT_NE(plain.At(15, 10).a, 255);
    }
}

TEST_F(PresentationOcclusion, WithSeveralSamplesDarkensAsWithOne)
{
    AddRect(kGrey, {10, 5, 40, 50}, 0.0f, 1);
    AddRect(kGrey, {30, 15, 50, 30}, 8.0f, 2);
    const Picture one = DrawOcclusion();
    UseFramebuffer(Width(), Height(), 4);
    // All rims lie between pixels, so that the samples of a pixel agree.
    EXPECT_LE(Compare(DrawOcclusion(), one).largestChannelDifference, 1);
}

TEST_F(PresentationOcclusion, OfACaptureIsThatOfThePicture)
{
    AddRect(kGrey, {10, 5, 40, 50}, 0.0f, 1);
    AddRect(kGrey, {30, 15, 50, 30}, 8.0f, 2);
    const Picture direct = DrawOcclusion();
    EXPECT_LE(Compare(DrawOcclusion(true), direct).largestChannelDifference, 1);
    renderer->SetAAMode(AAModeSupersampling);
    // Of twice the size the samples lie closer to each other; the reach stays.
    const Picture fine = DrawOcclusion(true);
    double sum = 0.0;
    for (int y = 0; y < Height(); ++y)
    {
        for (int x = 0; x < Width(); ++x)
        {
            sum += std::abs(fine.At(x, y).g - direct.At(x, y).g);
        }
    }
    EXPECT_LT(sum / (Width() * Height()), 2.0);
    for (int x = 20; x < 34; ++x)
    {
        EXPECT_NEAR(fine.At(x, 30).g, direct.At(x, 30).g, 5) << "across the step at " << x;
    }
}

TEST_F(PresentationOcclusion, LiesBelowEdges)
{
    AddRect(kGrey, {10, 5, 40, 50}, 0.0f, 1);
    AddRect(kGrey, {30, 15, 50, 30}, 8.0f, 2);
    EdgeLook look;
    look.weight = 1.0f;
    look.color = Color(1.0f, 0.0f, 0.0f);
    renderer->SetEdges(look);
    const Pixel whole{255, 0, 0, 255};
    const int corners = Draw().Count(whole);
    EXPECT_GT(corners, 2);
    EXPECT_EQ(DrawOcclusion().Count(whole), corners) << "edges are not darkened";
}

TEST_F(PresentationOcclusion, IsTheSameWhereItsDepthComesWithIdentifiers)
{
    AddRect(kGrey, {10, 5, 40, 50}, 0.0f, 1);
    AddRect(kGrey, {30, 15, 50, 30}, 8.0f, 2);
    for (const bool perspective : {false, true})
    {
        if (perspective)
        {
            UsePerspective(100.0f);
        }
        renderer->SetEdges(std::nullopt);
        const Picture plain = Draw();
        const Picture alone = DrawOcclusion();
        EXPECT_NE(alone, plain);
        for (const Identity identity : {Identity::Object, Identity::Group})
        {
            EdgeLook unseen;
            unseen.weight = 0.0f;
            unseen.identity = identity;
            renderer->SetEdges(unseen);
            EXPECT_EQ(DrawOcclusion(), alone) << perspective << ' ' << static_cast<int>(identity);
        }
    }
}

TEST_F(PresentationOcclusion, LeavesNoTraceInTheDepthThatOverlaidLinesGoBy)
{
    AddRect(kGrey, {10, 5, 40, 50}, 0.0f, 1);
    EdgeLook look;
    look.identity = Identity::Object;
    renderer->SetEdges(look);
    DrawOcclusion();
    EXPECT_EQ(SmoothDepthTextures(), 1) << "without steps between pixels";
    renderer->OverlayLines(true);
    Draw();
    EXPECT_EQ(SmoothDepthTextures(), 0);
    DrawOcclusion();
    EXPECT_EQ(SmoothDepthTextures(), 1) << "that of groups";
}

TEST_F(PresentationOcclusion, LeavesLinesBehindSurfacesHidden)
{
    UsePerspective(100.0f);
    AddRect(kGrey, {20, 10, 30, 30}, 0.0f, 1);
    AddRect(kGrey, {50, 10, 30, 30}, 0.0f, 2);
    // An overlaid line tests depth by the identifiers, which know nothing of occlusion's range.
    AddLine(Vector(50, 12, -5), Vector(50, 38, -5), Color(0, 1, 0), 3.0f).overlay = true;
    renderer->OverlayLines(true);
    const auto countGreen = [](const Picture& picture) {
        int count = 0;
        for (int y = 0; y < picture.GetHeight(); ++y)
        {
            for (int x = 0; x < picture.GetWidth(); ++x)
            {
                const Pixel pixel = picture.At(x, y);
                count += pixel.g > 2 * (pixel.r + pixel.b) ? 1 : 0;
            }
        }
        return count;
    };
    EXPECT_EQ(countGreen(Draw()), 0);
    EXPECT_EQ(countGreen(DrawOcclusion()), 0);
    renderer->OverlayLines(false);
    renderer->ShowSurfaces(false);
    EXPECT_GT(countGreen(DrawOcclusion()), 50) << "there is a line";
}

TEST_F(PresentationOcclusion, DarkensNoLines)
{
    AddRect(kGrey, {10, 5, 40, 50}, 0.0f, 1);
    AddRect(kGrey, {30, 15, 50, 30}, 8.0f, 2);
    AddLine(Vector(10, 20, 20), Vector(80, 20, 20), kGrey, 2.0f);
    renderer->ShowSurfaces(false);
    const Picture plain = Draw();
    EXPECT_EQ(plain.At(40, 20), (Pixel{128, 128, 128, 255}));
    ExpectSame(DrawOcclusion(), plain, "lines alone");
    renderer->ShowSurfaces(true);
    EXPECT_EQ(DrawOcclusion().At(31, 20), (Pixel{128, 128, 128, 255})) << "in a corner";
}

TEST_F(PresentationOcclusion, LeavesTheCameraAsItWas)
{
    AddRect(kGrey, {10, 5, 40, 50}, 0.0f, 1);
    for (const bool perspective : {false, true})
    {
        if (perspective)
        {
            UsePerspective(100.0f);
        }
        float nearDistance = 0.0f;
        float farDistance = 0.0f;
        Camera().GetNearFar(nearDistance, farDistance);
        const Picture plain = Draw();
        DrawOcclusion();
        float nearAfter = 0.0f;
        float farAfter = 0.0f;
        Camera().GetNearFar(nearAfter, farAfter);
        EXPECT_EQ(nearAfter, nearDistance);
        EXPECT_EQ(farAfter, farDistance);
        EXPECT_EQ(Camera().GetProjection(), perspective ? CameraNode::Perspective : CameraNode::Orthographic);
        ExpectSame(Draw(), plain, "after a frame with occlusion");
    }
}

} // namespace OV::Test
