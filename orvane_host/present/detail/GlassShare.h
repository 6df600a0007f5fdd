#pragma once

#include "orvane/effects/LightShare.h"
#include "orvane/effects/ProgramTemplate.h"

#include <array>
#include <string>
#include <vector>

namespace OV::Host::Detail
{

/// Lets only those fragments of a look pass that lie between a depth of glass and that of what is solid, both
/// read from textures. Of the light it says what another share does.
class GlassShare final : public LightShare
{
public:
    /// Units in which the depths are bound meanwhile: the looks use those below, shadows those above.
    static constexpr int SolidUnit = 4;
    static constexpr int LastUnit = 5;

    /// What becomes of the colours that pass.
    enum class Form
    {
        Layer, ///< nothing
        Sum,   ///< each times how dense it is, so that they can be added up; alpha stays
    };

    /// @param light of whose text and uniforms this takes part; outlives the use of this. Null for full light.
    /// @param width, height of the layers.
    /// @param scale pixels of the target for one of the layers.
    void Set(Form form, LightShare* light, int width, int height, float scale);

    const char* Source() const override;
    const char* Enclosure() const override;
    const char* VertexEnclosure() const override;
    NameTable Uniforms() const override;
    void Feed(ShaderProgram& program, int first) override;

private:
    /// For a text of the light.
    struct Text
    {
        const LightShare* light = nullptr;
        std::string of;     ///< the light's own
        std::string source;
        std::vector<IndexedName> uniforms;
    };

    Text m_text;
    LightShare* m_light = nullptr;
    Form m_form = Form::Layer;
    std::array<float, 3> m_pixel{};
};

} // namespace OV::Host::Detail
