#include "orvane_host/import/detail/AssimpFlattener.h"

#include "orvane_host/import/detail/AssimpMaterials.h"
#include "orvane_host/import/detail/AssimpTextures.h"

#include <assimp/material.h>
#include <assimp/scene.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <unordered_map>

namespace OV::Host
{

namespace
{

static_assert(sizeof(aiVector3D) == 3 * sizeof(float) && sizeof(aiColor4D) == 4 * sizeof(float),
              "the arrays of a parser built with doubles would have to be narrowed");

/// Flattens a parsed scene. Arrays stay where they are as far as possible.
class Flattener
{
public:
    Flattener(const aiScene& scene, const ImportLimits& limits, ModelData& model)
        : m_scene(scene), m_limits(limits), m_model(model)
    {
    }

    void Run()
    {
        ReadMetadata();
        FlattenNodes();
        for (unsigned int i = 0; i < m_scene.mNumMaterials; ++i)
        {
            m_model.materials.push_back(ConvertMaterial(m_scene, *m_scene.mMaterials[i], m_model.format));
        }
        for (unsigned int i = 0; i < m_scene.mNumMeshes; ++i)
        {
            m_model.meshes.push_back(FlattenMesh(*m_scene.mMeshes[i]));
        }
        WhitenUnderColors();
        for (unsigned int i = 0; i < m_scene.mNumTextures; ++i)
        {
            m_model.textures.push_back(FlattenTexture(*m_scene.mTextures[i]));
        }
        for (unsigned int i = 0; i < m_scene.mNumCameras; ++i)
        {
            m_model.cameras.push_back(FlattenCamera(*m_scene.mCameras[i]));
        }
        for (unsigned int i = 0; i < m_scene.mNumLights; ++i)
        {
            FlattenLight(*m_scene.mLights[i]);
        }
    }

private:
    template <typename T>
    ArrayView<T> Keep(std::vector<T>&& values)
    {
        auto kept = std::make_shared<std::vector<T>>(std::move(values));
        m_model.keepAlive.push_back(kept);
        return {kept->data(), kept->size()};
    }

    int MetaInt(const char* key, int otherwise) const
    {
        int value = otherwise;
        return m_scene.mMetaData && m_scene.mMetaData->Get(key, value) ? value : otherwise;
    }

    void ReadMetadata();
    bool ReadStatedAxes();
    void FlattenNodes();
    NodeData FlattenNode(const aiNode& node, std::int32_t parent) const;
    MeshData FlattenMesh(const aiMesh& mesh);
    ArrayView<float> FlattenTexCoords(const aiMesh& mesh);
    void WhitenUnderColors();
    TextureData FlattenTexture(const aiTexture& texture);
    CameraData FlattenCamera(const aiCamera& camera) const;
    void FlattenLight(const aiLight& light);
    std::int32_t NodeNamed(const aiString& name) const;

    const aiScene& m_scene;
    const ImportLimits& m_limits;
    ModelData& m_model;
    /// Rows of a rotation from the file's axes to the scene's, put above the root.
    double m_axes[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    std::unordered_map<std::string, std::int32_t> m_nodesByName;
};

void Set3(double* to, const aiVector3D& from)
{
    to[0] = from.x;
    to[1] = from.y;
    to[2] = from.z;
}

/// Axes of formats that state them in their head and leave it to the reader to turn them.
bool Flattener::ReadStatedAxes()
{
    const int axes[3] = {MetaInt("CoordAxis", -1), MetaInt("UpAxis", -1), MetaInt("FrontAxis", -1)};
    const int signs[3] = {MetaInt("CoordAxisSign", 1), MetaInt("UpAxisSign", 1), MetaInt("FrontAxisSign", 1)};
    double rows[3][3] = {};
    for (int row = 0; row < 3; ++row)
    {
        if (axes[row] < 0 || axes[row] > 2)
        {
            return false;
        }
        rows[row][axes[row]] = signs[row] < 0 ? -1.0 : 1.0;
    }
    const double determinant = rows[0][0] * (rows[1][1] * rows[2][2] - rows[1][2] * rows[2][1]) -
                               rows[0][1] * (rows[1][0] * rows[2][2] - rows[1][2] * rows[2][0]) +
                               rows[0][2] * (rows[1][0] * rows[2][1] - rows[1][1] * rows[2][0]);
    if (determinant != 1.0)
    {
        return false;
    }
    std::copy(&rows[0][0], &rows[0][0] + 9, &m_axes[0][0]);
    return true;
}

void Flattener::ReadMetadata()
{
    const std::string& format = m_model.format;
    // Formats that are Z up by definition and that the parser leaves so. It turns the other
    // ones itself.
    const bool isZUp = format.compare(0, 7, "Blender") == 0 || format.compare(0, 3, "3mf") == 0;
    if (!ReadStatedAxes() && isZUp)
    {
        const double turned[3][3] = {{1, 0, 0}, {0, 0, 1}, {0, -1, 0}};
        std::copy(&turned[0][0], &turned[0][0] + 9, &m_axes[0][0]);
    }

    // The parser scales what these formats hold to metres.
    const bool isMetric =
        IsGltf(format) || format.compare(0, 7, "Collada") == 0 || format.find("(IFC)") != std::string::npos;
    float centimetres = 0.0f;
    if (isMetric)
    {
        m_model.metresPerUnit = 1.0;
    }
    else if (m_scene.mMetaData && m_scene.mMetaData->Get("UnitScaleFactor", centimetres) &&
             std::isfinite(centimetres) && centimetres > 0.0f)
    {
        m_model.metresPerUnit = double(centimetres) / 100.0;
    }
}

NodeData Flattener::FlattenNode(const aiNode& node, std::int32_t parent) const
{
    NodeData data;
    data.name = node.mName.C_Str();
    data.parent = parent;
    const aiMatrix4x4& m = node.mTransformation;
    const double local[3][4] = {{m.a1, m.a2, m.a3, m.a4}, {m.b1, m.b2, m.b3, m.b4}, {m.c1, m.c2, m.c3, m.c4}};
    for (int row = 0; row < 3; ++row)
    {
        for (int column = 0; column < 4; ++column)
        {
            double sum = local[row][column];
            if (parent < 0)
            {
                sum = m_axes[row][0] * local[0][column] + m_axes[row][1] * local[1][column] +
                      m_axes[row][2] * local[2][column];
            }
            data.local[row * 4 + column] = sum;
        }
    }
    data.meshes.assign(node.mMeshes, node.mMeshes + node.mNumMeshes);
    return data;
}

void Flattener::FlattenNodes()
{
    struct Open
    {
        const aiNode* node;
        std::int32_t parent;
    };
    std::vector<Open> open = {{m_scene.mRootNode, -1}};
    while (!open.empty())
    {
        const Open next = open.back();
        open.pop_back();
        const std::int32_t index = static_cast<std::int32_t>(m_model.nodes.size());
        m_model.nodes.push_back(FlattenNode(*next.node, next.parent));
        m_nodesByName.emplace(m_model.nodes.back().name, index);
        for (unsigned int i = next.node->mNumChildren; i > 0; --i)
        {
            open.push_back({next.node->mChildren[i - 1], index});
        }
    }
}

std::int32_t Flattener::NodeNamed(const aiString& name) const
{
    const auto found = m_nodesByName.find(name.C_Str());
    return found == m_nodesByName.end() ? 0 : found->second;
}

ArrayView<float> Flattener::FlattenTexCoords(const aiMesh& mesh)
{
    TextureMapping mapping;
    if (mesh.mMaterialIndex < m_scene.mNumMaterials)
    {
        mapping = MappingOf(*m_scene.mMaterials[mesh.mMaterialIndex], m_model.format);
    }
    const unsigned int channel = mesh.HasTextureCoords(mapping.channel) ? mapping.channel : 0;
    if (!mesh.HasTextureCoords(channel))
    {
        return {};
    }
    const aiVector3D* coords = mesh.mTextureCoords[channel];
    std::vector<float> flat(std::size_t(mesh.mNumVertices) * 2);
    for (std::size_t i = 0; i < mesh.mNumVertices; ++i)
    {
        const float u = coords[i].x;
        const float v = coords[i].y;
        const auto& m = mapping.matrix;
        flat[2 * i] = mapping.isTransformed ? m[0][0] * u + m[0][1] * v + m[0][2] : u;
        flat[2 * i + 1] = mapping.isTransformed ? m[1][0] * u + m[1][1] * v + m[1][2] : v;
    }
    return Keep(std::move(flat));
}

MeshData Flattener::FlattenMesh(const aiMesh& mesh)
{
    MeshData data;
    data.name = mesh.mName.C_Str();
    data.material = mesh.mMaterialIndex;
    if (!mesh.HasPositions())
    {
        return data;
    }
    const std::uint64_t count = mesh.mNumVertices;
    data.positions = {&mesh.mVertices[0].x, count * 3};
    if (mesh.mNormals)
    {
        data.normals = {&mesh.mNormals[0].x, count * 3};
    }
    if (mesh.HasVertexColors(0))
    {
        data.colors = {&mesh.mColors[0][0].r, count * 4};
    }
    data.texCoords = FlattenTexCoords(mesh);
    if (mesh.mPrimitiveTypes & aiPrimitiveType_POINT)
    {
        data.kind = PrimitiveKind::Points;
        return data;
    }
    data.kind = mesh.mPrimitiveTypes & aiPrimitiveType_LINE ? PrimitiveKind::Lines : PrimitiveKind::Triangles;
    const unsigned int corners = data.kind == PrimitiveKind::Lines ? 2 : 3;
    std::vector<std::uint32_t> indices;
    indices.reserve(std::size_t(mesh.mNumFaces) * corners);
    for (unsigned int i = 0; i < mesh.mNumFaces; ++i)
    {
        const aiFace& face = mesh.mFaces[i];
        if (face.mNumIndices == corners)
        {
            indices.insert(indices.end(), face.mIndices, face.mIndices + corners);
        }
    }
    data.indices = Keep(std::move(indices));
    return data;
}

/// The grey that the parser gives where a file has no materials would darken the colours of its vertices.
void Flattener::WhitenUnderColors()
{
    std::vector<bool> isUnder(m_model.materials.size());
    for (std::size_t i = 0; i < isUnder.size(); ++i)
    {
        isUnder[i] = m_model.materials[i].name == AI_DEFAULT_MATERIAL_NAME;
    }
    for (const MeshData& mesh : m_model.meshes)
    {
        if (mesh.material < isUnder.size() && !mesh.positions.IsEmpty() && mesh.colors.IsEmpty())
        {
            isUnder[mesh.material] = false;
        }
    }
    for (const MeshData& mesh : m_model.meshes)
    {
        if (mesh.material < isUnder.size() && isUnder[mesh.material] && !mesh.colors.IsEmpty())
        {
            std::fill_n(m_model.materials[mesh.material].diffuse, 3, 1.0f);
        }
    }
}

TextureData Flattener::FlattenTexture(const aiTexture& texture)
{
    TextureData data;
    if (texture.mHeight == 0)
    {
        data.bytes = {reinterpret_cast<const unsigned char*>(texture.pcData),
                      texture.pcData ? texture.mWidth : 0u};
        return data;
    }
    const std::uint64_t texels = std::uint64_t(texture.mWidth) * texture.mHeight;
    if (!texture.pcData || texels > m_limits.texturePixels)
    {
        return data;
    }
    std::vector<unsigned char> pixels(texels * 4);
    for (std::uint64_t i = 0; i < texels; ++i)
    {
        const aiTexel& texel = texture.pcData[i];
        const unsigned char rgba[4] = {texel.r, texel.g, texel.b, texel.a};
        std::copy(rgba, rgba + 4, &pixels[i * 4]);
    }
    data.width = texture.mWidth;
    data.height = texture.mHeight;
    data.bytes = Keep(std::move(pixels));
    return data;
}

CameraData Flattener::FlattenCamera(const aiCamera& camera) const
{
    CameraData data;
    data.node = NodeNamed(camera.mName);
    // The glTF parser writes the node's translation into its camera too.
    const NodeData& node = m_model.nodes[static_cast<std::size_t>(data.node)];
    const bool isRepeated = IsGltf(m_model.format) && camera.mPosition.x == float(node.local[3]) &&
                            camera.mPosition.y == float(node.local[7]) &&
                            camera.mPosition.z == float(node.local[11]);
    if (!isRepeated)
    {
        Set3(data.position, camera.mPosition);
    }
    Set3(data.direction, camera.mLookAt);
    Set3(data.up, camera.mUp);
    // Documented as the half angle, but every parser stores the full one.
    data.horizontalAngle = camera.mHorizontalFOV;
    data.aspect = camera.mAspect;
    if (IsGltf(m_model.format) && data.aspect > 0.0)
    {
        // There it is the vertical angle times the aspect, which is no angle.
        data.horizontalAngle =
            2.0 * std::atan(std::tan(camera.mHorizontalFOV / data.aspect * 0.5) * data.aspect);
    }
    data.nearDistance = camera.mClipPlaneNear;
    data.farDistance = camera.mClipPlaneFar;
    data.orthographicHalfWidth = camera.mOrthographicWidth;
    return data;
}

void Flattener::FlattenLight(const aiLight& light)
{
    if (light.mType == aiLightSource_AMBIENT || light.mType == aiLightSource_UNDEFINED)
    {
        // Materials bring ambient light of their own.
        return;
    }
    LightData data;
    data.node = NodeNamed(light.mName);
    data.kind = light.mType == aiLightSource_DIRECTIONAL ? LightKind::Directional : LightKind::Positional;
    Set3(data.position, light.mPosition);
    if (light.mType == aiLightSource_POINT)
    {
        // Points shine everywhere; some parsers store a direction all the same.
        Set3(data.direction, aiVector3D(0, 0, 0));
    }
    else
    {
        Set3(data.direction, light.mDirection);
    }
    data.color[0] = light.mColorDiffuse.r;
    data.color[1] = light.mColorDiffuse.g;
    data.color[2] = light.mColorDiffuse.b;
    m_model.lights.push_back(data);
}

} // namespace

void FlattenScene(const aiScene& scene, const ImportLimits& limits, ModelData& model)
{
    Flattener(scene, limits, model).Run();
}

} // namespace OV::Host
