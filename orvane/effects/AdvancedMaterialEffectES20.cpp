#include "orvane/effects/AdvancedMaterialEffectES20.h"

#include "orvane/effects/detail/AdvancedMaterialTables.h"
#include "orvane/effects/shaders/AdvancedMaterialEffectES20.frag.h"
#include "orvane/effects/shaders/AdvancedMaterialEffectES20.vert.h"

namespace OV
{

namespace
{

enum Uniform : int
{
    UniformMeshMonochrome = Detail::AdvancedUniformCount,
    UniformReflectionTint, ///< with OptionReflectAtPixels
};

constexpr IndexedName kOwnUniforms[] = {
    {UniformMeshMonochrome, "u_meshMonochrome"},
};
constexpr auto kUniforms = Detail::WithAdvancedUniforms(kOwnUniforms);
static_assert(IsDense(kUniforms.rows));

constexpr IndexedName kPixelReflectionUniforms[] = {{UniformReflectionTint, "u_reflectionTint"}};

constexpr ProgramTemplate kTemplate = {
    "AdvancedMaterialEffect",
    Shaders::AdvancedMaterialEffectES20Vert,
    Shaders::AdvancedMaterialEffectES20Frag,
    Detail::kAdvancedOptions,
    kUniforms.rows,
    Detail::kAdvancedAttributes,
};

} // namespace

AdvancedMaterialEffectES20::AdvancedMaterialEffectES20(EffectCache* cache) : AdvancedMaterialBaseES20(cache) {}

unsigned int AdvancedMaterialEffectES20::CreateProgramForOptions(std::uint64_t options, std::string& name)
{
    const ProgramTemplate source = Detail::AdvancedTemplate(kTemplate, options);
    return (options & OptionReflectAtPixels) != 0
        ? CreateFromTemplate(source, options, name, kPixelReflectionUniforms)
        : CreateFromTemplate(source, options, name);
}

void AdvancedMaterialEffectES20::SetModelUniforms() {}

int AdvancedMaterialEffectES20::MeshMonochromeUniform() const
{
    return UniformMeshMonochrome;
}

int AdvancedMaterialEffectES20::ReflectionTintUniform() const
{
    return UniformReflectionTint;
}

} // namespace OV
