#pragma once

#include "orvane/effects/LightShare.h"

#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>

#include <array>
#include <string>

namespace OV
{

class CameraNodeES20;
class Matrix;

} // namespace OV

namespace OV::Host::Detail
{

/// The sun's light that reaches each fragment, read from maps that a ShadowStage has drawn.
class SunShare final : public LightShare
{
public:
    /// Units in which the maps are bound while the share is in force: the looks use those below.
    static constexpr int DepthUnit = 6;
    static constexpr int GlassUnit = 7;
    static constexpr int TableUnit = 8; ///< see SunTable

    /// As the uniforms of SunShare.vert and SunShare.frag.
    struct Values
    {
        std::array<float, 2> texel{};
        std::array<float, 2> slices{};
        std::array<float, 2> step{};
        std::array<float, 3> look{};
    };

    /// As the options of SunShare.frag.
    enum Option : unsigned
    {
        OptionParts = 1, ///< of the map there are several
        OptionSoft = 2,
        OptionGlass = 4,
        OptionWide = 8, ///< a sun that soft shadows reach far with
        EndOfOptions = 16,
    };

    Values values;

    /// Where places are counted from. The matrices of the camera are read whenever a program is fed, since
    /// the parts of a picture may be drawn with others than those of the frame.
    struct Frame
    {
        const CameraNodeES20* camera = nullptr;
        bool isPerspective = true;
        /// World space to texels of the first part of the map, lengths along the light, and SunView::GetReach.
        glm::dmat4 toMap{1.0};
        glm::dvec3 start{0.0};  ///< that is counted from: texels of it, across and up, and the length
    };
    Frame frame;

    /// World space from what a place in the view tells in clip space: x, y, and w with perspective, else z.
    static glm::dmat4 ToWorld(const Matrix& worldToClip, bool isPerspective);

    /// Each set of options has a text of its own, made when it is first wanted.
    void SetOptions(unsigned options);

    const char* Source() const override;
    const char* VertexEnclosure() const override;
    NameTable Uniforms() const override;
    void Feed(ShaderProgram& program, int first) override;

private:
    void FeedPlace(ShaderProgram& program, int uniform) const;

    std::array<std::string, EndOfOptions> m_sources; ///< empty until wanted
    unsigned m_options = 0;
};

} // namespace OV::Host::Detail
