#pragma once

#include "orvane/Export.h"
#include "orvane/effects/EffectCache.h"
#include "orvane/effects/ProgramTemplate.h"
#include "orvane/effects/ShaderProgram.h"

#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <cstdint>
#include <map>
#include <string>
#include <type_traits>
#include <vector>

namespace OV
{

class CameraNodeES20;
class LightShare;
class Matrix;
class Matrix3x3;
class MeshES20;
class MeshNode;

/// One way of shading: a family of GL programs, their uniforms and the code that feeds them.
///
/// Owns its programs, one for each set of options met, compiled when it is first met. Counted
/// by reference; a new effect has one reference, which its maker gives back with Release. All
/// operations but the settings need GL. The settings are global to the process; a host changes
/// them between frames.
class ORVANE_API EffectES20
{
public:
    /// How many of the global clip planes reach a shader.
    static constexpr int MaxClipPlanes = 6;

    /// Beside the options of any table: the fragment shader is made with NO_CLIP_PLANES defined.
    static constexpr std::uint64_t OptionNoClipPlanes = std::uint64_t{1} << 63;

    /// Likewise with REFLECT_AT_PIXELS.
    static constexpr std::uint64_t OptionReflectAtPixels = std::uint64_t{1} << 62;

    /// Likewise with MATERIAL_COLORS, and the vertex shader too.
    static constexpr std::uint64_t OptionMaterialColors = std::uint64_t{1} << 55;

    /// The attribute of such a program that is the number of a vertex's material, among those of SendMaterialColors.
    static constexpr unsigned int AttributeMaterial = 4;

    /// Likewise: the number, from 1, of the light share's text that the fragment shader has in it.
    static constexpr std::uint64_t OptionLightShares = std::uint64_t{0x3F} << 56;

    /// Always true.
    virtual bool IsReady();

    /// Points the vertex attributes at the buffer of a mesh, which is bound.
    virtual void BindMeshAttributes(MeshES20* mesh) = 0;

    /// Undoes the attribute setup.
    virtual void ReleaseMeshAttributes(MeshES20* mesh) = 0;

    /// Sets what changes from node to node.
    virtual void BindMeshUniforms(MeshNode* node) = 0;

    /// Compiles and links the program of a set of options.
    /// @param name filled with the diagnostic name.
    /// @return the GL name, owned by this effect from then on; 0 on failure.
    virtual unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name);

    /// Deletes the programs and leaves the cache, if that is still there.
    virtual ~EffectES20();

    /// Compiles a set of options ahead of its first use with the clip planes as they are.
    void Precompile(std::uint64_t options);

    /// The program of a set of options, made on first sight. A failed one is 0 and is not tried
    /// again.
    unsigned int ProgramForOptions(std::uint64_t options);

    /// Makes the program of a set of options the one in use and the one that is fed. While the list
    /// of clip planes is empty it is one that can't discard by them.
    void UseOptions(std::uint64_t options);

    /// The location of a uniform in a program of this effect; -1 for any other program.
    int UniformLocation(unsigned int program, int index);

    /// Whether a program has an attribute. GL is asked once for each program and name.
    bool HasAttribute(unsigned int program, const char* name);

    /// Takes one more reference.
    void AddReference();

    /// Gives one reference back and destroys the effect with the last one.
    /// @return whether the effect was destroyed.
    bool Release();

    /// How many references are out.
    int GetReferenceCount() const
    {
        return m_refCount;
    }

    /// The cache that made this effect; null once it is gone.
    EffectCache* GetCache() const
    {
        return m_cache;
    }

    /// A base name with "|" and the name of each set option that the table knows, lowest bit
    /// first.
    static std::string OptionsName(const std::string& baseName, std::uint64_t options,
                                   const OptionTable& table);

    /// One line, `#define NAME`, for each set option that the table knows, lowest bit first.
    static std::string OptionsDefines(std::uint64_t options, const OptionTable& table);

    /// Puts texts in the place of markers, in the order of the markers. Only the first
    /// occurrence of each is replaced, once.
    static std::string ExpandTemplate(const std::string& source,
                                      const std::map<std::string, std::string>& replacements);

    /// Adds a plane that cuts away what lies on the side of its normal, in world space. Any
    /// number is kept, the first six count.
    static void AddClipPlane(glm::vec3 normal, glm::vec3 position);

    /// Removes the planes; outline and poche settings stay.
    static void ClearClipPlanes();
    static const std::vector<glm::vec3>& GetClipPlaneNormals();
    static const std::vector<glm::vec3>& GetClipPlanePositions();

    /// Width, in world units, of the outline along a cut.
    static float GetClipPlaneOutlineSize();
    static void SetClipPlaneOutlineSize(float size);
    static const glm::vec4& GetClipPlaneOutlineColor();
    static void SetClipPlaneOutlineColor(const glm::vec4& color);

    /// Whether the inside of a cut solid shows in the poche colour.
    static bool IsPocheColorEnabled();
    static void EnablePocheColor(bool enable);
    static const glm::vec4& GetPocheColor();
    static void SetPocheColor(const glm::vec4& color);

    static float GetAmbientColorIntensity();
    static void SetAmbientColorIntensity(float intensity);
    static float GetAmbientTextureIntensity();
    static void SetAmbientTextureIntensity(float intensity);

    /// How much of the light a shadow takes, 0 for none to 1 for all.
    static float GetShadowIntensity();
    static void SetShadowIntensity(float intensity);
    static float GetSunShading();
    static void SetSunShading(float shading);
    static bool IsShadow();
    static void SetShadow(bool shadow);

    /// Which model stands for the advanced materials.
    static EffectCache::EffectType GetAdvancedMaterialShaderType();

    /// Stores AdvancedMaterialPhong when given that, and AdvancedMaterial for any other type.
    static void SetAdvancedMaterialShaderType(EffectCache::EffectType type);

    /// Lays a share of the light into the effects that shade surfaces from their next Apply on.
    /// @param share not owned; to be set anew after its values have changed. Null lays none.
    /// @return false, with none in force, for a text beyond the first 63 of a process.
    static bool SetLightShare(LightShare* share);
    static LightShare* GetLightShare();

    /// Whether see-through surfaces are drawn with the blending that a host has set, or has left out, in
    /// place of that over what is behind them. Off at first; to be put back after what it is for.
    static void LeaveBlending(bool leave);

    /// Whether the effects BasicMaterialEffectES20, AdvancedMaterialEffectES20 and
    /// AdvancedMaterialPhongEffectES20 take the diffuse and the ambient colour of the material whose number
    /// AttributeMaterial is, in place of the material's that is drawn with, from their next Apply on. The opacity stays
    /// that material's. Who draws points at the attribute and calls SendMaterialColors. Off at first; to be put back
    /// after what it is for.
    static void TakeMaterialColors(bool take);
    static bool TakesMaterialColors() { return s_takesMaterialColors; }

    /// Of how many materials a program can have the colours: 256, or fewer where the driver has no room for them. The
    /// same for the length of a process. GL.
    static int MostMaterialColors();

    /// Gives colours of materials to the program in use, where it takes them. GL.
    /// @param colors of each material, by number, the diffuse and then the ambient colour.
    /// @param count of the colours: at most two for each of MostMaterialColors.
    /// @param revision another number, not 0, for all other colours of the process: what the program holds is not
    ///        sent again.
    void SendMaterialColors(const glm::vec4* colors, int count, std::uint64_t revision);

    /// Disables the attributes that were enabled for an earlier mesh and not again for the one at
    /// hand, between BindMeshAttributes and a draw. GL.
    static void DisableSpareAttributes()
    {
        if (s_spareAttributes != 0)
        {
            DisableAttributesNow();
        }
    }

    /// Ends what UseOptions began, in Remove: attributes that no mesh needs are disabled. GL.
    ///
    /// Until the next UseOptions all that is set is sent, and what is disabled is disabled at once,
    /// since others may draw in between.
    static void EndUse();

    /// Takes no value of a uniform for known from now on, since others may have written it.
    static void ForgetUniformValues();

    /// Written before each mesh is drawn: whether the global clip planes cut it.
    bool clipPlanesActive = false;

    /// Written before each mesh is drawn: MeshFlagEffectFlag of the mesh.
    bool meshNodeFlag = false;

protected:
    explicit EffectES20(EffectCache* cache);

    /// A copy takes the settings and starts with one reference, no cache and no program.
    EffectES20(const EffectES20& other);
    EffectES20& operator=(const EffectES20& other);

    /// What CreateProgramForOptions of an effect with options comes down to.
    /// @param further uniforms that only the program of these options has, behind those of the template.
    unsigned int CreateFromTemplate(const ProgramTemplate& source, std::uint64_t options,
                                    std::string& name, const NameTable& further = {});

    /// Links the one program of an effect without options, selects it and owns it. Its uniform
    /// table is empty.
    void LinkFixedProgram(const std::string& name, const char* vertexSource,
                          const char* fragmentSource, const NameTable& attributes);

    /// Sets a uniform of the program in use by one of ShaderProgram::SetUniform, if the program
    /// has it. From UseOptions to EndUse a value that it holds already is not sent again.
    template <class Value>
    void Set(int index, const Value& value)
    {
        // Not from a copy: read in other words than it has just been written in, the processor waits for it.
        if (Has(index) && !Holds<sizeof(Value)>(index, &value))
        {
            SetAnew(index, &value, sizeof(value), value);
        }
    }

    template <class First, class... Values>
    void Set(int index, const First& first, const Values&... values)
    {
        const std::common_type_t<First, Values...> row[] = {first, values...};
        if (Has(index) && !Holds<sizeof(row)>(index, row))
        {
            SetAnew(index, row, sizeof(row), first, values...);
        }
    }

    /// Likewise, in the shortest way: this is what nearly every draw sends.
    void Set(int index, const Matrix& value)
    {
        if (Has(index))
        {
            Send(index, value);
        }
    }

    void Set(int index, const Matrix3x3& value)
    {
        if (Has(index))
        {
            Send(index, value);
        }
    }

    /// Whether the program in use has a uniform. Settled when the program was linked.
    bool Has(int index) const
    {
        return index < 64 ? ((m_currentUniforms >> index) & 1u) != 0
                          : m_current != nullptr && m_current->Exists(index);
    }

    /// Whether the program in use has an attribute of the class's table. Settled when the
    /// program was linked.
    bool HasAttribute(unsigned int attribute) const
    {
        return ((m_currentAttributes >> attribute) & 1u) != 0;
    }

    /// Points an attribute at floats of the bound buffer, from a byte offset on, and enables it,
    /// unless an earlier mesh has left it so.
    static void EnableAttribute(unsigned int attribute, int components, int stride, int offset);

    /// Says that a mesh needs the attribute no more. From UseOptions to EndUse it stays enabled
    /// until DisableSpareAttributes, since the next mesh is most likely to need it again.
    static void DisableAttribute(unsigned int attribute)
    {
        if (ShaderProgram::s_fed != nullptr)
        {
            // What nobody here has enabled, others may have.
            s_spareAttributes |= (1u << attribute) & ~s_disabledAttributes;
            return;
        }
        DisableAttributeNow(attribute);
    }

    /// Object space to clip space: the view-projection of the camera times the node's matrix.
    Matrix ModelViewProjection(MeshNode* node) const;

    /// The matrix that carries normals of the node to world space; their length is not kept.
    void SetNormalMatrix(int index, MeshNode* node);

    /// Uploads the clip planes when they are wanted and there are any, then their number, to a
    /// program that can cut.
    /// @return how many.
    int SetClipPlanes(int normals, int positions, int count, bool wanted)
    {
        return Has(count) ? SendClipPlanes(normals, positions, count, wanted) : 0;
    }

    /// Range and colour of the fog, when there is fog.
    void SetFog(int range, int color);

    std::map<std::uint64_t, unsigned int> m_programsByOptions;
    std::map<unsigned int, ShaderProgram> m_programs;
    unsigned int m_currentProgram = 0;
    int m_refCount = 1;
    CameraNodeES20* m_camera = nullptr;
    EffectCache* m_cache = nullptr;
    std::map<unsigned int, std::string> m_uniformNames;

    /// Names of the attributes of the class, by index; below 32.
    std::map<unsigned int, std::string> m_attributeNames;

    /// The uniform table that Set feeds; null before the first UseOptions.
    ShaderProgram* m_current = nullptr;

    /// Set at construction where the fragment shader discards what the clip planes cut. UseOptions
    /// then adds OptionNoClipPlanes while there are none: a shader that might discard costs the
    /// driver its early depth test.
    bool m_discardsAtPlanes = false;

    /// Set at construction where the fragment shader has a place for a light share.
    bool m_takesLightShare = false;

    /// Set at construction where the shaders know MATERIAL_COLORS.
    bool m_knowsMaterialColors = false;

    static std::vector<glm::vec3> s_clipPlaneNormals;
    static std::vector<glm::vec3> s_clipPlanePositions;
    static float s_clipPlaneOutlineSize;
    static glm::vec4 s_clipPlaneOutlineColor;
    static bool s_pocheColorEnabled;
    static glm::vec4 s_pocheColor;
    static float s_ambientColorIntensity;
    static float s_ambientTextureIntensity;
    static float s_shadowIntensity;
    static float s_sunShading;
    static bool s_isShadow;
    static EffectCache::EffectType s_advancedMaterialShaderType;
    static LightShare* s_lightShare;
    static bool s_leavesBlending;
    static bool s_takesMaterialColors;

private:
    friend class EffectCache;
    friend class EffectReferencePlaceholder;

    /// What UseOptions comes to, without a search.
    struct Selection
    {
        std::uint64_t options;
        unsigned int program;
        ShaderProgram* table;
        std::uint32_t attributes;
        std::uint64_t uniforms; ///< those of the first 64 that the program has, as bits
    };

    const Selection& Select(std::uint64_t options);
    Selection MakeSelection(std::uint64_t options);

    std::uint64_t UsedOptions(std::uint64_t options) const;
    void FeedLightShare(std::uint64_t options);
    void RegisterProgram(unsigned int program, const std::string& name);
    void AbandonProgram(unsigned int program);
    void Send(int index, const Matrix& value);
    void Send(int index, const Matrix3x3& value);
    int SendClipPlanes(int normals, int positions, int count, bool wanted);
    void SetVectors(int index, int count, const std::vector<glm::vec3>& vectors);
    static void DisableAttributesNow();
    static void DisableAttributeNow(unsigned int attribute);

    bool Holds(int index, const void* value, std::size_t bytes) const
    {
        return ShaderProgram::s_fed == m_current && m_current->m_known.Holds(index, value, bytes);
    }

    /// The same for a size that is known, which takes a few comparisons in place of a call.
    template <std::size_t Bytes>
    bool Holds(int index, const void* value) const
    {
        return ShaderProgram::s_fed == m_current && m_current->m_known.template Holds<Bytes>(index, value);
    }

    /// Apart from where effects set what mostly is held: what a material takes of their code and the driver's hardly
    /// fits into the processor's first level.
    template <class... Values>
    [[gnu::cold, gnu::noinline]] void SetAnew(int index, const void* row, std::size_t bytes, const Values&... values)
    {
        m_current->SetUniform(index, values...);
        Keep(index, row, bytes);
    }

    void Keep(int index, const void* value, std::size_t bytes)
    {
        if (ShaderProgram::s_fed == m_current)
        {
            m_current->m_known.Keep(index, value, bytes);
        }
        else
        {
            // It went to the program in use, whichever that is.
            ForgetUniformValues();
        }
    }

    // As bits: arrays that are enabled, those of them that no mesh needs at the moment, and those
    // that have been disabled since UseOptions, and not enabled again.
    static std::uint32_t s_enabledAttributes;
    static std::uint32_t s_spareAttributes;
    static std::uint32_t s_disabledAttributes;
    static std::uint64_t s_valuesForgotten; // so often
    static std::uint64_t s_lightShareOption; // of OptionLightShares
    static std::uint64_t s_lightSharesSet;   // so often

    // Where the uniforms of a light share begin: behind those of the class.
    int m_firstShareUniform = 0; ///< of the program that was made last

    // How many of the references belong to placeholders.
    int m_placeholders = 0;

    // One answer for each attribute ever asked of a program.
    std::map<unsigned int, std::map<std::string, bool>> m_attributeAnswers;
    std::map<unsigned int, std::uint32_t> m_attributesByProgram;
    std::uint32_t m_currentAttributes = 0;
    std::uint64_t m_currentUniforms = 0;

    // One for each set of options that was ever used: few.
    std::vector<Selection> m_selections;
};

} // namespace OV
