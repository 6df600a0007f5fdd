#include "tests/effects/SurfaceStage.h"

#include "orvane/math/TextureCoordinate.h"
#include "orvane/platform/detail/EntryPoints.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"

#include <GL/glew.h>
#include <glm/common.hpp>
#include <glm/gtc/matrix_inverse.hpp>
#include <glm/gtc/matrix_transform.hpp>

#include <algorithm>
#include <cmath>
#include <utility>

namespace OV::Test
{

namespace
{

/// The corner's place in the rectangle.
glm::vec2 Corner(int corner)
{
    return {corner == 1 || corner == 2 ? 1.0f : 0.0f, corner >= 2 ? 1.0f : 0.0f};
}

Vector ToVector(const glm::vec3& v)
{
    return Vector(v.x, v.y, v.z);
}

std::shared_ptr<RawMesh> MakeGeometry(const Surface& surface)
{
    std::vector<Vector> positions;
    std::vector<Vector> normals;
    std::vector<TextureCoordinate> coordinates;
    std::vector<Color> colors;
    for (int i = 0; i < 4; ++i)
    {
        positions.push_back(ToVector(surface.Object(i)));
        normals.push_back(ToVector(surface.normals[static_cast<std::size_t>(i)]));
        const glm::vec2& coordinate = surface.coordinates[static_cast<std::size_t>(i)];
        coordinates.emplace_back(coordinate.x, coordinate.y);
        colors.push_back(ToColor(surface.colors[static_cast<std::size_t>(i)]));
    }
    auto raw = std::make_shared<RawMesh>();
    raw->StartDescription();
    raw->SetPositionBuffer(std::move(positions));
    if (surface.hasNormals)
    {
        raw->SetNormalBuffer(std::move(normals));
    }
    if (surface.hasCoordinates)
    {
        raw->SetTextureBuffer(std::move(coordinates));
    }
    if (surface.hasColors)
    {
        raw->SetColorBuffer(std::move(colors));
    }
    raw->SetIndices(surface.facesAway ? std::vector<unsigned short>{0, 2, 1, 0, 3, 2}
                                      : std::vector<unsigned short>{0, 1, 2, 0, 2, 3});
    raw->EndDescription(true);
    return raw;
}

unsigned MakeNearest(GLenum target)
{
    Platform::LoadEntryPoints();
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(target, texture);
    glTexParameteri(target, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(target, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    return texture;
}

} // namespace

glm::vec3 Surface::World(int corner) const
{
    const glm::vec2 at = Corner(corner);
    const glm::vec3 low = WorldAtCorner(rect.x, rect.y, z);
    const glm::vec3 high = WorldAtCorner(rect.x + rect.width, rect.y + rect.height, z);
    return {glm::mix(low.x, high.x, at.x), glm::mix(low.y, high.y, at.y), z};
}

glm::vec3 Surface::Object(int corner) const
{
    return (World(corner) - offset) / scale;
}

glm::mat4 Surface::WorldMatrix() const
{
    return glm::scale(glm::translate(glm::mat4(1.0f), offset), scale);
}

glm::mat3 Surface::NormalMatrix() const
{
    return glm::inverseTranspose(glm::mat3(WorldMatrix()));
}

glm::vec2 Surface::Inside(int x, int y) const
{
    return {(static_cast<float>(x - rect.x) + 0.5f) / static_cast<float>(rect.width),
            (static_cast<float>(y - rect.y) + 0.5f) / static_cast<float>(rect.height)};
}

std::optional<glm::vec4> Surface::Weights(int x, int y) const
{
    const float s = Inside(x, y).x;
    const float t = Inside(x, y).y;
    if (std::abs(s - t) < 3.0f / static_cast<float>(std::min(rect.width, rect.height)))
    {
        return std::nullopt;
    }
    return t < s ? glm::vec4(1.0f - s, s - t, t, 0.0f) : glm::vec4(1.0f - t, 0.0f, s, t - s);
}

std::pair<glm::vec4, glm::vec4> Surface::WeightChange(int x, int y) const
{
    const glm::vec2 inside = Inside(x, y);
    const bool lower = inside.y < inside.x;
    const glm::vec4 right = lower ? glm::vec4(-1, 1, 0, 0) : glm::vec4(0, 0, 1, -1);
    const glm::vec4 up = lower ? glm::vec4(0, -1, 1, 0) : glm::vec4(-1, 0, 0, 1);
    return {right / static_cast<float>(rect.width), up / static_cast<float>(rect.height)};
}

unsigned PictureLoader::CreateTextTexture(const std::string&, int, const std::string&, int, int&, int&, int&, int&)
{
    return 0;
}

unsigned PictureLoader::CreateTexture(unsigned char*, int, int, float&, float&, bool&, bool)
{
    return 0;
}

unsigned PictureLoader::CreateTexture(const FilePath&, const std::string& name, int& width, int& height,
                                      float& uScale, float& vScale, bool, float, int, bool&)
{
    const auto found = pictures.find(name);
    if (found == pictures.end())
    {
        return 0;
    }
    width = found->second.Width();
    height = found->second.Height();
    uScale = 1.0f;
    vScale = 1.0f;
    return MakeTexture(found->second);
}

unsigned PictureLoader::CreateMipMapTexture(const FilePath&, const std::vector<std::string>&)
{
    return 0;
}

unsigned PictureLoader::CreateCubeMap(const FilePath&, const std::vector<std::string>&)
{
    return 0;
}

bool PictureLoader::ReleaseTexture(unsigned id)
{
    glDeleteTextures(1, &id);
    return true;
}

unsigned PictureLoader::MakeTexture(const Texels& texels)
{
    const unsigned texture = MakeNearest(GL_TEXTURE_2D);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, texels.Width(), texels.Height(), 0, GL_RGBA, GL_UNSIGNED_BYTE,
                 texels.Bytes().data());
    glBindTexture(GL_TEXTURE_2D, 0);
    return texture;
}

unsigned PictureLoader::MakeCube(const CubeColors& cube)
{
    const unsigned texture = MakeNearest(GL_TEXTURE_CUBE_MAP);
    for (unsigned face = 0; face < 6; ++face)
    {
        const Texels texel(1, 1, {cube.faces[face]});
        glTexImage2D(GL_TEXTURE_CUBE_MAP_POSITIVE_X + face, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                     texel.Bytes().data());
    }
    glBindTexture(GL_TEXTURE_CUBE_MAP, 0);
    return texture;
}

SurfaceStage::SurfaceStage()
{
    renderer.Configure(&pictures, nullptr);
}

SurfaceStage::~SurfaceStage()
{
    // The materials give their textures back while the loader is there.
    scene.Suspend();
}

MeshNode& SurfaceStage::AddSurface(Material& material, const Surface& surface)
{
    auto* mesh = new Mesh(MakeGeometry(surface), &scene);
    material.AddMesh(mesh);
    auto* node = new MeshNode(&scene);
    Transform place;
    place.SetScale(ToVector(surface.scale));
    place.SetPosition(ToVector(surface.offset));
    node->SetLocal(place);
    scene.GetRoot()->AddChild(node, false);
    mesh->AddNode(node);
    return *node;
}

int SurfaceStage::ExpectAtRandom(const Picture& picture, const PixelRect& rect, int count, std::mt19937& random,
                                 const std::function<std::optional<glm::vec4>(int, int)>& model) const
{
    const PixelRect inner = Inset(rect);
    int compared = 0;
    int wrong = 0;
    for (int i = 0; i < count; ++i)
    {
        const int x = inner.x + static_cast<int>(RandomIn(random, 0.0f, static_cast<float>(inner.width)));
        const int y = inner.y + static_cast<int>(RandomIn(random, 0.0f, static_cast<float>(inner.height)));
        const std::optional<glm::vec4> color = model(x, y);
        if (!color)
        {
            continue;
        }
        ++compared;
        if (ChannelDifference(picture.At(x, y), ToPixel(*color)) > 2 && wrong++ == 0)
        {
            ADD_FAILURE() << "at " << x << ", " << y << ": " << picture.At(x, y) << " is not " << ToPixel(*color);
        }
    }
    EXPECT_EQ(wrong, 0) << "of " << compared;
    return compared;
}

} // namespace OV::Test
