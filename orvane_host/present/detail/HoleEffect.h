#pragma once

#include "orvane/effects/MaterialEffectES20.h"

namespace OV::Host::Detail
{

/// The attributes of a program that may leave out what opacity maps and see-through texels do.
constexpr IndexedName HoleAttributes[] = {
    {0, "a_position"},
    {1, "a_texture"},
};

/// Where such a program has what it needs for that, by the numbers of its uniforms.
struct HoleUniforms
{
    int maps;       ///< bits of the maps that are bound: 1 for see-through texels, 2 for opacity
    int texture;
    int opacityMap;
    int scale;      ///< of texture coordinates
};

/// What effects have in common that draw where surfaces are, not how they look: what opacity maps,
/// see-through texels and clip planes leave out of the looks is left out by them. What they do about attributes is
/// settled here.
class HoleEffect : public MaterialEffectES20
{
public:
    void Remove() override;
    void BindMeshAttributes(MeshES20* mesh) final;
    void ReleaseMeshAttributes(MeshES20* mesh) final;

protected:
    explicit HoleEffect(const HoleUniforms& uniforms);

    /// Whether the material of a draw cuts holes; from then on, until Remove.
    bool FindHoles(MaterialES20* data);

    /// Binds the maps that were found, to the program in use.
    void BindHoles(MaterialES20* data);

private:
    HoleUniforms m_uniforms;
    unsigned int m_colors = 0;  ///< texture whose alpha counts; 0 for none
    unsigned int m_opacity = 0; ///< likewise
};

} // namespace OV::Host::Detail
