#pragma once

#include "orvane/scene/Material.h"

namespace OV
{

/// Colour of flat things, with a texture from a file, of raw pixels, or of a text that is
/// drawn when the material first is.
///
/// What it inherits of colours is not read: SetDiffuse and SetOpacity change nothing that is
/// seen. A colour is set in the field color, a text's with Text::SetColor.
class ORVANE_API Material2D : public Material
{
public:
    explicit Material2D(const std::string& materialName);
    ~Material2D() override;

    int Type() const override;
    bool HasType(int type) override;

    /// The field of that name, whatever the opacity.
    bool IsTransparent() override;

    /// Multiplies the texture; its alpha is the opacity.
    Color color = Color(1.0f, 1.0f, 1.0f, 1.0f);

    /// Whether what is blended is mixed by alpha; 0: it replaces what is there.
    unsigned int blend = 1;

    /// Family, em in pixels, limit of the width in pixels (below 1: none) and text, the strings
    /// in the encoding of the C locale in force. Used where there is neither a texture name
    /// nor pixels.
    std::string fontName;
    int fontSize = 0;
    int maxWidth = 0;
    std::string text;

    /// Size of the text's texture, written when it is made.
    int textureWidth = 0;
    int textureHeight = 0;

    bool transparent = true;
};

} // namespace OV
