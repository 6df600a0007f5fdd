#pragma once

#include "orvane/math/Color.h"

#include <optional>
#include <typeinfo>

namespace OV
{

class Material;
class MaterialES20;

} // namespace OV

namespace OV::Host::Detail
{

/// The colours of a material in which a batch of several may show its pieces.
struct MaterialColors
{
    Color diffuse;
    Color ambient;

    static MaterialColors Of(const Material& material);

    /// Whether they are those of a material. Alpha counts with neither: what has another is no solid.
    bool AreOf(const Material& material) const;
};

/// All that effects and stages read of a solid material without textures, but for its colours: materials of one look
/// may be drawn together.
///
/// What only points, textures and strokes read is left out.
struct MaterialLook
{
    const std::type_info* type = nullptr;
    unsigned int flags = 0;
    float offsetFactor = 0.0f; ///< of polygons; 0 without that flag. Likewise below
    float offsetUnits = 0.0f;
    bool ignoresLightColor = false;
    bool isStippled = false;
    Color stippleColor = Color(0.0f, 0.0f, 0.0f, 0.0f);
    float stippleOffset = 0.0f;
    float stippleSize = 0.0f;
    float reflection[3] = {0.0f, 0.0f, 0.0f};
    Color reflected = Color(0.0f, 0.0f, 0.0f, 0.0f); ///< the specular colour

    /// Of a material of the engine's own class or the importer's, with colours from 0 to 1. None of
    /// another.
    static std::optional<MaterialLook> Of(const Material& material);

    /// Whether a material's look is this one: Of without the copy, for each frame.
    bool IsOf(const Material& material) const;

    bool operator<(const MaterialLook& other) const;
};

/// Whether a material is of a class that does nothing of its own, so that it is what its fields say.
bool IsPlainMaterial(const Material& material);

/// Whether render data draw a material as its fields say: without a texture, and with the engine's own effects.
bool AreOwnData(const MaterialES20& data);

} // namespace OV::Host::Detail
