#pragma once

#include "orvane/effects/MaterialEffectES20.h"

namespace OV::Host::Detail
{

/// The attributes of a program that draws over a whole target.
constexpr IndexedName ScreenAttributes[] = {
    {0, "a_position"},
};

/// What effects that draw over all of a target have in common: they take nothing but the corners of
/// the mesh that is drawn, and read a picture in the first texture unit.
class ScreenEffect : public MaterialEffectES20
{
public:
    void Remove() override;
    void BindMeshAttributes(MeshES20* mesh) override;
    void ReleaseMeshAttributes(MeshES20* mesh) override;
    void BindMeshUniforms(MeshNode*) override {}

protected:
    ScreenEffect() : MaterialEffectES20(nullptr) {}
};

} // namespace OV::Host::Detail
