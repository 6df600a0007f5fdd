#pragma once

#include "orvane/effects/MaterialEffectES20.h"
#include "orvane/imaging/FilePath.h"
#include "orvane/imaging/TextureLoader.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"

#include <GL/glew.h>

#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace OV::Test
{

/// Effect that turns each call of the render side into one GL call, so that a recorder shows
/// both in their order:
/// Apply glUseProgram(77), Remove glUseProgram(0), BindMeshAttributes glEnableVertexAttribArray
/// (the mesh's position offset), BindMeshUniforms glUniform1i(0, the node's user data),
/// ReleaseMeshAttributes glDisableVertexAttribArray(the same offset).
class MarkingEffect : public MaterialEffectES20
{
public:
    static constexpr unsigned Program = 77;

    explicit MarkingEffect(int* deaths = nullptr) : MaterialEffectES20(nullptr), m_deaths(deaths) {}

    ~MarkingEffect() override
    {
        if (m_deaths)
            ++*m_deaths;
    }

    void Apply(MaterialES20* material, CameraNodeES20* camera) override
    {
        lastMaterial = material;
        lastCamera = camera;
        ++applied;
        glUseProgram(Program);
    }

    void Remove() override
    {
        ++removed;
        glUseProgram(0);
    }

    void BindMeshAttributes(MeshES20* mesh) override
    {
        sawClipPlanesActive = clipPlanesActive;
        sawMeshNodeFlag = meshNodeFlag;
        glEnableVertexAttribArray(static_cast<unsigned>(mesh->GetPositionOffset()));
    }

    void ReleaseMeshAttributes(MeshES20* mesh) override
    {
        glDisableVertexAttribArray(static_cast<unsigned>(mesh->GetPositionOffset()));
    }

    void BindMeshUniforms(MeshNode* node) override { glUniform1i(0, node->GetUserData()); }

    MaterialES20* lastMaterial = nullptr;
    CameraNodeES20* lastCamera = nullptr;
    int applied = 0;
    int removed = 0;
    bool sawClipPlanesActive = false;
    bool sawMeshNodeFlag = false;

private:
    int* m_deaths;
};

/// Loader that notes what it is asked, and answers what the test laid down.
class LaidDownLoader : public TextureLoader
{
public:
    struct Answer
    {
        unsigned id = 0;
        float uScale = 1.0f;
        float vScale = 1.0f;
        bool hasAlpha = false;
        bool throws = false;
    };

    unsigned CreateTextTexture(const std::string&, int, const std::string&, int, int&, int&, int&, int&) override
    {
        log.push_back("text");
        return 0;
    }

    unsigned CreateTexture(unsigned char* data, int width, int height, float& uScale, float& vScale, bool& hasAlpha,
                           bool clamp) override
    {
        log.push_back("pixels " + std::to_string(data[0]) + " " + std::to_string(width) + "x" +
                      std::to_string(height) + (clamp ? " clamp" : " repeat"));
        return Give(uScale, vScale, hasAlpha);
    }

    unsigned CreateTexture(const FilePath&, const std::string& name, int&, int&, float& uScale, float& vScale,
                           bool flag, float scale, int limit, bool& hasAlpha) override
    {
        log.push_back("file " + name + (flag ? " true " : " false ") + std::to_string(scale) + " " +
                      std::to_string(limit));
        return Give(uScale, vScale, hasAlpha);
    }

    unsigned CreateMipMapTexture(const FilePath&, const std::vector<std::string>&) override { return 0; }
    unsigned CreateCubeMap(const FilePath&, const std::vector<std::string>&) override { return 0; }

    bool ReleaseTexture(unsigned id) override
    {
        log.push_back("release " + std::to_string(id));
        return true;
    }

    void Suspend() override { log.push_back("suspend"); }
    void Resume() override { log.push_back("resume"); }

    std::deque<Answer> answers; ///< in order; none left: failure
    std::vector<std::string> log;

private:
    unsigned Give(float& uScale, float& vScale, bool& hasAlpha)
    {
        if (answers.empty())
            return 0;
        const Answer answer = answers.front();
        answers.pop_front();
        uScale = answer.uScale;
        vScale = answer.vScale;
        hasAlpha = answer.hasAlpha;
        if (answer.throws)
            throw std::string("a loader may throw anything");
        return answer.id;
    }
};

/// The streams of a raw mesh beside the positions.
struct Format
{
    bool normals = false;
    bool texture = false;
    bool colors = false;
};

/// Geometry with vertex i at (i, 0, 0), its other streams zero, and the given indices.
inline std::shared_ptr<RawMesh> MakeRawMesh(std::size_t vertices, std::vector<unsigned short> indices = {},
                                            Format format = {})
{
    auto raw = std::make_shared<RawMesh>();
    std::vector<Vector> positions(vertices);
    for (std::size_t i = 0; i < vertices; ++i)
        positions[i] = Vector(static_cast<float>(i), 0.0f, 0.0f);
    raw->SetPositionBuffer(std::move(positions));
    if (format.normals)
        raw->SetNormalBuffer(std::vector<Vector>(vertices));
    if (format.texture)
        raw->SetTextureBuffer(std::vector<TextureCoordinate>(vertices));
    if (format.colors)
        raw->SetColorBuffer(std::vector<Color>(vertices));
    raw->SetIndices(std::move(indices));
    raw->EndDescription(true);
    return raw;
}

/// A mesh without a scene, and its render data once it was given any.
inline MeshES20* DataOf(Mesh& mesh)
{
    return static_cast<MeshES20*>(mesh.GetRenderData());
}

/// Gives a mesh render data of this pool, as the material render data do.
inline MeshES20* Attach(Mesh& mesh, SharedBufferPool& pool)
{
    auto* data = new MeshES20(&mesh, &pool);
    mesh.SetRenderData(data, true);
    return data;
}

} // namespace OV::Test
