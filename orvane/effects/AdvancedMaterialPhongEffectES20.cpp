#include "orvane/effects/AdvancedMaterialPhongEffectES20.h"

#include "orvane/effects/detail/AdvancedMaterialTables.h"
#include "orvane/effects/shaders/AdvancedMaterialEffectES20.vert.h"
#include "orvane/effects/shaders/AdvancedMaterialPhongEffectES20.frag.h"

namespace OV
{

namespace
{

enum Uniform : int
{
    UniformIsShadow = Detail::AdvancedUniformCount,
    UniformSunShading,
    UniformMeshMonochrome,
    UniformReflectionTint, ///< with OptionReflectAtPixels
};

constexpr IndexedName kOwnUniforms[] = {
    {UniformIsShadow, "u_isShadow"},
    {UniformSunShading, "u_sunShading"},
    {UniformMeshMonochrome, "u_meshMonochrome"},
};
constexpr auto kUniforms = Detail::WithAdvancedUniforms(kOwnUniforms);
static_assert(IsDense(kUniforms.rows));

constexpr IndexedName kPixelReflectionUniforms[] = {{UniformReflectionTint, "u_reflectionTint"}};

// The two models share a name, which is diagnostic only, and the vertex shader.
constexpr ProgramTemplate kTemplate = {
    "AdvancedMaterialEffect",
    Shaders::AdvancedMaterialEffectES20Vert,
    Shaders::AdvancedMaterialPhongEffectES20Frag,
    Detail::kAdvancedOptions,
    kUniforms.rows,
    Detail::kAdvancedAttributes,
};

} // namespace

AdvancedMaterialPhongEffectES20::AdvancedMaterialPhongEffectES20(EffectCache* cache) :
    AdvancedMaterialBaseES20(cache)
{
}

unsigned int AdvancedMaterialPhongEffectES20::CreateProgramForOptions(std::uint64_t options, std::string& name)
{
    const ProgramTemplate source = Detail::AdvancedTemplate(kTemplate, options);
    return (options & OptionReflectAtPixels) != 0
        ? CreateFromTemplate(source, options, name, kPixelReflectionUniforms)
        : CreateFromTemplate(source, options, name);
}

void AdvancedMaterialPhongEffectES20::SetModelUniforms()
{
    Set(UniformSunShading, s_sunShading);
    Set(UniformIsShadow, s_isShadow ? 1 : 0);
}

int AdvancedMaterialPhongEffectES20::MeshMonochromeUniform() const
{
    return UniformMeshMonochrome;
}

int AdvancedMaterialPhongEffectES20::ReflectionTintUniform() const
{
    return UniformReflectionTint;
}

} // namespace OV
