#include "tests/effects/SurfaceStage.h"

#include "orvane/effects/LightShare.h"
#include "orvane/math/Quaternion.h"
#include "orvane/platform/detail/EntryPoints.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/SimMaterial.h"
#include "tests/support/SketchModel.h"

#include <GL/glew.h>
#include <glm/geometric.hpp>

#include <algorithm>
#include <cmath>

namespace OV::Test
{

namespace
{

using glm::vec3;
using glm::vec4;

constexpr PixelRect kLeft{8, 40, 48, 48};
constexpr PixelRect kRight{72, 40, 48, 48};

class VertexColorPixels : public SurfaceStage
{
protected:
    static Surface Coloured(const PixelRect& rect)
    {
        Surface surface;
        surface.rect = rect;
        surface.hasColors = true;
        surface.colors = {vec4(1, 0, 0, 1), vec4(0, 1, 0, 0.5f), vec4(0, 0, 1, 0.25f), vec4(1, 1, 0, 0.75f)};
        return surface;
    }
};

} // namespace

TEST_F(VertexColorPixels, SurfacesAtRandomShowTheirColoursInTheLightOfTheCamera)
{
    constexpr int scenes = 24;
    constexpr int points = 60;
    std::mt19937 random(3);
    int compared = 0;
    for (int i = 0; i < scenes; ++i)
    {
        SCOPED_TRACE(i);
        Surface surface = Coloured({8, 8, 112, 112});
        for (std::size_t corner = 0; corner < 4; ++corner)
        {
            surface.colors[corner] = RandomColor(random, 0.0f, 1.0f);
            surface.normals[corner] = glm::normalize(RandomVec3(random, -1.0f, 1.0f));
        }
        surface.z = RandomIn(random, -3.0f, 2.0f);
        surface.scale = vec3(RandomIn(random, 0.5f, 2.0f));
        surface.offset = RandomVec3(random, -1.0f, 1.0f);
        Material& material = AddMaterial(vec4(0.2f, 0.3f, 0.4f, 0.5f), vec4(1.0f));
        const bool unlit = RandomIn(random, 0.0f, 1.0f) < 0.3f;
        if (unlit)
        {
            material.SetFlags(MaterialFlagUnlit);
        }
        MeshNode& node = AddSurface(material, surface);
        ClipModel clip;
        EffectES20::ClearClipPlanes();
        for (int plane = 0; plane < i % 3; ++plane)
        {
            clip.planes.emplace_back(RandomVec3(random, -1.0f, 1.0f), RandomVec3(random, -2.0f, 2.0f));
            EffectES20::AddClipPlane(clip.planes.back().first, clip.planes.back().second);
        }
        clip.outlineSize = RandomIn(random, 0.1f, 0.8f);
        clip.outlineColor = RandomColor(random, 0.0f, 1.0f);
        EffectES20::SetClipPlaneOutlineSize(clip.outlineSize);
        EffectES20::SetClipPlaneOutlineColor(clip.outlineColor);
        std::array<vec4, 4> shaded;
        for (std::size_t corner = 0; corner < 4; ++corner)
        {
            // The camera looks down -Z, so that its axis is that of the world.
            const float factor = unlit ? 1.0f : std::max(surface.normals[corner].z, 0.0f);
            shaded[corner] = vec4(factor * vec3(surface.colors[corner]), surface.colors[corner].a);
        }
        const Picture picture = DrawPass(RenderPassVertexColor);
        compared += ExpectAtRandom(picture, surface.rect, points, random, [&](int x, int y) -> std::optional<vec4> {
            const std::optional<vec4> weights = surface.Weights(x, y);
            switch (clip.At(WorldAt(x, y, surface.z)))
            {
            case ClipModel::Place::Cut:
                return Background;
            case ClipModel::Place::Outline:
                return clip.outlineColor;
            case ClipModel::Place::Unsure:
                return std::nullopt;
            case ClipModel::Place::Kept:
                break;
            }
            return weights ? std::optional<vec4>(Surface::Blend(shaded, *weights)) : std::nullopt;
        });
        scene.DeleteSubtree(&node);
        delete &material;
    }
    EXPECT_GT(compared, scenes * points * 3 / 4);
}

TEST_F(VertexColorPixels, InTheOutlineOfOnePlaneAndOutsideAnotherAFragmentIsDiscarded)
{
    const vec4 outline(0.2f, 0.8f, 0.6f, 1.0f);
    EffectES20::SetClipPlaneOutlineColor(outline);
    EffectES20::SetClipPlaneOutlineSize(1.0f);
    EffectES20::AddClipPlane(vec3(1, 0, 0), vec3(1, 0, 0));
    EffectES20::AddClipPlane(vec3(0, 1, 0), vec3(0, 0, 0));
    AddSurface(AddMaterial(vec4(1.0f), vec4(1.0f)), Coloured({8, 8, 112, 112}));
    const Picture picture = DrawPass(RenderPassVertexColor);
    EXPECT_EQ(picture.At(70, 20), ToPixel(outline));
    EXPECT_EQ(picture.At(70, 100), ToPixel(Background));
    EXPECT_EQ(picture.At(100, 20), ToPixel(Background));
}

TEST_F(VertexColorPixels, TheLightFollowsTheCameraAndNotTheScene)
{
    Surface surface = Coloured(kLeft);
    surface.colors = {vec4(1.0f), vec4(1.0f), vec4(1.0f), vec4(1.0f)};
    Material& material = AddMaterial(vec4(1.0f), vec4(1.0f));
    AddSurface(material, surface);
    AddLight(vec3(0, 0, 1)).SetColor(0, 0, 0); // from behind, and black: not read
    ExpectShade(DrawPass(RenderPassVertexColor), kLeft, vec4(1.0f));
}

TEST_F(VertexColorPixels, AMeshThatIsLookedAtFromAsideIsDarkerByTheCosine)
{
    Surface surface = Coloured({8, 8, 112, 112});
    surface.colors.fill(vec4(1.0f, 0.8f, 0.6f, 0.4f));
    AddSurface(AddMaterial(vec4(1.0f), vec4(1.0f)), surface);
    CameraNode* const camera = scene.GetCameraNode();
    constexpr float angle = 0.6f;
    Transform place;
    Quaternion turn;
    turn.y = std::sin(angle / 2.0f);
    turn.w = std::cos(angle / 2.0f);
    place.SetRotation(turn);
    place.SetPosition(Vector(5.0f * std::sin(angle), 0.0f, 5.0f * std::cos(angle)));
    camera->SetLocal(place);
    const float factor = std::cos(angle);
    const PixelRect middle{48, 48, 32, 32};
    ExpectShade(DrawPass(RenderPassVertexColor), middle, vec4(factor * vec3(1.0f, 0.8f, 0.6f), 0.4f));
}

TEST_F(VertexColorPixels, AMirroredNodeIsLitFromTheSideThatItShows)
{
    Surface surface = Coloured(kLeft);
    surface.colors.fill(vec4(1.0f));
    surface.normals.fill(glm::normalize(vec3(1.0f, 0.0f, 1.0f)));
    surface.scale = vec3(-1.0f, 2.0f, 0.5f);
    AddSurface(AddMaterial(vec4(1.0f), vec4(1.0f)), surface);
    // The scale is taken out, the mirror with it: the normal keeps its share along the axis.
    const float factor = std::sqrt(0.5f);
    ExpectShade(DrawPass(RenderPassVertexColor), kLeft, vec4(vec3(factor), 1.0f));
}

namespace
{

/// A framebuffer of floats in place of the one that is bound, until its end.
class FloatTarget
{
public:
    FloatTarget(int width, int height)
    {
        Platform::LoadEntryPoints();
        glGetIntegerv(GL_FRAMEBUFFER_BINDING, &m_before);
        glGenFramebuffers(1, &m_framebuffer);
        glGenRenderbuffers(2, m_buffers);
        glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
        Attach(m_buffers[0], GL_RGBA32F, GL_COLOR_ATTACHMENT0, width, height);
        Attach(m_buffers[1], GL_DEPTH_COMPONENT24, GL_DEPTH_ATTACHMENT, width, height);
        EXPECT_EQ(glCheckFramebufferStatus(GL_FRAMEBUFFER), GLenum(GL_FRAMEBUFFER_COMPLETE));
    }

    FloatTarget(const FloatTarget&) = delete;
    FloatTarget& operator=(const FloatTarget&) = delete;

    ~FloatTarget()
    {
        glBindFramebuffer(GL_FRAMEBUFFER, static_cast<GLuint>(m_before));
        glDeleteRenderbuffers(2, m_buffers);
        glDeleteFramebuffers(1, &m_framebuffer);
    }

    vec4 At(int x, int y) const
    {
        vec4 color(0.0f);
        glReadPixels(x, y, 1, 1, GL_RGBA, GL_FLOAT, &color);
        return color;
    }

private:
    static void Attach(GLuint buffer, GLenum format, GLenum place, int width, int height)
    {
        glBindRenderbuffer(GL_RENDERBUFFER, buffer);
        glRenderbufferStorage(GL_RENDERBUFFER, format, width, height);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, place, GL_RENDERBUFFER, buffer);
        glBindRenderbuffer(GL_RENDERBUFFER, 0);
    }

    GLint m_before = 0;
    GLuint m_framebuffer = 0;
    GLuint m_buffers[2] = {};
};

class WeightedAverageSecondPassPixels : public SurfaceStage
{
};

} // namespace

TEST_F(WeightedAverageSecondPassPixels, EveryLayerAddsWhite)
{
    Surface surface;
    surface.rect = kLeft;
    AddSurface(AddMaterial(vec4(0.1f, 0.2f, 0.3f, 0.4f), vec4(0.0f)), surface);
    const Picture picture = DrawPass(RenderPassWeightedAverage);
    ExpectShade(picture, kLeft, vec4(1.0f));
    ExpectShade(picture, kRight, Background);
}

TEST_F(WeightedAverageSecondPassPixels, TwoLayersCountTwo)
{
    // 8 bits are full after one layer: only floats tell how many there were.
    Surface back;
    back.rect = {8, 40, 96, 48};
    back.z = -1.0f;
    Surface front;
    front.rect = kRight;
    Material& material = AddMaterial(vec4(0.1f, 0.2f, 0.3f, 0.4f), vec4(0.0f));
    AddSurface(material, back);
    AddSurface(material, front);
    const FloatTarget target(Width(), Height());
    DrawPass(RenderPassWeightedAverage);
    EXPECT_EQ(target.At(24, 64), Background + vec4(1.0f));
    EXPECT_EQ(target.At(90, 64), Background + vec4(2.0f));
    EXPECT_EQ(target.At(64, 10), Background);
}

namespace
{

class ScalarPixels : public SurfaceStage
{
protected:
    SimMaterial& AddSim(const ScalarLook& look)
    {
        auto* material = new SimMaterial("scalar");
        material->rangeLower = look.lower;
        material->rangeUpper = look.upper;
        scene.AddMaterial(material);
        return *material;
    }

    /// Lets the effect read the scalar of each vertex from its position: x in object space. The
    /// packer makes no stream of scalars, a host that has one fills it in.
    static void ReadScalarFromX(MeshNode& node)
    {
        auto* data = static_cast<MeshES20*>(node.GetMeshes().front()->GetRenderData());
        data->scalarOffset = data->positionOffset;
    }

    static void ReadScalarFromNormal(MeshNode& node)
    {
        auto* data = static_cast<MeshES20*>(node.GetMeshes().front()->GetRenderData());
        data->scalarOffset = data->normalOffset;
    }

    /// A surface over which x in object space runs from one number to another.
    static Surface Ramp(float from, float to)
    {
        Surface surface;
        const float left = surface.World(0).x;
        const float right = surface.World(1).x;
        surface.scale.x = (right - left) / (to - from);
        surface.offset.x = left - from * surface.scale.x;
        return surface;
    }

    static float ScalarAt(const Surface& surface, int x)
    {
        return (WorldAt(x, 0, surface.z).x - surface.offset.x) / surface.scale.x;
    }
};

} // namespace

TEST_F(ScalarPixels, TheRampHasItsStopsAtTheQuarters)
{
    EXPECT_EQ(ScalarRamp(-1.0f), vec3(0, 0, 1));
    EXPECT_EQ(ScalarRamp(0.125f), vec3(0, 0.5f, 1));
    EXPECT_EQ(ScalarRamp(0.375f), vec3(0, 1, 0.5f));
    EXPECT_EQ(ScalarRamp(0.625f), vec3(0.5f, 1, 0));
    EXPECT_EQ(ScalarRamp(0.875f), vec3(1, 0.5f, 0));
    const std::pair<float, vec3> stops[] = {{-3.0f, {0, 0, 1}}, {0.0f, {0, 0, 1}}, {0.25f, {0, 1, 1}},
                                            {0.5f, {0, 1, 0}},  {0.75f, {1, 1, 0}}, {1.0f, {1, 0, 0}},
                                            {3.0f, {1, 0, 0}}};
    for (const auto& [value, color] : stops)
    {
        ScalarLook look{-10.0f, 10.0f, nullptr};
        SimMaterial& material = AddSim(look);
        material.SetFlags(MaterialFlagUnlit);
        Surface surface;
        surface.normals.fill(vec3(value, 0, 0));
        MeshNode& node = AddSurface(material, surface);
        DrawFrame();
        ReadScalarFromNormal(node);
        ExpectShade(DrawFrame(), surface.rect, vec4(color, 1.0f));
        scene.DeleteSubtree(&node);
        delete &material;
    }
}

TEST_F(ScalarPixels, NumbersAtRandomShowByTheRampOrTheTextureWithinTheRange)
{
    constexpr int scenes = 24;
    constexpr int points = 60;
    std::mt19937 random(17);
    const Texels ramp = Texels::Random(random, 7, 3, vec4(0.0f), vec4(1.0f)); // the lowest row is the ramp
    int compared = 0;
    for (int i = 0; i < scenes; ++i)
    {
        SCOPED_TRACE(i);
        ScalarLook look;
        look.lower = RandomIn(random, -0.3f, 0.5f);
        look.upper = RandomIn(random, 0.3f, 1.3f);
        SimMaterial& material = AddSim(look);
        const bool unlit = RandomBool(random);
        if (unlit)
        {
            material.SetFlags(MaterialFlagUnlit);
        }
        Surface surface = Ramp(-0.4f, 1.4f);
        for (vec3& normal : surface.normals)
        {
            normal = glm::normalize(RandomVec3(random, -1.0f, 1.0f));
        }
        // Without normals the light would have nothing to fall on.
        MeshNode& node = AddSurface(material, surface);
        DrawFrame();
        ReadScalarFromX(node);
        const bool textured = i % 3 == 2;
        if (textured)
        {
            static_cast<MaterialES20*>(material.GetRenderData())->textureId = PictureLoader::MakeTexture(ramp);
            look.texture = &ramp;
        }
        std::array<float, 4> factors;
        for (std::size_t corner = 0; corner < 4; ++corner)
        {
            // The scale along x is taken out of the matrix, not turned into the normals.
            factors[corner] = unlit ? 1.0f : std::max(surface.normals[corner].z, 0.0f);
        }
        const Picture picture = DrawFrame();
        compared += ExpectAtRandom(picture, surface.rect, points, random, [&](int x, int y) -> std::optional<vec4> {
            const std::optional<vec4> weights = surface.Weights(x, y);
            if (!weights)
            {
                return std::nullopt;
            }
            const std::optional<vec4> color =
                ShadeScalar(look, ScalarAt(surface, x), Surface::Blend(factors, *weights));
            return color && textured ? BlendOver(*color, Background) : color;
        });
        scene.DeleteSubtree(&node);
        delete &material;
    }
    EXPECT_GT(compared, scenes * points / 2);
}

TEST_F(ScalarPixels, ARangeThatIsUnsetEmptyOrReversedShowsGreyAtHalfAlpha)
{
    const ScalarLook looks[] = {{}, {0.5f, 0.5f, nullptr}, {0.8f, 0.2f, nullptr}};
    for (const ScalarLook& look : looks)
    {
        SimMaterial& material = AddSim(look);
        material.SetFlags(MaterialFlagUnlit);
        const Surface surface = Ramp(0.0f, 1.0f);
        MeshNode& node = AddSurface(material, surface);
        DrawFrame();
        ReadScalarFromX(node);
        // Blending is off, so that the half reaches the alpha of the picture.
        ExpectShade(DrawFrame(), surface.rect, vec4(0.75f, 0.75f, 0.75f, 0.5f));
        scene.DeleteSubtree(&node);
        delete &material;
    }
}

TEST_F(ScalarPixels, TheEndsOfTheRangeBelongToIt)
{
    for (const float value : {0.25f, 0.75f})
    {
        SimMaterial& material = AddSim({0.25f, 0.75f, nullptr});
        material.SetFlags(MaterialFlagUnlit);
        Surface surface;
        surface.normals.fill(vec3(value, 0, 0));
        MeshNode& node = AddSurface(material, surface);
        DrawFrame();
        ReadScalarFromNormal(node);
        ExpectShade(DrawFrame(), surface.rect, vec4(ScalarRamp(value), 1.0f));
        scene.DeleteSubtree(&node);
        delete &material;
    }
}

TEST_F(ScalarPixels, ASeeThroughMaterialIsBlendedAndTheNextOneIsNot)
{
    SimMaterial& glass = AddSim({});
    SimMaterial& solid = AddSim({});
    Surface surface;
    surface.rect = kLeft;
    glass.SetFlags(MaterialFlagUnlit);
    solid.SetFlags(MaterialFlagUnlit);
    glass.SetOpacity(0.9f);
    AddSurface(glass, surface);
    surface.rect = kRight;
    AddSurface(solid, surface);
    const Picture picture = DrawFrame();
    ExpectShade(picture, kLeft, BlendOver(vec4(0.75f, 0.75f, 0.75f, 0.5f), Background));
    ExpectShade(picture, kRight, vec4(0.75f, 0.75f, 0.75f, 0.5f));
}

namespace
{

/// A tone for each side of the view, told by the place of the corners.
class TonesOfSides : public LightShare
{
public:
    TonesOfSides(const char* left, const char* right) :
        m_enclosure(std::string("varying float v_tone;\nvoid main() { OVSL_Main(); v_tone = gl_Position.x < 0.0 ? ")
                    + left + " : " + right + "; }\n")
    {
    }

    const char* Source() const override
    {
        return "varying float v_tone;\n"
               "float OVSL_LightShare(bool wanted) { return v_tone; }\n"
               "float OVSL_ShadowTone() { return v_tone; }\n";
    }
    const char* VertexEnclosure() const override { return m_enclosure.c_str(); }
    NameTable Uniforms() const override { return NameTable(nullptr, 0); }
    void Feed(ShaderProgram&, int) override {}

private:
    std::string m_enclosure;
};

class LightSharePixels : public SurfaceStage
{
protected:
    ~LightSharePixels() override
    {
        EffectES20::SetLightShare(nullptr);
        EffectES20::SetShadow(false);
        EffectES20::SetShadowIntensity(m_intensity);
    }

    /// The largest difference of a channel.
    static int Difference(const Picture& a, const Picture& b)
    {
        int most = 0;
        for (int y = 0; y < a.GetHeight(); ++y)
        {
            for (int x = 0; x < a.GetWidth(); ++x)
            {
                const Pixel p = a.At(x, y);
                const Pixel q = b.At(x, y);
                most = std::max({most, std::abs(p.r - q.r), std::abs(p.g - q.g), std::abs(p.b - q.b)});
            }
        }
        return most;
    }

private:
    const float m_intensity = EffectES20::GetShadowIntensity();
};

} // namespace

TEST_F(LightSharePixels, TakeWhatTheVertexShaderHandsOn)
{
    Material& material = AddMaterial(vec4(0.2f, 0.3f, 0.4f, 1.0f), vec4(1.0f));
    for (const PixelRect& rect : {kLeft, kRight})
    {
        Surface surface;
        surface.rect = rect;
        AddSurface(material, surface);
    }
    TonesOfSides tones("0.25", "0.75");
    // Of the same text but for the vertex shader.
    TonesOfSides others("0.5", "1.0");
    DrawFrame();
    EffectES20::SetLightShare(&tones);
    const Picture first = DrawPass(RenderPassMonotone);
    ExpectShade(first, kLeft, vec4(0.25f, 0.25f, 0.25f, 1.0f));
    ExpectShade(first, kRight, vec4(0.75f, 0.75f, 0.75f, 1.0f));
    EffectES20::SetLightShare(&others);
    const Picture second = DrawPass(RenderPassMonotone);
    ExpectShade(second, kLeft, vec4(0.5f, 0.5f, 0.5f, 1.0f));
    ExpectShade(second, kRight, vec4(1.0f));
}

TEST_F(LightSharePixels, OfAllTheLightDrawAsWithoutAShare)
{
    // What the looks hand on from their vertices for a share: colours, and whether surfaces are lit, are
    // mirrored and show their sides.
    AddLight(vec3(0.3f, 0.2f, -1.0f));
    Material& lit = AddMaterial(vec4(0.5f, 0.3f, 0.8f, 1.0f), vec4(0.1f, 0.2f, 0.05f, 1.0f));
    Material& unlit = AddMaterial(vec4(0.4f, 0.9f, 0.7f, 1.0f), vec4(0.2f, 0.1f, 0.3f, 1.0f));
    lit.SetFlags(MaterialFlagNoCull);
    unlit.SetFlags(MaterialFlagNoCull | MaterialFlagUnlit);
    int number = 0;
    for (Material* const material : {&lit, &unlit})
    {
        for (const bool facesAway : {false, true})
        {
            for (const bool isMirrored : {false, true})
            {
                for (const bool showsSides : {false, true})
                {
                    Surface surface;
                    surface.rect = {8 + 28 * (number % 4), 8 + 28 * (number / 4), 24, 24};
                    surface.facesAway = facesAway;
                    surface.scale.x = isMirrored ? -1.0f : 1.0f;
                    MeshNode& node = AddSurface(*material, surface);
                    if (showsSides)
                    {
                        node.EachMesh().front()->SetFlags(MeshFlagShowFaceSides);
                    }
                    ++number;
                }
            }
        }
    }
    TonesOfSides all("1.0", "1.0");
    TonesOfSides half("0.5", "0.5");
    DrawFrame();
    struct Drawn
    {
        RenderPass pass;
        bool isShadow;
        float intensity;
    };
    for (const auto& [pass, isShadow, intensity] :
         {Drawn{RenderPassMonotone, false, 0.2f}, Drawn{RenderPassMonotone, true, 0.2f},
          Drawn{RenderPassMonotone, true, -0.6f}, Drawn{RenderPassMonotone, true, -2.0f},
          Drawn{RenderPassMonotone, true, 1.5f}, Drawn{RenderPassDefault, false, 0.2f}})
    {
        SCOPED_TRACE(::testing::Message() << "pass " << pass << ", intensity " << intensity);
        EffectES20::SetShadow(isShadow);
        EffectES20::SetShadowIntensity(intensity);
        EffectES20::SetLightShare(nullptr);
        const Picture plain = DrawPass(pass);
        EffectES20::SetLightShare(&all);
        EXPECT_LE(Difference(DrawPass(pass), plain), 1);
        EffectES20::SetLightShare(&half);
        // What is darkened by all there is, is black in any case.
        EXPECT_EQ(Difference(DrawPass(pass), plain) > 20, intensity < 1.0f);
    }
}

} // namespace OV::Test
