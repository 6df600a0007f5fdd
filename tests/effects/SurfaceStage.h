#pragma once

#include "orvane/imaging/TextureLoader.h"
#include "tests/effects/PixelStage.h"
#include "tests/support/SurfaceModel.h"

#include <array>
#include <map>
#include <string>

namespace OV::Test
{

/// A rectangle that faces the camera or shows it its back, with streams of its own at each
/// corner, from the lower left one counter-clockwise.
struct Surface
{
    PixelRect rect{8, 8, 112, 112};
    float z = 0.0f;
    bool facesAway = false;

    bool hasNormals = true;
    std::array<glm::vec3, 4> normals{glm::vec3(0, 0, 1), glm::vec3(0, 0, 1), glm::vec3(0, 0, 1), glm::vec3(0, 0, 1)};
    bool hasCoordinates = false;
    std::array<glm::vec2, 4> coordinates{glm::vec2(0, 0), glm::vec2(1, 0), glm::vec2(1, 1), glm::vec2(0, 1)};
    bool hasColors = false;
    std::array<glm::vec4, 4> colors{glm::vec4(1.0f), glm::vec4(1.0f), glm::vec4(1.0f), glm::vec4(1.0f)};

    /// Of the node. The rectangle appears where rect says all the same.
    glm::vec3 scale{1.0f};
    glm::vec3 offset{0.0f};

    /// Corner in world and in object space.
    glm::vec3 World(int corner) const;
    glm::vec3 Object(int corner) const;

    glm::mat4 WorldMatrix() const;
    glm::mat3 NormalMatrix() const;
    bool IsMirrored() const { return scale.x * scale.y * scale.z < 0.0f; }

    /// What each corner has of a pixel's centre; none along the diagonal, where the two triangles
    /// meet.
    std::optional<glm::vec4> Weights(int x, int y) const;

    /// How these change from that pixel to the next one to the right, and up.
    std::pair<glm::vec4, glm::vec4> WeightChange(int x, int y) const;

    /// Blends one value of each corner by such weights.
    template <class Value>
    static Value Blend(const std::array<Value, 4>& corners, const glm::vec4& weights)
    {
        return corners[0] * weights[0] + corners[1] * weights[1] + corners[2] * weights[2] + corners[3] * weights[3];
    }

private:
    /// A pixel's centre in the rectangle, 0 to 1.
    glm::vec2 Inside(int x, int y) const;
};

/// A loader whose files are pictures in memory, sampled at the nearest texel, by their names.
class PictureLoader : public TextureLoader
{
public:
    unsigned CreateTextTexture(const std::string&, int, const std::string&, int, int&, int&, int&, int&) override;
    unsigned CreateTexture(unsigned char*, int, int, float&, float&, bool&, bool) override;
    unsigned CreateTexture(const FilePath&, const std::string& name, int& width, int& height, float& uScale,
                           float& vScale, bool, float, int, bool& hasAlpha) override;
    unsigned CreateMipMapTexture(const FilePath&, const std::vector<std::string>&) override;
    unsigned CreateCubeMap(const FilePath&, const std::vector<std::string>&) override;
    bool ReleaseTexture(unsigned id) override;
    void Suspend() override {}
    void Resume() override {}

    /// A texture of a picture, for the caller to release.
    static unsigned MakeTexture(const Texels& texels);
    static unsigned MakeCube(const CubeColors& cube);

    std::map<std::string, Texels> pictures;
};

/// Base of tests that compare rectangles with a model of their shader at every pixel.
class SurfaceStage : public PixelStage
{
protected:
    SurfaceStage();
    ~SurfaceStage() override;

    MeshNode& AddSurface(Material& material, const Surface& surface);

    /// Where the camera stands.
    static glm::vec3 Eye() { return {0.0f, 0.0f, 5.0f}; }

    /// The effect of a type, as the renderer's materials share it. It lives as long as they do,
    /// so that a first frame must have been drawn.
    template <class Effect>
    Effect& SharedEffect(EffectCache::EffectType type)
    {
        EffectES20* const effect = renderer.Effects().GetEffect(type);
        effect->Release();
        return dynamic_cast<Effect&>(*effect);
    }

    /// Compares a picture with a model at so many pixels of a rectangle at random, at most 2 apart
    /// in any channel.
    /// @return how many of them the model was sure of.
    int ExpectAtRandom(const Picture& picture, const PixelRect& rect, int count, std::mt19937& random,
                       const std::function<std::optional<glm::vec4>(int x, int y)>& model) const;

    PictureLoader pictures;
};

} // namespace OV::Test
