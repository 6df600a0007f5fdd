#pragma once

#include "orvane/Export.h"
#include "orvane/base/WatchedPtr.h"
#include "orvane/imaging/TextureLoaderPtr.h"
#include "orvane/renderdata/MeshStyleES20.h"
#include "orvane/renderdata/RenderItemES20.h"
#include "orvane/renderdata/SharedBufferPoolPtr.h"

#include <cstdint>
#include <string>
#include <vector>

namespace OV
{

namespace detail
{

struct PlainDraw;
class PlainDraws;

/// The factors of a texture, as a loader gives them.
struct LoadedScale;

} // namespace detail

class EffectCache;
class Material;
class Material2D;
class Mesh;
class MeshES20;
class MeshNode;
class SharedBufferPool;
class TextureLoader;

/// Render data of a material: its textures, and one effect for each render pass.
///
/// Hangs on a Material, which owns it. Texture loader, pool and cache may die first: without
/// pool or cache nothing more is drawn through it and a renderer replaces it.
class ORVANE_API MaterialES20 : public MeshStyleES20
{
public:
    /// The texture name of an answer that is still to come.
    static constexpr unsigned int PendingTexture = 0xFFFFFFFFu;

    /// Loads the textures and fetches the effects. GL, as far as the two makers need it.
    /// A texture that can't be loaded, also by an exception of the loader, is left out.
    /// @param material not null. When it dies first, as in the hands of a texture loader's host,
    ///        nothing more is drawn.
    /// @param textureLoader, bufferPool, effectCache not owned; each may be null.
    MaterialES20(Material* material, TextureLoader* textureLoader, SharedBufferPool* bufferPool,
                 EffectCache* effectCache);

    /// The copy serves the same material but owns no texture and no effect: it draws nothing.
    MaterialES20(const MaterialES20& other);

    /// Gives up the own textures and effects and takes the values, as the copy does.
    MaterialES20& operator=(const MaterialES20& other);

    /// Releases textures and effects. GL for those that nobody else holds.
    ~MaterialES20() override;

    /// Lists the material's meshes that are ready, making their render data at need. A
    /// NodeMaterial lists the meshes of the nodes that it is the current material of. While
    /// the texture is still to come nothing is listed and the scene is marked dirty.
    /// @param clippingPlane whether the clip planes cut these meshes.
    void Prepare(CameraNodeES20* camera, std::vector<RenderItemES20>& items, bool clippingPlane);

    /// Lists one mesh at one node, ready or not, and uses up the material's draw ID.
    void PrepareSpecificNode(CameraNodeES20* camera, Mesh* mesh, MeshNode* node,
                             std::vector<RenderItemES20>& items, bool clippingPlane);

    /// Sets culling and polygon offset by the material's flags, then applies the effect of the
    /// pass. GL.
    /// @return false for a material without meshes and for a pass without an effect; in the
    ///         second case culling and polygon offset are set all the same.
    bool Apply(CameraNodeES20* camera, RenderPass pass) override;
    void Apply(CameraNodeES20* camera) override;

protected:
    void Remove() override;

public:
    /// A pass out of range gives the effect of the default pass.
    EffectES20* GetShader(RenderPass pass) override;
    EffectES20* GetShader() override;

    Material* GetMaterial() const { return material; }
    TextureLoader* GetTextureLoader() const { return textureLoader; }

    /// GL names; 0: none. The base texture may be PendingTexture, and is then not to be bound.
    unsigned int GetTextureID() const { return textureId; }
    unsigned int GetNormalMapID() const { return normalMapId; }
    unsigned int GetOpacityMapID() const { return opacityMapId; }

    /// The loader's scale of the texture loaded last times the material's own.
    float GetUScale() const { return uScale; }
    float GetVScale() const { return vScale; }

    /// How many of some meshes have colours of their vertices.
    enum class Colored : unsigned char
    {
        None,
        Some,
        All
    };

    /// How many have of the meshes that Prepare listed last, once they are uploaded. One without vertices doesn't
    /// count. In a steady frame none is looked at.
    Colored HowManyListedAreColored();

    /// False once the pool or the cache is gone, or if there never was one.
    bool IsConnected() const { return bufferPool && effectCache; }

    // What every frame reads stands first and together, as in a mesh.
    Material* material = nullptr;   ///< not owned; null once it is gone
    SharedBufferPoolPtr bufferPool; ///< not owned; reads null once it is gone
    EffectCache* effectCache = nullptr; ///< not owned; null once it is gone
    EffectES20* currentEffect = nullptr; ///< of the running Apply; null outside one
    unsigned int textureId = 0;
    float uScale = 1.0f;
    float vScale = 1.0f;

private:
    friend class detail::PlainDraws;
    friend class Renderer20;

    /// The meshes that were listed last, and under what that holds: in a steady frame none is looked
    /// at.
    struct List
    {
        std::vector<detail::PlainDraw> items;
        bool holds = false;
        bool arePlain = false; ///< all of them
        bool clippingPlane = false;
        bool knowsColored = false;
        Colored colored = Colored::None;
        std::uint64_t meshes = 0;  ///< revision of the material's meshes
        std::uint64_t listing = 0; ///< revision of all meshes' render data
    };
    List m_list;

public:
    /// By RenderPass, one counted reference each. All are MaterialEffectES20.
    EffectES20* passEffects[kRenderPassCount] = {};
    unsigned int normalMapId = 0;
    unsigned int opacityMapId = 0;
    float materialUScale = 1.0f; ///< the material's own scale alone; the packer reads it
    float materialVScale = 1.0f;
    TextureLoaderPtr textureLoader; ///< not owned; reads null once it is gone

protected:
    /// Asks again for a base texture that is still to come.
    /// @return false while there is no answer.
    bool EnsureTextureLoaded();

    /// Gives the mesh render data in the slot of its RawMesh, so that meshes that share it
    /// share one place in a buffer. Nothing without a pool.
    void CreateMeshES20(Mesh* mesh);

private:
    void WatchMaterial();
    static void OnMaterialGone(void* self);
    void WatchCache();
    static void OnEffectCacheGone(void* self);
    void TakeValues(const MaterialES20& other);
    void TakeEffects();
    void TakeEffect(unsigned int pass, int effectType);
    void ReleaseEffects();
    void LoadTextures();
    void SetUpPass(unsigned int pass);
    void FollowShaderType(unsigned int pass);
    void LoadHudTexture();
    void LoadText(Material2D& flat);
    void LoadSurfaceTextures();
    void ReleaseTextures();
    void LoadBase(detail::LoadedScale& scale, bool flag);
    void LoadPixels(detail::LoadedScale& scale, bool clamp);
    unsigned int LoadMap(std::string Material::*name);

    /// Prepare, which lists meshes that all are plain as one item: it has the style and no mesh, and
    /// stands for the list of this material.
    void PrepareWhole(CameraNodeES20* camera, std::vector<RenderItemES20>& items, bool clippingPlane);

    /// Prepare as far as it comes before the meshes are listed, of which the list is brought up to date.
    /// @return whether they are to be listed.
    bool PrepareList(CameraNodeES20* camera, std::vector<RenderItemES20>& items, bool clippingPlane);
    void PrepareNodes(CameraNodeES20* camera, std::vector<RenderItemES20>& items, bool clippingPlane);
    void ListMeshes(std::vector<RenderItemES20>& items);
    void UpdateList(bool clippingPlane);
    void MakeList(bool clippingPlane);
    void ListMesh(Mesh* mesh, bool clippingPlane);

    /// Whether the list made last still says what is drawn, and how.
    bool ListHolds() const;
    MeshES20* MeshDataOf(Mesh* mesh);

    /// The slots that follow the shader type: the two advanced passes.
    static constexpr unsigned int kModelSlots = 2;

    /// What a change of the shader type took out of each of them, with the slot's reference.
    EffectES20* m_replacedEffects[kModelSlots] = {};
    LifetimeWatch m_cacheWatch;
    LifetimeWatch m_materialWatch;
};

} // namespace OV
