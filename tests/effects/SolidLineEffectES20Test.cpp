#include "orvane/effects/SolidLineEffectES20.h"

#include "orvane/effects/SkySettings.h"
#include "orvane/renderdata/LineES20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/RawLine.h"
#include "tests/effects/CallTexts.h"
#include "tests/effects/EffectChecks.h"
#include "tests/effects/EffectSettingsGuard.h"
#include "tests/support/GLRecorder.h"
#include "tests/support/VirtualSlot.h"

#include <GL/glew.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>

namespace OV::Test
{

namespace
{

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

using Calls = std::vector<std::string>;

/// Opens the state and the program of the effect.
class OpenLineEffect : public SolidLineEffectES20
{
public:
    OpenLineEffect() : SolidLineEffectES20(nullptr) {}

    using SolidLineEffectES20::depthTexture;
    using SolidLineEffectES20::groupTexture;
    using SolidLineEffectES20::idTexture;
    using SolidLineEffectES20::m_camera;
    using SolidLineEffectES20::m_currentProgram;
    using SolidLineEffectES20::m_programsByOptions;
    using SolidLineEffectES20::m_uniformNames;
    using SolidLineEffectES20::offsetActive;
    using SolidLineEffectES20::pixelRatio;
};

/// A style without anything beyond a colour, one line of one segment, and a camera whose
/// numbers are exact.
class SolidLineEffect : public ::testing::Test
{
protected:
    SolidLineEffect()
    {
        SkySettings::inst().SetUseFog(false);
        style.color = Color(0.25f, 0.5f, 0.125f, 0.75f);
        style.secondColor = Color(0.0f, 0.0f, 0.0f, 0.25f);
        style.antialias = false;
        CameraNode& node = *scene.GetCameraNode();
        node.SetNearFar(8.0f, 508.0f);
        gl.SetIntegers(GL_VIEWPORT, {0, 0, 256, 128});
        // As on a driver: it is no attribute.
        gl.SetAttribLocation("u_znear", -1);
    }

    /// What one call of Apply makes, once its program is compiled.
    Calls Apply(bool addSecondColor = true)
    {
        effect.Apply(&style, &camera, addSecondColor);
        effect.RestoreDepthState();
        gl.Clear();
        // Values that the program holds are not sent again.
        EffectES20::ForgetUniformValues();
        effect.Apply(&style, &camera, addSecondColor);
        Calls calls = ReadCalls(gl);
        calls.erase(std::remove_if(calls.begin(), calls.end(),
                                   [](const std::string& call) { return call.find("glIsEnabled") == 0; }),
                    calls.end());
        effect.RestoreDepthState();
        gl.Clear();
        return calls;
    }

    /// The mask of the program in use.
    std::uint64_t Mask() const { return OptionsOf(effect.m_currentProgram, effect.m_programsByOptions); }

    std::uint64_t MaskAfterApply()
    {
        Apply();
        return Mask();
    }

    std::string Use() const { return "glUseProgram(" + std::to_string(effect.m_currentProgram) + ")"; }

    LineES20& AddLine(bool withNormals = true)
    {
        auto raw = std::make_shared<RawLine>();
        raw->SetPositionBuffer({Vector(0, 0, 0), Vector(1, 0, 0)});
        raw->SetIndices({0, 1});
        if (!withNormals)
        {
            raw->normals.clear();
        }
        auto* line = new Line(raw, &scene);
        node = new MeshNode(&scene);
        scene.GetRoot()->AddChild(node, false);
        line->AddNode(node);
        data = std::make_unique<LineES20>(line, &pool);
        pool.GenerateVBOs();
        return *data;
    }

    void Update()
    {
        scene.MarkDirty();
        scene.UpdateGraph(256.0f, 128.0f);
        camera.UpdateMVP(256, 128, false);
    }

    EffectSettingsGuard settings;
    GLRecorder gl;
    Scene scene;
    SharedBufferPool pool;
    CameraNodeES20 camera{scene.GetCameraNode()};
    LineStyle style{"style"};
    OpenLineEffect effect;
    MeshNode* node = nullptr;
    std::unique_ptr<LineES20> data;
};

std::string Number(unsigned value)
{
    return std::to_string(value);
}

std::string DepthFunc(GLenum function)
{
    return "glDepthFunc(" + Number(function) + ")";
}

std::string Pointer(int attribute, int stride, int offset)
{
    return "glVertexAttribPointer(" + std::to_string(attribute) + ", 3, " + Number(GL_FLOAT) + ", 0, " +
           std::to_string(stride) + ", " + std::to_string(offset) + ")";
}

/// What a uniform of a matrix looks like in the calls.
std::string MatrixCall(const std::string& name, const Matrix& matrix)
{
    GLCall call;
    call.name = name;
    call.floats.assign(matrix.m, matrix.m + 16);
    GLArgument values;
    values.kind = GLArgument::Kind::Data;
    values.number = 1;
    call.args.push_back(values);
    return call.ToString();
}

const std::string kBlendFunc =
    "glBlendFunc(" + Number(GL_SRC_ALPHA) + ", " + Number(GL_ONE_MINUS_SRC_ALPHA) + ")";

constexpr std::uint64_t kMobile = 1;
constexpr std::uint64_t kAntialias = 2;
constexpr std::uint64_t kOverlay = 4;
constexpr std::uint64_t kDashed = 8;
constexpr std::uint64_t kFog = 16;

} // namespace

TEST_F(SolidLineEffect, HasTheStatedUniformTable)
{
    Apply();
    const Calls expected = {"u_color",        "u_dashedLineFrequency", "u_depthTexture",     "u_fogColor",
                            "u_fogRange",     "u_groupTexture",        "u_idTexture",        "u_invViewDims",
                            "u_invWidth",     "u_isPerspCamera",       "u_mvpMatrix",        "u_offsetToCameraPos",
                            "u_orthoOffset",  "u_viewDims",            "u_vpMatrix",         "u_width",
                            "u_zfar",         "u_znear",               "u_worldTransform",   "u_numClipPlanes",
                            "u_clipPlaneNormals", "u_clipPlanePositions"};
    EXPECT_EQ(UniformTable(effect.m_uniformNames), expected);
}

TEST_F(SolidLineEffect, BindsItsThreeAttributeNames)
{
    effect.Apply(&style, &camera, true);
    EXPECT_THAT(BoundAttributes(gl), ElementsAre("0a_startPosition", "1a_endPosition", "2a_choiceDirNone"));
    effect.RestoreDepthState();
}

TEST_F(SolidLineEffect, IsNamedByItsOptions)
{
    std::string name;
    effect.CreateProgramForOptions(31, name);
    EXPECT_EQ(name, "SolidLineEffect|MOBILE|ANTIALIAS|OVERLAY|DASHED|FOG");
}

TEST_F(SolidLineEffect, StartsWithoutPicturesAtOnePixelAPoint)
{
    EXPECT_EQ(effect.pixelRatio, 1.0f);
    EXPECT_EQ(effect.GetPixelRatio(), 1.0f);
    EXPECT_EQ(effect.idTexture, 0u);
    EXPECT_EQ(effect.depthTexture, 0u);
    EXPECT_EQ(effect.groupTexture, 0u);
    EXPECT_FALSE(effect.offsetActive);
}

TEST_F(SolidLineEffect, ItsApplyIsItsLastVirtual)
{
    EXPECT_EQ(VirtualSlot(&SolidLineEffectES20::Apply), VirtualSlot(&EffectES20::CreateProgramForOptions) + 3);
}

TEST_F(SolidLineEffect, TheMaskFollowsAntialiasDashesAndFog)
{
    EXPECT_EQ(MaskAfterApply(), kMobile);
    style.antialias = true;
    EXPECT_EQ(MaskAfterApply(), kMobile | kAntialias);
    style.SetDashed(true);
    EXPECT_EQ(MaskAfterApply(), kMobile | kAntialias | kDashed);
    SkySettings::inst().SetUseFog(true);
    EXPECT_EQ(MaskAfterApply(), kMobile | kAntialias | kDashed | kFog);
    style.fog = false;
    EXPECT_EQ(MaskAfterApply(), kMobile | kAntialias | kDashed);
}

TEST_F(SolidLineEffect, OverlayTakesTheFlagAndAnIdTexture)
{
    style.overlay = true;
    EXPECT_EQ(MaskAfterApply(), kMobile);
    effect.SetDepthTexture(5);
    EXPECT_EQ(MaskAfterApply(), kMobile);
    effect.SetIdTexture(6);
    EXPECT_EQ(MaskAfterApply(), kOverlay);
    effect.SetDepthTexture(0);
    EXPECT_EQ(MaskAfterApply(), kMobile | kOverlay);
    style.overlay = false;
    effect.SetDepthTexture(5);
    EXPECT_EQ(MaskAfterApply(), kMobile);
}

TEST_F(SolidLineEffect, AppliesAPlainStyleInTheStatedOrder)
{
    style.width = 4.0f;
    const Calls calls = Apply();
    EXPECT_THAT(calls, ElementsAre(Use(), "u_color(0.25, 0.5, 0.125, 0.75)", "u_width(4)", kBlendFunc,
                                   "u_offsetToCameraPos(0)", "glDepthMask(1)", Enable(GL_DEPTH_TEST),
                                   DepthFunc(GL_LEQUAL), "u_invViewDims(0.00390625, 0.0078125)",
                                   "u_numClipPlanes(0)"));
}

TEST_F(SolidLineEffect, AppliesAStyleOfEverythingInTheStatedOrder)
{
    SkySettings::inst().SetUseFog(true);
    SkySettings::inst().SetFogStart(2.0f);
    SkySettings::inst().SetFogEnd(4.0f);
    SkySettings::inst().SetHorizonColor(Color(0.5f, 0.25f, 0.125f, 1.0f));
    style.width = 2.0f;
    style.antialias = true;
    style.SetDashed(true);
    style.SetDashFrequency(8.0f);
    style.overlay = true;
    style.offset = 3.0f;
    style.noDepthWrite = true;
    style.SetFlags(LineStyleFlagDepthLessEqual);
    effect.SetIdTexture(6);
    effect.SetDepthTexture(5);
    effect.SetGroupTexture(7);
    Update();
    const Calls calls = Apply();
    EXPECT_THAT(calls, ElementsAre(Use(), "u_fogRange(2, 4)", "u_fogColor(0.5, 0.25, 0.125, 1)",
                                   "u_color(0.25, 0.5, 0.125, 0.75)", "u_dashedLineFrequency(0.125)", "u_width(2)",
                                   Enable(GL_BLEND), "u_invWidth(0.5)", kBlendFunc, "u_offsetToCameraPos(3)",
                                   "u_orthoOffset(0, 0, 3, 0)", "u_isPerspCamera(1)",
                                   MatrixCall("u_vpMatrix", camera.GetMVP()), "glDepthMask(0)",
                                   Disable(GL_DEPTH_TEST), DepthFunc(GL_GREATER), "u_viewDims(256, 128)",
                                   "u_invViewDims(0.00390625, 0.0078125)", "u_idTexture(0)", Unit(0), BindTexture(6),
                                   "u_depthTexture(1)", Unit(1), BindTexture(5), "u_groupTexture(2)", Unit(2),
                                   BindTexture(7), Unit(0), "u_numClipPlanes(0)"));
}

TEST_F(SolidLineEffect, NearAndFarStayUnsetSinceTheyAreAskedForAsAttributes)
{
    style.overlay = true;
    effect.SetIdTexture(6);
    effect.SetDepthTexture(5);
    effect.Apply(&style, &camera, true);
    effect.RestoreDepthState();
    EXPECT_EQ(gl.Count("glGetAttribLocation", {static_cast<double>(effect.m_currentProgram)}), 4u);
    const Calls calls = Apply();
    EXPECT_THAT(calls, Not(Contains(StartsWith("u_znear"))));
    EXPECT_THAT(calls, Not(Contains(StartsWith("u_zfar"))));
}

TEST_F(SolidLineEffect, ADriverThatKnewThemAsAttributesWouldGetNearAndFar)
{
    style.overlay = true;
    effect.SetIdTexture(6);
    effect.SetDepthTexture(5);
    gl.SetAttribLocation("u_znear", 3);
    EXPECT_THAT(Apply(), ::testing::IsSupersetOf({"u_znear(8)", "u_zfar(508)"}));
}

TEST_F(SolidLineEffect, TheSecondColourIsAddedOnDemandAndItsAlphaIsNot)
{
    style.secondColor = Color(0.5f, 0.25f, 0.5f, 1.0f);
    EXPECT_THAT(Apply(true), Contains("u_color(0.75, 0.75, 0.625, 0.75)"));
    EXPECT_THAT(Apply(false), Contains("u_color(0.25, 0.5, 0.125, 0.75)"));
}

TEST_F(SolidLineEffect, ANewStylesSecondColourMakesItWhite)
{
    const LineStyle fresh("fresh");
    style.color = Color(0.0f, 0.0f, 0.0f, 1.0f);
    style.secondColor = fresh.secondColor;
    EXPECT_THAT(Apply(), Contains("u_color(1, 1, 1, 1)"));
}

TEST_F(SolidLineEffect, MonotoneFogIsWhite)
{
    SkySettings::inst().SetUseFog(true);
    SkySettings::inst().SetHorizonColor(Color(0.5f, 0.25f, 0.125f, 1.0f));
    SkySettings::inst().SetMonotone(true);
    EXPECT_THAT(Apply(), Contains("u_fogColor(1, 1, 1, 1)"));
}

TEST_F(SolidLineEffect, ThePixelRatioCountsTwiceAndBelowOneAsOne)
{
    style.width = 3.0f;
    style.antialias = true;
    const struct
    {
        float ratio;
        const char* width;
        const char* inverse;
    } cases[] = {{0.5f, "u_width(3)", "u_invWidth(0.333333343)"},
                 {0.0f, "u_width(3)", "u_invWidth(0.333333343)"},
                 {-2.0f, "u_width(3)", "u_invWidth(0.333333343)"},
                 {1.0f, "u_width(3)", "u_invWidth(0.333333343)"},
                 {2.0f, "u_width(12)", "u_invWidth(0.0833333358)"}};
    for (const auto& c : cases)
    {
        effect.SetPixelRatio(c.ratio);
        const Calls calls = Apply();
        EXPECT_THAT(calls, Contains(c.width)) << c.ratio;
        EXPECT_THAT(calls, Contains(c.inverse)) << c.ratio;
    }
}

TEST_F(SolidLineEffect, OffsetIsAPartOfTheDepthRange)
{
    scene.GetCameraNode()->SetNearFar(10.0f, 1010.0f);
    style.offset = 0.5f;
    EXPECT_THAT(Apply(), Contains("u_offsetToCameraPos(1)"));
    EXPECT_TRUE(effect.offsetActive);
}

TEST_F(SolidLineEffect, OffsetOfATurnedOrthographicCameraPointsBackAlongItsView)
{
    CameraNode& node = *scene.GetCameraNode();
    node.SetProjection(CameraNode::Orthographic);
    // A quarter turn about Y: the camera looks down -X.
    Transform turned;
    turned.SetRotation(Quaternion(0.0f, std::sqrt(0.5f), 0.0f, std::sqrt(0.5f)));
    node.SetLocal(turned);
    style.offset = 2.0f;
    Update();
    effect.Apply(&style, &camera, true);
    const std::vector<float> offset = gl.Uniform("u_orthoOffset");
    ASSERT_EQ(offset.size(), 4u);
    EXPECT_NEAR(offset[0], 2.0f, 1e-5f);
    EXPECT_NEAR(offset[1], 0.0f, 1e-5f);
    EXPECT_NEAR(offset[2], 0.0f, 1e-5f);
    EXPECT_EQ(offset[3], 0.0f);
    EXPECT_EQ(gl.Uniform("u_isPerspCamera"), std::vector<float>{0.0f});
    effect.RestoreDepthState();
}

TEST_F(SolidLineEffect, ACameraWithoutANodeKnowsNoOffset)
{
    CameraNodeES20 hud(nullptr);
    hud.UpdateHudMVP(256, 128, -1.0f, 1.0f);
    style.offset = 2.0f;
    effect.Apply(&style, &hud, true);
    effect.RestoreDepthState();
    gl.Clear();
    EffectES20::ForgetUniformValues();
    effect.Apply(&style, &hud, true);
    const Calls calls = ReadCalls(gl);
    EXPECT_THAT(calls, Contains("u_offsetToCameraPos(0)"));
    EXPECT_THAT(calls, Not(Contains(StartsWith("u_vpMatrix"))));
    EXPECT_FALSE(effect.offsetActive);
    effect.RestoreDepthState();
}

TEST_F(SolidLineEffect, DepthFollowsTheStyle)
{
    const struct
    {
        const char* label;
        bool noTest;
        bool noWrite;
        unsigned flags;
        Calls expected;
    } cases[] = {
        {"both", false, false, 0, {"glDepthMask(1)", Enable(GL_DEPTH_TEST), DepthFunc(GL_LEQUAL)}},
        {"no test", true, false, 0, {"glDepthMask(1)", Disable(GL_DEPTH_TEST), DepthFunc(GL_LEQUAL)}},
        {"no write", false, true, 0, {"glDepthMask(0)", Enable(GL_DEPTH_TEST), DepthFunc(GL_LEQUAL)}},
        {"neither", true, true, 0, {"glDepthMask(0)", Disable(GL_DEPTH_TEST), DepthFunc(GL_LEQUAL)}},
        {"strip", false, false, 1, {"glDepthMask(1)", Enable(GL_DEPTH_TEST), DepthFunc(GL_LEQUAL)}},
        {"behind", false, false, 2, {"glDepthMask(1)", Enable(GL_DEPTH_TEST), DepthFunc(GL_GREATER)}},
        {"behind strip", false, true, 3, {"glDepthMask(0)", Enable(GL_DEPTH_TEST), DepthFunc(GL_GREATER)}},
    };
    for (const auto& c : cases)
    {
        style.noDepthTest = c.noTest;
        style.noDepthWrite = c.noWrite;
        style.flags = c.flags;
        const Calls calls = Apply();
        const auto first = std::find(calls.begin(), calls.end(), c.expected.front());
        ASSERT_NE(first, calls.end()) << c.label;
        EXPECT_EQ(Calls(first, first + 3), c.expected) << c.label;
    }
}

TEST_F(SolidLineEffect, OverADepthPictureTheShaderTestsDepthItself)
{
    style.overlay = true;
    effect.SetDepthTexture(5);
    EXPECT_THAT(Apply(), Contains(Enable(GL_DEPTH_TEST)));
    effect.SetIdTexture(6);
    EXPECT_THAT(Apply(), Contains(Disable(GL_DEPTH_TEST)));
    effect.SetDepthTexture(0);
    EXPECT_THAT(Apply(), Contains(Enable(GL_DEPTH_TEST)));
}

TEST_F(SolidLineEffect, RestoringPutsBackWhatWasThereBeforeTheFirstApply)
{
    glDisable(GL_DEPTH_TEST);
    glDepthFunc(GL_ALWAYS);
    glDepthMask(GL_FALSE);
    effect.Apply(&style, &camera, true);
    style.noDepthTest = true;
    effect.Apply(&style, &camera, true);
    gl.Clear();
    effect.RestoreDepthState();
    EXPECT_THAT(gl.Strings(), ElementsAre("glDepthMask(0)", DepthFunc(GL_ALWAYS), Disable(GL_DEPTH_TEST)));

    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LESS);
    glDepthMask(GL_TRUE);
    effect.Apply(&style, &camera, true);
    gl.Clear();
    effect.RestoreDepthState();
    EXPECT_THAT(gl.Strings(), ElementsAre("glDepthMask(1)", DepthFunc(GL_LESS), Enable(GL_DEPTH_TEST)));
    gl.Clear();
    effect.RestoreDepthState();
    EXPECT_THAT(gl.Strings(), IsEmpty());
}

TEST_F(SolidLineEffect, TheOriginOfTheViewportIsTakenOffItsSize)
{
    gl.SetIntegers(GL_VIEWPORT, {64, 32, 192, 96});
    style.antialias = true;
    const Calls calls = Apply();
    EXPECT_THAT(calls, Contains("u_viewDims(128, 64)"));
    EXPECT_THAT(calls, Contains("u_invViewDims(0.0078125, 0.015625)"));
}

TEST_F(SolidLineEffect, TheSizeOfTheViewIsSetForAntialiasAndForDashes)
{
    EXPECT_THAT(Apply(), Not(Contains(StartsWith("u_viewDims"))));
    style.SetDashed(true);
    EXPECT_THAT(Apply(), Contains("u_viewDims(256, 128)"));
    style.SetDashed(false);
    style.antialias = true;
    EXPECT_THAT(Apply(), Contains("u_viewDims(256, 128)"));
}

TEST_F(SolidLineEffect, OverlayWithoutADepthPictureBindsTheTwoOthers)
{
    style.overlay = true;
    effect.SetIdTexture(6);
    effect.SetGroupTexture(7);
    const Calls calls = Apply();
    const auto first = std::find(calls.begin(), calls.end(), "u_idTexture(0)");
    ASSERT_NE(first, calls.end());
    EXPECT_EQ(Calls(first, calls.end() - 1),
              (Calls{"u_idTexture(0)", Unit(0), BindTexture(6), "u_groupTexture(2)", Unit(2), BindTexture(7),
                     Unit(0)}));
}

TEST_F(SolidLineEffect, ADepthPictureIsBoundForAnOverlayStyleEvenWithoutIds)
{
    style.overlay = true;
    effect.SetDepthTexture(5);
    effect.SetGroupTexture(7);
    const Calls calls = Apply();
    const auto first = std::find(calls.begin(), calls.end(), "u_idTexture(0)");
    ASSERT_NE(first, calls.end());
    EXPECT_EQ(Calls(first, calls.end() - 1),
              (Calls{"u_idTexture(0)", Unit(0), BindTexture(0), "u_depthTexture(1)", Unit(1), BindTexture(5),
                     "u_groupTexture(2)", Unit(2), BindTexture(7), Unit(0)}));
}

TEST_F(SolidLineEffect, WithoutTheOverlayFlagNoTextureIsTouched)
{
    effect.SetIdTexture(6);
    effect.SetDepthTexture(5);
    effect.SetGroupTexture(7);
    Apply();
    effect.Apply(&style, &camera, true);
    EXPECT_EQ(gl.Count("glBindTexture"), 0u);
    EXPECT_EQ(gl.Count("glActiveTexture"), 0u);
    effect.RestoreDepthState();
}

TEST_F(SolidLineEffect, SixClipPlanesAtMostAreFedAndOnlyWhenTheyCut)
{
    for (int i = 0; i < 7; ++i)
    {
        EffectES20::AddClipPlane(glm::vec3(static_cast<float>(i), 0, 1), glm::vec3(0, static_cast<float>(i), 2));
    }
    EXPECT_THAT(Apply(), Contains("u_numClipPlanes(0)"));
    effect.clipPlanesActive = true;
    const Calls calls = Apply();
    EXPECT_EQ(Calls(calls.end() - 3, calls.end()),
              (Calls{"u_clipPlaneNormals({0, 0, 1, 1, 0, 1, 2, 0, 1, 3, 0, 1, 4, 0, 1, 5, 0, 1})",
                     "u_clipPlanePositions({0, 0, 2, 0, 1, 2, 0, 2, 2, 0, 3, 2, 0, 4, 2, 0, 5, 2})",
                     "u_numClipPlanes(6)"}));
}

TEST_F(SolidLineEffect, BindsTheSamePositionsTwiceFourVerticesApart)
{
    LineES20& line = AddLine();
    Apply();
    effect.BindMeshAttributes(&line);
    // Position, normal and texture coordinate take a stride of 64.
    EXPECT_THAT(gl.Strings(), ElementsAre(Pointer(0, 64, 0), "glEnableVertexAttribArray(0)", Pointer(1, 64, 256),
                                          "glEnableVertexAttribArray(1)", Pointer(2, 64, 12),
                                          "glEnableVertexAttribArray(2)", Enable(GL_BLEND)));
}

TEST_F(SolidLineEffect, ALineWithoutNormalsLeavesTheThirdAttributeOff)
{
    LineES20& line = AddLine(false);
    Apply();
    effect.BindMeshAttributes(&line);
    EXPECT_THAT(gl.Strings(), ElementsAre(Pointer(0, 32, 0), "glEnableVertexAttribArray(0)", Pointer(1, 32, 128),
                                          "glEnableVertexAttribArray(1)", Enable(GL_BLEND)));
}

TEST_F(SolidLineEffect, BlendingIsTurnedOnForEveryLineAndNeverOff)
{
    LineES20& line = AddLine();
    ASSERT_FALSE(style.antialias);
    effect.Apply(&style, &camera, true);
    effect.BindMeshAttributes(&line);
    effect.ReleaseMeshAttributes(&line);
    effect.RestoreDepthState();
    EXPECT_TRUE(gl.IsEnabled(GL_BLEND));
    EXPECT_EQ(gl.Count("glDisable", {GL_BLEND}), 0u);
}

TEST_F(SolidLineEffect, ReleasingTurnsTheAttributesOffAndDepthWritesOn)
{
    LineES20& line = AddLine();
    style.noDepthWrite = true;
    effect.Apply(&style, &camera, true);
    effect.BindMeshAttributes(&line);
    gl.Clear();
    effect.ReleaseMeshAttributes(&line);
    EXPECT_THAT(gl.Strings(), ElementsAre("glDepthMask(1)"));
    gl.Clear();
    effect.RestoreDepthState();
    EXPECT_THAT(gl.Names({"glDisableVertexAttribArray"}), ::testing::SizeIs(3));
    gl.Clear();
    // Without an Apply at once.
    effect.ReleaseMeshAttributes(&line);
    EXPECT_THAT(gl.Strings(), ElementsAre("glDisableVertexAttribArray(0)", "glDisableVertexAttribArray(1)",
                                          "glDisableVertexAttribArray(2)", "glDepthMask(1)"));
}

TEST_F(SolidLineEffect, WithoutAnOffsetTheMatrixLeadsToClipSpace)
{
    AddLine();
    Transform place;
    place.SetPosition(Vector(2.0f, 3.0f, -50.0f));
    node->SetLocal(place);
    Update();
    effect.Apply(&style, &camera, true);
    gl.Clear();
    EffectES20::ForgetUniformValues();
    effect.BindMeshUniforms(node);
    Matrix mvp;
    mvp.Multiply(camera.GetMVP(), *node->GetGlobalMatrix());
    EXPECT_THAT(ReadCalls(gl), ElementsAre(MatrixCall("u_mvpMatrix", mvp),
                                           MatrixCall("u_worldTransform", *node->GetGlobalMatrix()),
                                           "u_numClipPlanes(0)"));
    effect.RestoreDepthState();
}

TEST_F(SolidLineEffect, WithAnOffsetTheMatrixLeadsToTheWorld)
{
    AddLine();
    Transform place;
    place.SetPosition(Vector(2.0f, 3.0f, -50.0f));
    node->SetLocal(place);
    Update();
    style.offset = 1.0f;
    effect.Apply(&style, &camera, true);
    gl.Clear();
    EffectES20::ForgetUniformValues();
    effect.BindMeshUniforms(node);
    EXPECT_THAT(ReadCalls(gl), ElementsAre(MatrixCall("u_mvpMatrix", *node->GetGlobalMatrix()),
                                           MatrixCall("u_worldTransform", *node->GetGlobalMatrix()),
                                           "u_numClipPlanes(0)"));
    effect.RestoreDepthState();
}

TEST_F(SolidLineEffect, InALayerTheMatrixIsThatOfTheLayer)
{
    AddLine();
    Update();
    CameraNodeES20 hud(nullptr);
    hud.UpdateHudMVP(256, 128, -1.0f, 1.0f);
    effect.Apply(&style, &hud, true);
    gl.Clear();
    EffectES20::ForgetUniformValues();
    effect.BindMeshUniforms(node);
    Matrix mvp;
    mvp.Multiply(hud.GetHudMVP(), *node->GetGlobalMatrix());
    EXPECT_THAT(ReadCalls(gl), Contains(MatrixCall("u_mvpMatrix", mvp)));
    effect.RestoreDepthState();
}

TEST_F(SolidLineEffect, ClipPlanesAreFedForEachNodeToo)
{
    AddLine();
    Update();
    EffectES20::AddClipPlane(glm::vec3(1, 0, 0), glm::vec3(0, 0, 2));
    effect.Apply(&style, &camera, true);
    effect.clipPlanesActive = true;
    gl.Clear();
    EffectES20::ForgetUniformValues();
    effect.BindMeshUniforms(node);
    const Calls calls = ReadCalls(gl);
    EXPECT_EQ(Calls(calls.end() - 3, calls.end()),
              (Calls{"u_clipPlaneNormals({1, 0, 0})", "u_clipPlanePositions({0, 0, 2})", "u_numClipPlanes(1)"}));
    effect.RestoreDepthState();
}

} // namespace OV::Test
