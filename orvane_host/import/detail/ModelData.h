#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace OV::Host
{

/// Array that lies elsewhere: in the parser's memory or in that of another process.
template <typename T>
struct ArrayView
{
    const T* data = nullptr;
    std::uint64_t count = 0;

    bool IsEmpty() const { return count == 0; }

    const T& operator[](std::uint64_t index) const { return data[index]; }
};

enum class PrimitiveKind : std::uint32_t
{
    Triangles,
    Points,
    Lines,
};

struct MeshData
{
    std::string name;
    std::uint32_t material = 0;
    /// The mesh of the file that it is a piece of, or -1.
    std::int32_t pieceOf = -1;
    /// How many surfaces, each before the next, lie before it in one plane: see OrderCoplanarFaces.
    std::uint8_t standsBack = 0;
    PrimitiveKind kind = PrimitiveKind::Triangles;
    /// Three floats a vertex; the others are empty or hold 3, 2 and 4 floats a vertex.
    ArrayView<float> positions;
    ArrayView<float> normals;
    ArrayView<float> texCoords;
    ArrayView<float> colors;
    /// Three to a triangle, two to a line; empty for points.
    ArrayView<std::uint32_t> indices;
};

enum class AlphaMode : std::uint32_t
{
    /// The format has no word for it: the picture decides.
    Unstated,
    Opaque,
    Blend,
};

/// Where a picture of a material lies.
struct PictureData
{
    /// As the file has it; empty for none and for an embedded picture.
    std::string path;
    /// Index into ModelData::textures, or -1. Beside a path: the texels of that file.
    std::int32_t embedded = -1;

    bool IsNone() const { return path.empty() && embedded < 0; }
};

/// A picture that says something else than a colour at each of its points.
struct MapData
{
    PictureData picture;
    /// The format leaves no doubt that this is what the picture holds.
    bool isCertain = false;
    /// White where it should be black.
    bool isInverted = false;
    /// It is meant for texture coordinates other than those of the mesh.
    bool isOnOtherCoordinates = false;
};

struct MaterialData
{
    std::string name;
    /// Alpha is the opacity.
    float diffuse[4] = {0.8f, 0.8f, 0.8f, 1.0f};
    float emissive[3] = {0.0f, 0.0f, 0.0f};
    float specular[3] = {0.0f, 0.0f, 0.0f};
    float shininess = 0.0f;
    bool isTwoSided = false;
    bool isUnlit = false;
    bool clampsTexture = false;
    AlphaMode alphaMode = AlphaMode::Unstated;
    /// Reflection straight on, reflection at a grazing angle, gloss; all 0 to 1.
    float reflection[3] = {0.0f, 0.0f, 0.0f};
    PictureData texture;
    /// Normals in the space of the surface, Y along its V.
    MapData normalMap;
    /// Opacity in red, or in alpha where that says something.
    MapData opacityMap;
};

/// An embedded picture: a whole image file, or width * height texels of R, G, B, A with the
/// top row first.
struct TextureData
{
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    ArrayView<unsigned char> bytes;
};

struct NodeData
{
    std::string name;
    /// Index of a node before this one, or -1 for the root, which is the first.
    std::int32_t parent = -1;
    /// Row-major, for column vectors, relative to the parent.
    double local[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    std::vector<std::uint32_t> meshes;
};

struct CameraData
{
    std::int32_t node = 0;
    double position[3] = {0, 0, 0};
    double direction[3] = {0, 0, -1};
    double up[3] = {0, 1, 0};
    /// Full horizontal angle in radians.
    double horizontalAngle = 0.0;
    /// Width over height, 0 when the file does not say.
    double aspect = 0.0;
    double nearDistance = 0.0;
    double farDistance = 0.0;
    /// Half the width of an orthographic view, 0 for a perspective.
    double orthographicHalfWidth = 0.0;
};

enum class LightKind : std::uint32_t
{
    Directional,
    /// Shines from its position; the direction is where it mostly goes, or zero.
    Positional,
};

struct LightData
{
    std::int32_t node = 0;
    LightKind kind = LightKind::Directional;
    double position[3] = {0, 0, 0};
    double direction[3] = {0, 0, -1};
    float color[3] = {1.0f, 1.0f, 1.0f};
};

/// A parsed model file, flat, in the scene's axes, before any scene is made of it.
struct ModelData
{
    std::string format;
    double metresPerUnit = 0.0;
    /// In degrees, north and east positive; what a file does not tell is not a number.
    double latitude = std::numeric_limits<double>::quiet_NaN();
    double longitude = std::numeric_limits<double>::quiet_NaN();
    /// Where true north lies, in degrees clockwise from -Z.
    double north = std::numeric_limits<double>::quiet_NaN();
    std::uint64_t skippedLines = 0;
    std::uint64_t coplanarPairs = 0;
    /// Triangles of no use, of meshes that only pieces are left of.
    std::uint64_t droppedTriangles = 0;
    std::vector<NodeData> nodes;
    std::vector<MeshData> meshes;
    std::vector<MaterialData> materials;
    std::vector<TextureData> textures;
    std::vector<CameraData> cameras;
    std::vector<LightData> lights;
    std::vector<std::string> warnings;

    /// Keeps alive what the views above point into. Not part of the content.
    std::vector<std::shared_ptr<const void>> keepAlive;
};

} // namespace OV::Host
