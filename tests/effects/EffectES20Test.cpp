#include "orvane/effects/EffectES20.h"

#include "orvane/effects/ShaderSnippets.h"
#include "tests/effects/EffectSettingsGuard.h"
#include "tests/support/GLRecorder.h"

#include <GL/glew.h>
#include <gmock/gmock.h>

#include <algorithm>

namespace OV::Test
{

namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

constexpr OptionRow kOptions[] = {{0, "DEFAULT"}, {1, "FIRST"}, {4, "THIRD"}, {std::uint64_t{1} << 63, "LAST"}};

constexpr IndexedName kUniforms[] = {{0, "u_one"}, {1, "u_two"}};
static_assert(IsDense(kUniforms));
constexpr IndexedName kGap[] = {{0, "u_one"}, {2, "u_two"}};
static_assert(!IsDense(kGap));
constexpr IndexedName kSwapped[] = {{1, "u_two"}, {0, "u_one"}};
static_assert(!IsDense(kSwapped));

constexpr IndexedName kAttributes[] = {{0, "a_position"}, {2, "a_texture"}};

constexpr ProgramTemplate kTemplate = {
    "Sample",
    "@OPTIONS@attribute vec3 a_position;\n",
    "@OPTION_DEFINITIONS@uniform float u_one;\n",
    kOptions,
    kUniforms,
    kAttributes,
};

/// An effect that opens what the base keeps for its kin.
class SampleEffect : public EffectES20
{
public:
    explicit SampleEffect(EffectCache* cache = nullptr) : EffectES20(cache) {}

    void BindMeshAttributes(MeshES20*) override {}
    void ReleaseMeshAttributes(MeshES20*) override {}
    void BindMeshUniforms(MeshNode*) override {}

    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override
    {
        ++created;
        const unsigned int program = CreateFromTemplate(kTemplate, options, name);
        lastName = name;
        return program;
    }

    using EffectES20::Has;
    using EffectES20::HasAttribute;
    using EffectES20::LinkFixedProgram;
    using EffectES20::m_camera;
    using EffectES20::m_current;
    using EffectES20::m_currentProgram;
    using EffectES20::m_programs;
    using EffectES20::m_programsByOptions;
    using EffectES20::m_uniformNames;
    using EffectES20::Set;
    using EffectES20::SetClipPlanes;

    bool HasAttributeAt(unsigned int index) const { return HasAttribute(index); }

    int created = 0;
    std::string lastName;
};

/// An effect that has no programs of its own.
class BareEffect : public EffectES20
{
public:
    BareEffect() : EffectES20(nullptr) {}
    void BindMeshAttributes(MeshES20*) override {}
    void ReleaseMeshAttributes(MeshES20*) override {}
    void BindMeshUniforms(MeshNode*) override {}
};

/// Opens the table of a program.
class OpenProgram : public ShaderProgram
{
public:
    static const std::vector<int>& Locations(const ShaderProgram& program)
    {
        return program.*(&OpenProgram::m_locations);
    }

    static const std::vector<std::string>& Names(const ShaderProgram& program)
    {
        return program.*(&OpenProgram::m_uniformNames);
    }

    static const std::string& Name(const ShaderProgram& program)
    {
        return program.*(&OpenProgram::m_name);
    }
};

class EffectES20Test : public ::testing::Test
{
protected:
    EffectSettingsGuard settings;
    GLRecorder gl;
};

} // namespace

// Without the guard: CTest gives each test a process of its own, so these are its start values.
TEST(EffectSettings, StartAsStated)
{
    EXPECT_THAT(EffectES20::GetClipPlaneNormals(), IsEmpty());
    EXPECT_THAT(EffectES20::GetClipPlanePositions(), IsEmpty());
    EXPECT_EQ(EffectES20::GetClipPlaneOutlineSize(), 0.3f);
    EXPECT_EQ(EffectES20::GetClipPlaneOutlineColor(), glm::vec4(0.0f, 0.0f, 0.0f, 1.0f));
    EXPECT_TRUE(EffectES20::IsPocheColorEnabled());
    EXPECT_EQ(EffectES20::GetPocheColor(), glm::vec4(0.0f, 0.0f, 0.0f, 1.0f));
    EXPECT_EQ(EffectES20::GetAmbientColorIntensity(), 1.0f);
    EXPECT_EQ(EffectES20::GetAmbientTextureIntensity(), 1.24f);
    EXPECT_EQ(EffectES20::GetShadowIntensity(), 0.2f);
    EXPECT_EQ(EffectES20::GetSunShading(), 0.25f);
    EXPECT_FALSE(EffectES20::IsShadow());
    EXPECT_EQ(EffectES20::GetAdvancedMaterialShaderType(), EffectCache::AdvancedMaterial);
}

TEST_F(EffectES20Test, StartsWithOneReferenceAndNothingElse)
{
    EffectCache cache;
    SampleEffect effect(&cache);
    EXPECT_EQ(effect.GetReferenceCount(), 1);
    EXPECT_EQ(effect.GetCache(), &cache);
    EXPECT_EQ(effect.m_currentProgram, 0u);
    EXPECT_EQ(effect.m_camera, nullptr);
    EXPECT_THAT(effect.m_programs, IsEmpty());
    EXPECT_THAT(effect.m_programsByOptions, IsEmpty());
    EXPECT_FALSE(effect.clipPlanesActive);
    EXPECT_FALSE(effect.meshNodeFlag);
    EXPECT_THAT(gl.Calls(), IsEmpty());
}

TEST_F(EffectES20Test, IsAlwaysReady)
{
    EXPECT_TRUE(BareEffect().IsReady());
}

TEST_F(EffectES20Test, TheBaseHasNoProgramForAnyOptions)
{
    BareEffect effect;
    std::string name;
    EXPECT_EQ(effect.CreateProgramForOptions(3, name), 0u);
    EXPECT_EQ(effect.ProgramForOptions(3), 0u);
}

TEST_F(EffectES20Test, AProgramIsMadeOncePerMask)
{
    SampleEffect effect;
    const unsigned int first = effect.ProgramForOptions(1);
    const unsigned int second = effect.ProgramForOptions(4);
    EXPECT_NE(first, 0u);
    EXPECT_NE(first, second);
    EXPECT_EQ(effect.created, 2);
    gl.Clear();
    EXPECT_EQ(effect.ProgramForOptions(1), first);
    EXPECT_EQ(effect.created, 2);
    EXPECT_THAT(gl.Calls(), IsEmpty());
}

TEST_F(EffectES20Test, AProgramGetsTheUniformTableOfTheClass)
{
    gl.SetUniformLocation("u_one", 30);
    gl.SetUniformLocation("u_two", -1);
    SampleEffect effect;
    const unsigned int program = effect.ProgramForOptions(1);
    const ShaderProgram& table = effect.m_programs.at(program);
    EXPECT_EQ(table.get(), program);
    EXPECT_EQ(OpenProgram::Name(table), "Sample|FIRST");
    EXPECT_THAT(OpenProgram::Names(table), ElementsAre("u_one", "u_two"));
    EXPECT_THAT(OpenProgram::Locations(table), ElementsAre(30, -1));
}

TEST_F(EffectES20Test, EverythingIsAskedForWhenTheProgramIsLinked)
{
    SampleEffect effect;
    effect.UseOptions(0);
    EXPECT_EQ(gl.Count("glGetUniformLocation"), 2u);
    EXPECT_EQ(gl.Count("glGetAttribLocation"), 2u);
    EXPECT_LT(gl.IndexOf("glLinkProgram"), gl.IndexOf("glGetUniformLocation"));
    gl.Clear();
    effect.UseOptions(0);
    effect.Set(0, 1.0f);
    effect.Set(1, 1.0f);
    EXPECT_EQ(gl.Count("glGetUniformLocation"), 0u);
    EXPECT_EQ(gl.Count("glGetAttribLocation"), 0u);
}

TEST_F(EffectES20Test, WhatAProgramLacksIsNotSet)
{
    gl.SetUniformLocation("u_one", 30);
    gl.SetUniformLocation("u_two", -1);
    SampleEffect effect;
    effect.UseOptions(0);
    EXPECT_TRUE(effect.Has(0));
    EXPECT_FALSE(effect.Has(1));
    EXPECT_FALSE(effect.Has(2));
    gl.Clear();
    effect.Set(0, 2.0f);
    effect.Set(1, 2.0f);
    effect.Set(2, 2.0f);
    EXPECT_THAT(gl.Strings(), ElementsAre("glUniform1f(30, 2)"));
}

TEST_F(EffectES20Test, BeforeTheFirstUseOptionsNothingIsSet)
{
    SampleEffect effect;
    EXPECT_FALSE(effect.Has(0));
    EXPECT_FALSE(effect.HasAttributeAt(0));
    effect.Set(0, 1.0f);
    EXPECT_THAT(gl.Calls(), IsEmpty());
}

TEST_F(EffectES20Test, AFailedMaskIsNotTriedAgain)
{
    gl.SetLinkResult(0);
    SampleEffect effect;
    EXPECT_EQ(effect.ProgramForOptions(1), 0u);
    EXPECT_EQ(effect.ProgramForOptions(1), 0u);
    EXPECT_EQ(effect.created, 1);
    EXPECT_EQ(effect.m_programs.count(0), 1u);
}

TEST_F(EffectES20Test, EachFurtherFailedMaskAddsToTheTableOfProgramZero)
{
    gl.SetLinkResult(0);
    SampleEffect effect;
    effect.ProgramForOptions(1);
    effect.ProgramForOptions(4);
    EXPECT_THAT(OpenProgram::Names(effect.m_programs.at(0)),
                ElementsAre("u_one", "u_two", "u_one", "u_two"));
    EXPECT_THAT(OpenProgram::Locations(effect.m_programs.at(0)), ElementsAre(-1, -1, -1, -1));
}

TEST_F(EffectES20Test, AFailedProgramIsUsedInSilenceAndFedNothing)
{
    gl.SetLinkResult(0);
    SampleEffect effect;
    effect.UseOptions(1);
    EXPECT_EQ(effect.m_currentProgram, 0u);
    EXPECT_EQ(gl.Count("glUseProgram", {0}), 1u);
    gl.Clear();
    effect.Set(0, 1.0f);
    EXPECT_FALSE(effect.HasAttributeAt(0));
    EXPECT_FALSE(effect.HasAttribute(0, "a_position"));
    EXPECT_THAT(gl.Calls(), IsEmpty());
}

TEST_F(EffectES20Test, PendingErrorsAreClearedAfterTheProgramIsMade)
{
    SampleEffect effect;
    effect.ProgramForOptions(0);
    const std::size_t asked = gl.IndexOf("glGetUniformLocation");
    ASSERT_GT(asked, 0u);
    EXPECT_EQ(gl.Calls()[asked - 1].name, "glGetError");
    EXPECT_EQ(gl.Calls()[asked - 2].name, "glGetError");
}

TEST_F(EffectES20Test, UseOptionsSelectsAndBinds)
{
    SampleEffect effect;
    effect.UseOptions(1);
    EXPECT_EQ(effect.m_currentProgram, effect.ProgramForOptions(1));
    EXPECT_EQ(gl.CurrentProgram(), effect.m_currentProgram);
    EXPECT_TRUE(effect.m_current->IsBound());
    effect.UseOptions(0);
    EXPECT_EQ(gl.CurrentProgram(), effect.ProgramForOptions(0));
}

TEST_F(EffectES20Test, PrecompileOfAKnownMaskDoesNothing)
{
    SampleEffect effect;
    effect.UseOptions(4);
    effect.UseOptions(1);
    const unsigned int current = effect.m_currentProgram;
    gl.Clear();
    effect.Precompile(4);
    EXPECT_EQ(effect.m_currentProgram, current);
    EXPECT_EQ(effect.created, 2);
    EXPECT_THAT(gl.Calls(), IsEmpty());
}

TEST_F(EffectES20Test, PrecompileOfANewMaskChangesTheCurrentProgram)
{
    SampleEffect effect;
    effect.UseOptions(1);
    const unsigned int before = effect.m_currentProgram;
    effect.Precompile(4);
    EXPECT_NE(effect.m_currentProgram, before);
    EXPECT_EQ(effect.m_currentProgram, effect.ProgramForOptions(4));
    EXPECT_EQ(gl.CurrentProgram(), before);
}

TEST_F(EffectES20Test, AnUnknownBitCompilesTheSameDefinesUnderItsOwnKey)
{
    SampleEffect effect;
    const unsigned int known = effect.ProgramForOptions(1);
    const unsigned int unknown = effect.ProgramForOptions(1 | 2);
    EXPECT_NE(known, unknown);
    EXPECT_EQ(gl.ProgramTexts(known), gl.ProgramTexts(unknown));
    EXPECT_THAT(effect.m_programsByOptions, ElementsAre(Pair(1, known), Pair(3, unknown)));
}

TEST_F(EffectES20Test, ProgramsAreDeletedWithTheEffect)
{
    {
        SampleEffect effect;
        effect.ProgramForOptions(0);
        effect.ProgramForOptions(1);
        EXPECT_EQ(gl.Live(GLObjectKind::Program).size(), 2u);
    }
    EXPECT_EQ(gl.Count("glDeleteProgram"), 2u);
    EXPECT_EQ(gl.LiveCount(), 0u);
    EXPECT_THAT(gl.StrayDeletes(), IsEmpty());
}

TEST_F(EffectES20Test, AProgramLinkedAtConstructionIsDeletedToo)
{
    {
        SampleEffect effect;
        effect.LinkFixedProgram("Fixed", "void main() {}", "void main() {}", kAttributes);
        EXPECT_NE(effect.m_currentProgram, 0u);
        EXPECT_THAT(OpenProgram::Names(effect.m_programs.at(effect.m_currentProgram)), IsEmpty());
    }
    EXPECT_EQ(gl.Count("glDeleteProgram"), 1u);
    EXPECT_EQ(gl.LiveCount(), 0u);
}

TEST_F(EffectES20Test, UniformLocationAsksTheTableOfTheProgram)
{
    gl.SetUniformLocation("u_one", 30);
    gl.SetUniformLocation("u_two", -1);
    SampleEffect effect;
    const unsigned int program = effect.ProgramForOptions(0);
    gl.Clear();
    EXPECT_EQ(effect.UniformLocation(program, 0), 30);
    EXPECT_THAT(gl.Calls(), IsEmpty());
    EXPECT_EQ(effect.UniformLocation(program, 1), -1);
    EXPECT_EQ(gl.Count("glGetUniformLocation"), 1u);
}

TEST_F(EffectES20Test, AForeignProgramHasNoUniformsHereAndIsNotTakenOver)
{
    {
        SampleEffect effect;
        EXPECT_EQ(effect.UniformLocation(77, 0), -1);
    }
    EXPECT_THAT(gl.Calls(), IsEmpty());
}

TEST_F(EffectES20Test, HasAttributeAsksOnceForEachProgramAndName)
{
    gl.SetAttribLocation("a_texture", -1);
    gl.SetAttribLocation("a_other", 5);
    SampleEffect effect;
    const unsigned int program = effect.ProgramForOptions(0);
    gl.Clear();
    EXPECT_TRUE(effect.HasAttribute(program, "a_position"));
    EXPECT_FALSE(effect.HasAttribute(program, "a_texture"));
    EXPECT_THAT(gl.Calls(), IsEmpty());
    EXPECT_TRUE(effect.HasAttribute(program, "a_other"));
    EXPECT_TRUE(effect.HasAttribute(program, "a_other"));
    EXPECT_EQ(gl.Count("glGetAttribLocation"), 1u);
}

TEST_F(EffectES20Test, HasAttributeOfAForeignProgramIsAskedEachTime)
{
    // Its name may be given to another program while nobody tells.
    SampleEffect effect;
    effect.HasAttribute(77, "a_position");
    effect.HasAttribute(77, "a_position");
    EXPECT_EQ(gl.Count("glGetAttribLocation"), 2u);
}

TEST_F(EffectES20Test, AttributesOfTheTableAreKnownByIndex)
{
    gl.SetAttribLocation("a_position", 0);
    gl.SetAttribLocation("a_texture", -1);
    SampleEffect effect;
    effect.UseOptions(0);
    EXPECT_TRUE(effect.HasAttributeAt(0));
    EXPECT_FALSE(effect.HasAttributeAt(1));
    EXPECT_FALSE(effect.HasAttributeAt(2));
    gl.SetAttribLocation("a_texture", 2);
    effect.UseOptions(1);
    EXPECT_TRUE(effect.HasAttributeAt(2));
    effect.UseOptions(0);
    EXPECT_FALSE(effect.HasAttributeAt(2));
}

TEST_F(EffectES20Test, ACopyTakesTheSettingsAndOwnsNothing)
{
    EffectCache cache;
    {
        SampleEffect effect(&cache);
        effect.UseOptions(0);
        effect.clipPlanesActive = true;
        effect.meshNodeFlag = true;
        effect.AddReference();
        SampleEffect copy(effect);
        EXPECT_TRUE(copy.clipPlanesActive);
        EXPECT_TRUE(copy.meshNodeFlag);
        EXPECT_EQ(copy.GetReferenceCount(), 1);
        EXPECT_EQ(copy.GetCache(), nullptr);
        EXPECT_THAT(copy.m_programs, IsEmpty());

        SampleEffect assigned;
        assigned.UseOptions(0);
        assigned = effect;
        EXPECT_TRUE(assigned.clipPlanesActive);
        EXPECT_EQ(assigned.m_programs.size(), 1u);
        EXPECT_EQ(assigned.GetReferenceCount(), 1);
    }
    EXPECT_EQ(gl.LiveCount(), 0u);
    EXPECT_THAT(gl.StrayDeletes(), IsEmpty());
}

TEST_F(EffectES20Test, OptionsNameListsSetBitsThatAreKnownLowestFirst)
{
    EXPECT_EQ(EffectES20::OptionsName("Base", 0, kOptions), "Base");
    EXPECT_EQ(EffectES20::OptionsName("Base", 5, kOptions), "Base|FIRST|THIRD");
    EXPECT_EQ(EffectES20::OptionsName("Base", 2, kOptions), "Base");
    EXPECT_EQ(EffectES20::OptionsName("Base", ~std::uint64_t{0}, kOptions), "Base|FIRST|THIRD|LAST");
}

TEST_F(EffectES20Test, OptionsDefinesMakesOneLineForEachOption)
{
    EXPECT_EQ(EffectES20::OptionsDefines(0, kOptions), "");
    EXPECT_EQ(EffectES20::OptionsDefines(5, kOptions), "#define FIRST\n#define THIRD\n");
    EXPECT_EQ(EffectES20::OptionsDefines(2, kOptions), "");
    EXPECT_EQ(EffectES20::OptionsDefines(std::uint64_t{1} << 63, kOptions), "#define LAST\n");
}

TEST_F(EffectES20Test, ExpandTemplateReplacesTheFirstOccurrenceOnly)
{
    EXPECT_EQ(EffectES20::ExpandTemplate("a @X@ b @X@", {{"@X@", "1"}}), "a 1 b @X@");
}

TEST_F(EffectES20Test, ExpandTemplateLeavesATextWithoutTheMarker)
{
    EXPECT_EQ(EffectES20::ExpandTemplate("plain", {{"@X@", "1"}}), "plain");
    EXPECT_EQ(EffectES20::ExpandTemplate("", {{"@X@", "1"}}), "");
}

TEST_F(EffectES20Test, ExpandTemplateGoesByMarkerOrderOnTheTextAsItStands)
{
    // The value of @A@ brings in a second @B@, which is then the first to be found.
    EXPECT_EQ(EffectES20::ExpandTemplate("@A@ @B@", {{"@B@", "b"}, {"@A@", "[@B@]"}}), "[b] @B@");
}

TEST_F(EffectES20Test, ExpandTemplatePutsAnEmptyMarkerAtTheStart)
{
    EXPECT_EQ(EffectES20::ExpandTemplate("text", {{"", "<"}}), "<text");
}

TEST_F(EffectES20Test, ATemplateIsExpandedWithDefinesAndSnippets)
{
    SampleEffect effect;
    const unsigned int program = effect.ProgramForOptions(5);
    EXPECT_EQ(effect.lastName, "Sample|FIRST|THIRD");
    const std::string defines = "#define FIRST\n#define THIRD\n";
    EXPECT_THAT(gl.ProgramTexts(program),
                ElementsAre(ShaderPrelude + defines + "attribute vec3 a_position;\n",
                            ShaderPrelude + defines + "uniform float u_one;\n"));
    EXPECT_THAT(effect.m_uniformNames, ElementsAre(Pair(0, "u_one"), Pair(1, "u_two")));
    EXPECT_EQ(gl.Count("glBindAttribLocation"), 2u);
}

TEST_F(EffectES20Test, SnippetsAreAsStated)
{
    EXPECT_STREQ(FogUniforms, "uniform vec2 u_fogRange; uniform vec4 u_fogColor; const float LOG2 = 1.442695;");
    EXPECT_STREQ(FogCalc,
                 "float fogFactor = 1.0; { float _ov_z = gl_FragCoord.z / gl_FragCoord.w; float _ov_x = "
                 "(u_fogRange.y - _ov_z) / (u_fogRange.y - u_fogRange.x); fogFactor = clamp(_ov_x, 0.0, 1.0); }");
    EXPECT_STREQ(StipplingUniforms,
                 "uniform vec4 u_stippleColor; uniform float u_stippleSize; uniform float u_stippleOffset;");
    EXPECT_STREQ(StipplingFunction,
                 "vec4 OVSL_AddStippling(float offset, float size, vec2 fragCoord, vec4 color, vec4 src) { vec4 "
                 "result = src; if (mod(fragCoord.y, offset) < size && mod(fragCoord.x, offset) < size) { result = "
                 "mix(color, src, 0.5); } return result; }");
    EXPECT_STREQ(FogUniformsFull,
                 "uniform bool u_bFog; uniform vec2 u_fogRange; uniform vec4 u_fogColor; uniform bool u_bLinearFog; "
                 "uniform float u_fogDensity; const float LOG2 = 1.442695;");
    EXPECT_STREQ(FogCalcFull,
                 "float fogFactor = 1.0; if (u_bFog) { float z = gl_FragCoord.z / gl_FragCoord.w; if (u_bLinearFog) "
                 "{ float x = (u_fogRange.y - z) / (u_fogRange.y - u_fogRange.x); fogFactor = clamp(x, 0.0, 1.0); } "
                 "else { fogFactor = exp2(-u_fogDensity * u_fogDensity * z * z * LOG2); fogFactor = "
                 "clamp(fogFactor, 0.0, 1.0); } }");
}

TEST_F(EffectES20Test, SettersAreRead)
{
    EffectES20::SetClipPlaneOutlineSize(2.0f);
    EffectES20::SetClipPlaneOutlineColor(glm::vec4(0.1f, 0.2f, 0.3f, 0.4f));
    EffectES20::EnablePocheColor(false);
    EffectES20::SetPocheColor(glm::vec4(0.5f, 0.6f, 0.7f, 0.8f));
    EffectES20::SetAmbientColorIntensity(3.0f);
    EffectES20::SetAmbientTextureIntensity(4.0f);
    EffectES20::SetShadowIntensity(5.0f);
    EffectES20::SetSunShading(6.0f);
    EffectES20::SetShadow(true);
    EXPECT_EQ(EffectES20::GetClipPlaneOutlineSize(), 2.0f);
    EXPECT_EQ(EffectES20::GetClipPlaneOutlineColor(), glm::vec4(0.1f, 0.2f, 0.3f, 0.4f));
    EXPECT_FALSE(EffectES20::IsPocheColorEnabled());
    EXPECT_EQ(EffectES20::GetPocheColor(), glm::vec4(0.5f, 0.6f, 0.7f, 0.8f));
    EXPECT_EQ(EffectES20::GetAmbientColorIntensity(), 3.0f);
    EXPECT_EQ(EffectES20::GetAmbientTextureIntensity(), 4.0f);
    EXPECT_EQ(EffectES20::GetShadowIntensity(), 5.0f);
    EXPECT_EQ(EffectES20::GetSunShading(), 6.0f);
    EXPECT_TRUE(EffectES20::IsShadow());
}

TEST_F(EffectES20Test, AnyShaderTypeButPhongStoresTheAdvancedMaterial)
{
    EffectES20::SetAdvancedMaterialShaderType(EffectCache::AdvancedMaterialPhong);
    EXPECT_EQ(EffectES20::GetAdvancedMaterialShaderType(), EffectCache::AdvancedMaterialPhong);
    EffectES20::SetAdvancedMaterialShaderType(EffectCache::AdvancedMaterialPhong);
    EXPECT_EQ(EffectES20::GetAdvancedMaterialShaderType(), EffectCache::AdvancedMaterialPhong);
    EffectES20::SetAdvancedMaterialShaderType(EffectCache::Crosshatch);
    EXPECT_EQ(EffectES20::GetAdvancedMaterialShaderType(), EffectCache::AdvancedMaterial);
    EffectES20::SetAdvancedMaterialShaderType(EffectCache::Crosshatch);
    EXPECT_EQ(EffectES20::GetAdvancedMaterialShaderType(), EffectCache::AdvancedMaterial);
}

TEST_F(EffectES20Test, ClearClipPlanesLeavesOutlineAndPoche)
{
    EffectES20::AddClipPlane(glm::vec3(1, 0, 0), glm::vec3(2, 0, 0));
    EffectES20::SetClipPlaneOutlineSize(2.0f);
    EffectES20::SetClipPlaneOutlineColor(glm::vec4(1.0f));
    EffectES20::EnablePocheColor(false);
    EffectES20::SetPocheColor(glm::vec4(0.5f));
    EffectES20::ClearClipPlanes();
    EXPECT_THAT(EffectES20::GetClipPlaneNormals(), IsEmpty());
    EXPECT_THAT(EffectES20::GetClipPlanePositions(), IsEmpty());
    EXPECT_EQ(EffectES20::GetClipPlaneOutlineSize(), 2.0f);
    EXPECT_EQ(EffectES20::GetClipPlaneOutlineColor(), glm::vec4(1.0f));
    EXPECT_FALSE(EffectES20::IsPocheColorEnabled());
    EXPECT_EQ(EffectES20::GetPocheColor(), glm::vec4(0.5f));
}

namespace
{

constexpr IndexedName kClipUniforms[] = {{0, "normals"}, {1, "positions"}, {2, "count"}};
constexpr char kClipSource[] = "uniform vec3 normals[6], positions[6]; uniform int count;";
constexpr ProgramTemplate kClipTemplate = {"Clip", "", kClipSource, {}, kClipUniforms, {}};

class ClipEffect : public SampleEffect
{
public:
    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override
    {
        return CreateFromTemplate(kClipTemplate, options, name);
    }
};

} // namespace

TEST_F(EffectES20Test, OfSevenClipPlanesSevenAreStoredAndSixReachTheShader)
{
    ClipEffect effect;
    effect.UseOptions(0);
    for (int planes = 1; planes <= 7; ++planes)
    {
        EffectES20::AddClipPlane(glm::vec3(planes, 0, 0), glm::vec3(0, planes, 0));
        EXPECT_EQ(EffectES20::GetClipPlaneNormals().size(), static_cast<std::size_t>(planes));
        EXPECT_EQ(EffectES20::GetClipPlanePositions().size(), static_cast<std::size_t>(planes));
        const int expected = std::min(planes, 6);
        EXPECT_EQ(effect.SetClipPlanes(0, 1, 2, true), expected);
        EXPECT_THAT(gl.Uniform("count"), ElementsAre(static_cast<float>(expected)));
        EXPECT_EQ(gl.FindLast("glUniform3fv")->Int(1), expected);
    }
    const std::vector<GLCall> uploads = gl.All("glUniform3fv");
    const std::vector<float> normals = {1, 0, 0, 2, 0, 0, 3, 0, 0, 4, 0, 0, 5, 0, 0, 6, 0, 0};
    const std::vector<float> positions = {0, 1, 0, 0, 2, 0, 0, 3, 0, 0, 4, 0, 0, 5, 0, 0, 6, 0};
    EXPECT_EQ(uploads[uploads.size() - 2].floats, normals);
    EXPECT_EQ(uploads.back().floats, positions);
}

TEST_F(EffectES20Test, WithoutClipPlanesOnlyTheirNumberIsSet)
{
    ClipEffect effect;
    effect.UseOptions(0);
    EXPECT_EQ(effect.SetClipPlanes(0, 1, 2, true), 0);
    EffectES20::AddClipPlane(glm::vec3(1, 0, 0), glm::vec3(0));
    EffectES20::ForgetUniformValues();
    EXPECT_EQ(effect.SetClipPlanes(0, 1, 2, false), 0);
    EXPECT_EQ(gl.Count("glUniform3fv"), 0u);
    EXPECT_EQ(gl.Count("glUniform1i"), 2u);
    EXPECT_THAT(gl.Uniform("count"), ElementsAre(0.0f));
}

} // namespace OV::Test
