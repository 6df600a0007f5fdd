#include "orvane/effects/EffectES20.h"

#include "orvane/effects/LightShare.h"
#include "orvane/effects/ShaderSnippets.h"
#include "orvane/effects/SkySettings.h"
#include "orvane/math/Color.h"
#include "orvane/math/Matrix.h"
#include "orvane/math/Matrix3x3.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/scene/MeshNode.h"

#include <GL/glew.h>
#include <glm/gtc/type_ptr.hpp>

#include <algorithm>
#include <cstdint>

namespace OV
{

namespace
{

/// Puts a text behind a shader that calls its main by another name.
std::string Enclosed(const std::string& shader, const char* enclosure)
{
    return enclosure ? "#define main OVSL_Main\n" + shader + "\n#undef main\n" + enclosure : shader;
}

std::map<unsigned int, std::string> ToMap(const NameTable& table)
{
    std::map<unsigned int, std::string> names;
    for (const IndexedName& row : table)
    {
        names[row.index] = row.name;
    }
    return names;
}

/// Vectors that the uniforms of a vertex shader take besides the colours of materials, with room to spare.
constexpr int kOtherVectors = 64;

/// Calls visit with the name of each option that is set and known, lowest bit first.
template <class Visitor>
void ForEachOption(std::uint64_t options, const OptionTable& table, Visitor visit)
{
    for (int i = 0; i < 64; ++i)
    {
        const std::uint64_t bit = std::uint64_t{1} << i;
        if ((options & bit) == 0)
        {
            continue;
        }
        const OptionRow* row = std::find_if(
            table.begin(), table.end(), [bit](const OptionRow& r) { return r.bit == bit; });
        if (row != table.end())
        {
            visit(row->name);
        }
    }
}

} // namespace

EffectES20::EffectES20(EffectCache* cache) : m_cache(cache) {}

EffectES20::EffectES20(const EffectES20& other) :
    clipPlanesActive(other.clipPlanesActive), meshNodeFlag(other.meshNodeFlag)
{
}

EffectES20& EffectES20::operator=(const EffectES20& other)
{
    clipPlanesActive = other.clipPlanesActive;
    meshNodeFlag = other.meshNodeFlag;
    return *this;
}

EffectES20::~EffectES20()
{
    if (m_cache != nullptr)
    {
        m_cache->Forget(this);
    }
    // Without entry points there never was a program to delete.
    if (glDeleteProgram != nullptr)
    {
        for (const auto& entry : m_programs)
        {
            glDeleteProgram(entry.first);
        }
    }
    for (const auto& entry : m_programs)
    {
        if (ShaderProgram::s_fed == &entry.second)
        {
            ShaderProgram::s_fed = nullptr;
        }
    }
}

bool EffectES20::IsReady()
{
    return true;
}

unsigned int EffectES20::CreateProgramForOptions(std::uint64_t, std::string&)
{
    return 0;
}

void EffectES20::Precompile(std::uint64_t options)
{
    ProgramForOptions(UsedOptions(options));
}

std::uint64_t EffectES20::UsedOptions(std::uint64_t options) const
{
    const bool noPlanes = m_discardsAtPlanes && s_clipPlaneNormals.empty();
    const bool atVertices = m_knowsMaterialColors && s_takesMaterialColors;
    return options | (noPlanes ? OptionNoClipPlanes : 0) | (atVertices ? OptionMaterialColors : 0)
           | (m_takesLightShare ? s_lightShareOption : 0);
}

unsigned int EffectES20::ProgramForOptions(std::uint64_t options)
{
    const auto known = m_programsByOptions.find(options);
    if (known != m_programsByOptions.end())
    {
        return known->second;
    }
    std::string name;
    const unsigned int program = CreateProgramForOptions(options, name);
    glGetError();
    try
    {
        RegisterProgram(program, name);
        m_programsByOptions[options] = program;
    }
    catch (...)
    {
        AbandonProgram(program);
        throw;
    }
    return program;
}

// A program that could not be entered in the tables is made again when it is wanted next.
void EffectES20::AbandonProgram(unsigned int program)
{
    if (program != 0)
    {
        glDeleteProgram(program);
        m_programs.erase(program);
        m_attributesByProgram.erase(program);
        m_attributeAnswers.erase(program);
    }
    m_currentProgram = 0;
}

void EffectES20::RegisterProgram(unsigned int program, const std::string& name)
{
    // A second failed program finds the entry of the first and adds to its table: that is meant.
    ShaderProgram& table =
        m_programs.emplace(program, ShaderProgram(static_cast<int>(program), name)).first->second;
    table.m_firstShareUniform = m_firstShareUniform;
    if (program != 0 && m_attributeNames.count(AttributeMaterial) != 0)
    {
        table.m_materialColors = glGetUniformLocation(program, "u_materialColors");
    }
    for (const auto& [index, uniformName] : m_uniformNames)
    {
        table.m_locations.push_back(-1);
        table.m_uniformNames.push_back(uniformName);
    }
    if (program == 0)
    {
        return;
    }
    // All that the program has is asked for here, so that drawing never asks.
    for (const auto& [index, uniformName] : m_uniformNames)
    {
        table.GetLocation(static_cast<int>(index));
    }
    for (const auto& [index, attributeName] : m_attributeNames)
    {
        if (HasAttribute(program, attributeName.c_str()))
        {
            m_attributesByProgram[program] |= 1u << index;
        }
    }
}

EffectES20::Selection EffectES20::MakeSelection(std::uint64_t options)
{
    Selection made{};
    made.options = options;
    made.program = ProgramForOptions(options);
    made.table = &m_programs.find(made.program)->second;
    const auto attributes = m_attributesByProgram.find(made.program);
    made.attributes = attributes == m_attributesByProgram.end() ? 0 : attributes->second;
    for (int index = 0; index < 64; ++index)
    {
        made.uniforms |= static_cast<std::uint64_t>(made.table->Exists(index)) << index;
    }
    made.table->m_known.Reserve(made.table->m_uniformNames.size());
    return made;
}

const EffectES20::Selection& EffectES20::Select(std::uint64_t options)
{
    for (const Selection& selection : m_selections)
    {
        if (selection.options == options)
        {
            return selection;
        }
    }
    m_selections.push_back(MakeSelection(options));
    return m_selections.back();
}

void EffectES20::UseOptions(std::uint64_t options)
{
    const std::uint64_t used = UsedOptions(options);
    const Selection& selection = Select(used);
    m_currentProgram = selection.program;
    m_current = selection.table;
    m_currentAttributes = selection.attributes;
    m_currentUniforms = selection.uniforms;
    if (m_current->m_knownSince != s_valuesForgotten)
    {
        m_current->m_known.ForgetAll();
        m_current->m_knownSince = s_valuesForgotten;
    }
    // Others may have drawn since the last one ended.
    EndUse();
    m_current->Bind();
    ShaderProgram::s_fed = m_current;
    FeedLightShare(used);
}

void EffectES20::FeedLightShare(std::uint64_t options)
{
    if ((options & OptionLightShares) != 0 && m_currentProgram != 0 && m_current->m_shareSince != s_lightSharesSet)
    {
        s_lightShare->Feed(*m_current, m_current->m_firstShareUniform);
        m_current->m_shareSince = s_lightSharesSet;
    }
}

int EffectES20::MostMaterialColors()
{
    static const int most = [] {
        int components = 0;
        glGetIntegerv(GL_MAX_VERTEX_UNIFORM_COMPONENTS, &components);
        return std::clamp((components / 4 - kOtherVectors) / 2, 16, 256);
    }();
    return most;
}

void EffectES20::SendMaterialColors(const glm::vec4* colors, int count, std::uint64_t revision)
{
    if (m_current == nullptr || m_current->m_materialColors == -1)
    {
        return;
    }
    const bool isFed = ShaderProgram::s_fed == m_current;
    if (isFed && m_current->m_known.HoldsColors(revision))
    {
        return;
    }
    glUniform4fv(m_current->m_materialColors, count, glm::value_ptr(*colors));
    m_current->m_known.KeepColors(isFed ? revision : 0);
}

int EffectES20::UniformLocation(unsigned int program, int index)
{
    const auto found = m_programs.find(program);
    return found == m_programs.end() ? -1 : found->second[index].location;
}

bool EffectES20::HasAttribute(unsigned int program, const char* name)
{
    if (program == 0)
    {
        return false;
    }
    if (m_programs.count(program) == 0)
    {
        return glGetAttribLocation(program, name) != -1;
    }
    std::map<std::string, bool>& answers = m_attributeAnswers[program];
    const auto known = answers.find(name);
    if (known != answers.end())
    {
        return known->second;
    }
    return answers[name] = glGetAttribLocation(program, name) != -1;
}

void EffectES20::AddReference()
{
    ++m_refCount;
}

bool EffectES20::Release()
{
    if (--m_refCount != 0)
    {
        return false;
    }
    delete this;
    return true;
}

std::string EffectES20::OptionsName(const std::string& baseName, std::uint64_t options,
                                    const OptionTable& table)
{
    std::string name = baseName;
    ForEachOption(options, table, [&name](const char* option) {
        name += '|';
        name += option;
    });
    return name;
}

std::string EffectES20::OptionsDefines(std::uint64_t options, const OptionTable& table)
{
    std::string defines;
    ForEachOption(options, table, [&defines](const char* option) {
        defines += "#define ";
        defines += option;
        defines += '\n';
    });
    return defines;
}

std::string EffectES20::ExpandTemplate(const std::string& source,
                                       const std::map<std::string, std::string>& replacements)
{
    std::string text = source;
    for (const auto& [marker, value] : replacements)
    {
        const std::size_t position = text.find(marker);
        if (position != std::string::npos)
        {
            text.replace(position, marker.size(), value);
        }
    }
    return text;
}

unsigned int EffectES20::CreateFromTemplate(const ProgramTemplate& source, std::uint64_t options,
                                            std::string& name, const NameTable& further)
{
    name = OptionsName(source.baseName, options, source.options);
    const std::string defines = OptionsDefines(options, source.options);
    const bool isShared = (options & OptionLightShares) != 0 && s_lightShare;
    const std::map<std::string, std::string> replacements = {
        {"@OPTIONS@", defines},
        {"@OPTION_DEFINITIONS@", defines},
        {"@FOG_UNIFORMS@", FogUniforms},
        {"@FOG_CALC@", FogCalc},
        {"@FOG_CALC_FRAGMENT@", FogCalc},
        {"@LIGHT_SHARE@", isShared ? s_lightShare->Source() : ""},
        {"@STIPPLING_UNIFORMS@", StipplingUniforms},
        {"@STIPPLING_FUNCTION@", StipplingFunction},
        {"@INCLUDE_OVSL_ADD_STIPPLING_FUNCTION@", StipplingFunction},
    };
    m_uniformNames = ToMap(source.uniforms);
    m_attributeNames = ToMap(source.attributes);
    std::string fragmentStart = (options & OptionNoClipPlanes) != 0 ? "#define NO_CLIP_PLANES\n" : "";
    fragmentStart += (options & OptionReflectAtPixels) != 0 ? "#define REFLECT_AT_PIXELS\n" : "";
    std::string vertexStart;
    if ((options & OptionMaterialColors) != 0)
    {
        vertexStart = "#define MATERIAL_COLORS " + std::to_string(MostMaterialColors()) + "\n";
        fragmentStart += vertexStart;
        m_attributeNames[AttributeMaterial] = "a_material";
    }
    for (const IndexedName& row : further)
    {
        m_uniformNames[row.index] = row.name;
    }
    m_firstShareUniform = static_cast<int>(source.uniforms.size() + further.size());
    std::string vertex = ExpandTemplate(source.vertexSource, replacements);
    std::string fragment = ExpandTemplate(source.fragmentSource, replacements);
    if (isShared)
    {
        vertex = Enclosed(vertex, s_lightShare->VertexEnclosure());
        fragment = Enclosed(fragment, s_lightShare->Enclosure());
        vertex = "#define LIGHT_SHARE\n" + vertex;
        fragmentStart += "#extension GL_OES_standard_derivatives : enable\n#define LIGHT_SHARE\n";
        for (const IndexedName& row : s_lightShare->Uniforms())
        {
            m_uniformNames[static_cast<unsigned int>(m_firstShareUniform) + row.index] = row.name;
        }
    }
    m_currentProgram =
        static_cast<unsigned int>(LoadProgram(name, vertexStart + vertex, fragmentStart + fragment, m_attributeNames));
    return m_currentProgram;
}

void EffectES20::LinkFixedProgram(const std::string& name, const char* vertexSource,
                                  const char* fragmentSource, const NameTable& attributes)
{
    m_currentProgram = static_cast<unsigned int>(
        LoadProgram(name, vertexSource, fragmentSource, ToMap(attributes)));
    if (m_currentProgram == 0)
    {
        return;
    }
    try
    {
        RegisterProgram(m_currentProgram, name);
    }
    catch (...)
    {
        AbandonProgram(m_currentProgram);
        throw;
    }
}

void EffectES20::EnableAttribute(unsigned int attribute, int components, int stride, int offset)
{
    glVertexAttribPointer(attribute, components, GL_FLOAT, GL_FALSE, stride,
                          reinterpret_cast<const void*>(static_cast<std::intptr_t>(offset)));
    const std::uint32_t bit = 1u << attribute;
    s_spareAttributes &= ~bit;
    if ((s_enabledAttributes & bit) == 0 || ShaderProgram::s_fed == nullptr)
    {
        glEnableVertexAttribArray(attribute);
        s_enabledAttributes |= bit;
        s_disabledAttributes &= ~bit;
    }
}

void EffectES20::DisableAttributeNow(unsigned int attribute)
{
    const std::uint32_t bit = 1u << attribute;
    glDisableVertexAttribArray(attribute);
    s_enabledAttributes &= ~bit;
    s_spareAttributes &= ~bit;
}

void EffectES20::DisableAttributesNow()
{
    const std::uint32_t spare = s_spareAttributes;
    unsigned int attribute = 0;
    for (std::uint32_t left = spare; left != 0; left >>= 1, ++attribute)
    {
        if ((left & 1u) != 0)
        {
            glDisableVertexAttribArray(attribute);
        }
    }
    s_enabledAttributes &= ~spare;
    s_spareAttributes = 0;
    s_disabledAttributes |= spare;
}

void EffectES20::EndUse()
{
    DisableSpareAttributes();
    s_enabledAttributes = 0;
    s_disabledAttributes = 0;
    ShaderProgram::s_fed = nullptr;
}

void EffectES20::ForgetUniformValues()
{
    ++s_valuesForgotten;
    if (ShaderProgram::s_fed != nullptr)
    {
        ShaderProgram::s_fed->m_known.ForgetAll();
        ShaderProgram::s_fed->m_knownSince = s_valuesForgotten;
    }
}

void EffectES20::Send(int index, const Matrix& value)
{
    const int location = m_current->m_locations[static_cast<std::size_t>(index)];
    if (ShaderProgram::s_fed != m_current)
    {
        glUniformMatrix4fv(location, 1, GL_FALSE, value.m);
        // It went to the program in use, whichever that is.
        ForgetUniformValues();
    }
    else if (m_current->m_known.Renew<sizeof(value.m)>(index, value.m))
    {
        glUniformMatrix4fv(location, 1, GL_FALSE, value.m);
    }
}

void EffectES20::Send(int index, const Matrix3x3& value)
{
    const int location = m_current->m_locations[static_cast<std::size_t>(index)];
    if (ShaderProgram::s_fed != m_current)
    {
        glUniformMatrix3fv(location, 1, GL_FALSE, value.m);
        ForgetUniformValues();
    }
    else if (m_current->m_known.Renew<sizeof(value.m)>(index, value.m))
    {
        glUniformMatrix3fv(location, 1, GL_FALSE, value.m);
    }
}

Matrix EffectES20::ModelViewProjection(MeshNode* node) const
{
    Matrix matrix;
    matrix.Multiply(m_camera->GetMVP(), *node->GetGlobalMatrix());
    return matrix;
}

void EffectES20::SetNormalMatrix(int index, MeshNode* node)
{
    Set(index, node->GetGlobalNormalMatrix());
}

int EffectES20::SendClipPlanes(int normals, int positions, int count, bool wanted)
{
    const int number =
        wanted ? std::min(static_cast<int>(s_clipPlaneNormals.size()), MaxClipPlanes) : 0;
    if (number > 0)
    {
        SetVectors(normals, number, s_clipPlaneNormals);
        SetVectors(positions, number, s_clipPlanePositions);
    }
    Set(count, number);
    return number;
}

void EffectES20::SetVectors(int index, int count, const std::vector<glm::vec3>& vectors)
{
    if (!Has(index))
    {
        return;
    }
    const float* const values = glm::value_ptr(vectors.front());
    const std::size_t bytes = static_cast<std::size_t>(count) * sizeof(glm::vec3);
    if (!Holds(index, values, bytes))
    {
        m_current->Uniform3fv(index, count, values);
        Keep(index, values, bytes);
    }
}

void EffectES20::SetFog(int range, int color)
{
    const SkySettings& sky = SkySettings::inst();
    if (sky.UseFog())
    {
        Set(range, sky.GetFogStart(), sky.GetFogEnd());
        Set(color, sky.IsMonotone() ? Color(1.0f, 1.0f, 1.0f, 1.0f) : sky.GetFogColor());
    }
}

} // namespace OV
