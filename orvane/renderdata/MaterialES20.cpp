#include "orvane/renderdata/MaterialES20.h"

#include "orvane/base/detail/Walk.h"
#include "orvane/effects/AdvancedMaterialEffectES20.h"
#include "orvane/effects/AdvancedMaterialPhongEffectES20.h"
#include "orvane/effects/CrosshatchEffectES20.h"
#include "orvane/effects/EffectCache.h"
#include "orvane/effects/MaterialEffectES20.h"
#include "orvane/effects/MonotoneEffectES20.h"
#include "orvane/imaging/TextureLoader.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/renderdata/RenderDataStandIn.h"
#include "orvane/renderdata/SharedBufferPool.h"
#include "orvane/renderdata/detail/PlainDraw.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/NodeMaterial.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <GL/glew.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <typeinfo>
#include <utility>

namespace OV
{

namespace
{

/// The effect of each slot, by RenderPass.
constexpr EffectCache::EffectType kPassEffects[kRenderPassCount] = {
    EffectCache::BasicMaterialAmbientPass,  // RenderPassAmbient
    EffectCache::BasicMaterial,             // RenderPassDefault
    EffectCache::BasicMaterialAdditive,     // RenderPassBasicVariant
    EffectCache::WeightedAverageSecondPass, // RenderPassWeightedAverage
    EffectCache::DepthIdPass,               // RenderPassDepthId
    EffectCache::DepthIdPass,               // RenderPassDepthIdSecond
    EffectCache::SSAO,                      // RenderPassSSAO
    EffectCache::Sky,                       // RenderPassSky
    EffectCache::VertexColor,               // RenderPassVertexColor
    EffectCache::AdvancedMaterial,          // RenderPassAdvanced
    EffectCache::AdvancedMaterial,          // RenderPassAdvancedSecond
    EffectCache::Crosshatch,                // RenderPassCrosshatch
    EffectCache::Crosshatch,                // RenderPassCrosshatchSecond
    EffectCache::Monotone,                  // RenderPassMonotone
    EffectCache::Monotone,                  // RenderPassMonotoneSecond
};

/// Whether an effect is of a class or of what derives from it, for which alone the classes are searched.
template <class Effect>
bool IsOf(const EffectES20* effect)
{
    return effect && (typeid(*effect) == typeid(Effect) || dynamic_cast<const Effect*>(effect));
}

/// Whether an effect is one of the model that advanced materials are shaded by.
bool IsOfModel(const EffectES20* effect, EffectCache::EffectType model)
{
    return model == EffectCache::AdvancedMaterialPhong ? IsOf<AdvancedMaterialPhongEffectES20>(effect)
                                                       : IsOf<AdvancedMaterialEffectES20>(effect);
}

/// Null for an effect of neither model.
AdvancedMaterialBaseES20* AsAdvanced(EffectES20& effect)
{
    const std::type_info& type = typeid(effect);
    const bool isOwn = type == typeid(AdvancedMaterialEffectES20) || type == typeid(AdvancedMaterialPhongEffectES20);
    return isOwn ? static_cast<AdvancedMaterialBaseES20*>(&effect) : dynamic_cast<AdvancedMaterialBaseES20*>(&effect);
}

bool IsNodeMaterial(Material& material)
{
    return material.HasType(NodeTypeNodeMaterial);
}

/// Null for what is none, as a host may have put into the slot. The cast, which searches the
/// classes, is for what derives.
MeshES20* AsMeshData(Object* data)
{
    if (data && typeid(*data) == typeid(MeshES20))
    {
        return static_cast<MeshES20*>(data);
    }
    return dynamic_cast<MeshES20*>(data);
}

} // namespace

MaterialES20::MaterialES20(Material* sceneMaterial, TextureLoader* loader, SharedBufferPool* pool,
                           EffectCache* cache) :
    material(sceneMaterial),
    bufferPool(pool), effectCache(cache), textureLoader(loader)
{
    WatchMaterial();
    WatchCache();
    materialUScale = material->uScale;
    materialVScale = material->vScale;
    try
    {
        // Each calls the host, in whose code the material may die.
        LoadTextures();
        TakeEffects();
    }
    catch (...)
    {
        // The destructor does not run for what was never finished.
        ReleaseTextures();
        ReleaseEffects();
        throw;
    }
    if (!material)
    {
        return;
    }
    uScale *= material->uScale;
    vScale *= material->vScale;
}

MaterialES20::MaterialES20(const MaterialES20& other) :
    MeshStyleES20(other)
{
    TakeValues(other);
}

MaterialES20& MaterialES20::operator=(const MaterialES20& other)
{
    if (this != &other)
    {
        ReleaseTextures();
        ReleaseEffects();
        TakeValues(other);
    }
    return *this;
}

MaterialES20::~MaterialES20()
{
    ReleaseTextures();
    ReleaseEffects();
}

void MaterialES20::Prepare(CameraNodeES20* camera, std::vector<RenderItemES20>& items, bool clippingPlane)
{
    if (PrepareList(camera, items, clippingPlane))
    {
        ListMeshes(items);
    }
}

void MaterialES20::PrepareWhole(CameraNodeES20* camera, std::vector<RenderItemES20>& items, bool clippingPlane)
{
    if (!PrepareList(camera, items, clippingPlane))
    {
        return;
    }
    if (!m_list.arePlain || !m_list.holds)
    {
        ListMeshes(items);
    }
    else if (!m_list.items.empty())
    {
        items.push_back({nullptr, this, false, nullptr});
    }
}

bool MaterialES20::PrepareList(CameraNodeES20* camera, std::vector<RenderItemES20>& items, bool clippingPlane)
{
    if (!EnsureTextureLoaded())
    {
        return false;
    }
    // A class of the host's may say that it is something else.
    const bool isOfNodes = typeid(*material) != typeid(Material) && IsNodeMaterial(*material);
    if (!material)
    {
        return false;
    }
    if (isOfNodes)
    {
        PrepareNodes(camera, items, clippingPlane);
        return false;
    }
    UpdateList(clippingPlane);
    return true;
}

void MaterialES20::PrepareNodes(CameraNodeES20* camera, std::vector<RenderItemES20>& items, bool clippingPlane)
{
    for (MeshNode* node : static_cast<NodeMaterial*>(material)->GetNodes())
    {
        if (node->CurrentNodeMaterial() != material)
        {
            continue;
        }
        for (Mesh* mesh : node->EachMesh())
        {
            PrepareSpecificNode(camera, mesh, node, items, clippingPlane);
        }
    }
}

void MaterialES20::UpdateList(bool clippingPlane)
{
    // A large scene is bound by memory: where nothing has changed, no mesh is looked at.
    if (!ListHolds() || m_list.clippingPlane != clippingPlane)
    {
        MakeList(clippingPlane);
    }
}

void MaterialES20::ListMeshes(std::vector<RenderItemES20>& items)
{
    const std::size_t needed = items.size() + m_list.items.size();
    if (items.capacity() < needed)
    {
        // Less room to spare than the vector would take by itself, since the list of a large scene
        // stays.
        items.reserve(needed + needed / 8);
    }
    for (const detail::PlainDraw& listed : m_list.items)
    {
        // In place: copied right after it was made, the processor would wait for it.
        RenderItemES20& item = items.emplace_back();
        item.mesh = listed.mesh;
        item.style = this;
    }
}

bool MaterialES20::ListHolds() const
{
    return m_list.holds && material && m_list.meshes == material->GetMeshesRevision() &&
           m_list.listing == MeshES20::GetListingRevision();
}

void MaterialES20::MakeList(bool clippingPlane)
{
    m_list.items.clear();
    const OrderedMeshes& meshes = material->EachMesh();
    m_list.items.reserve(meshes.size());
    m_list.holds = true;
    m_list.arePlain = true;
    m_list.knowsColored = false;
    for (auto place = meshes.begin(); place != meshes.end();)
    {
        const std::uint64_t revision = material->GetMeshesRevision();
        const std::uint64_t sortID = (*place)->GetSortID();
        ListMesh(*place, clippingPlane);
        if (material->GetMeshesRevision() == revision)
        {
            ++place;
        }
        else
        {
            // What the end of a host's render data has led to.
            place = meshes.Behind(sortID);
        }
    }
    m_list.meshes = material->GetMeshesRevision();
    m_list.listing = MeshES20::GetListingRevision();
    m_list.clippingPlane = clippingPlane;
}

void MaterialES20::ListMesh(Mesh* mesh, bool clippingPlane)
{
    // Whether a mesh with a draw ID is drawn is decided anew in every frame.
    m_list.holds = m_list.holds && !mesh->UsingDrawID();
    if (!mesh->ReadyToDraw())
    {
        return;
    }
    const Object* const present = mesh->GetRenderData();
    MeshES20* const meshData = MeshDataOf(mesh);
    if (!meshData)
    {
        m_list.holds = false;
        return;
    }
    if (meshData == present)
    {
        meshData->EnableClippingPlane(clippingPlane);
    }
    else
    {
        // What is new stands in no other list.
        meshData->clippingPlaneEnabled = clippingPlane;
    }
    m_list.items.push_back(detail::PlainDrawOf(mesh, meshData));
    m_list.arePlain = m_list.arePlain && m_list.items.back().node;
}

MaterialES20::Colored MaterialES20::HowManyListedAreColored()
{
    if (m_list.knowsColored || !ListHolds())
    {
        return m_list.colored;
    }
    bool isAny = false;
    bool isEach = true;
    m_list.knowsColored = true;
    for (const detail::PlainDraw& listed : m_list.items)
    {
        const MeshES20& data = listed.Data();
        const bool isUploaded = data.vertexBufferId != 0;
        const bool isColored = data.colorOffset >= 0;
        isAny = isAny || (isUploaded && isColored);
        isEach = isEach && (!isUploaded || isColored);
        m_list.knowsColored = m_list.knowsColored && (isUploaded || !data.sharedBuffer);
    }
    m_list.colored = !isAny ? Colored::None : isEach ? Colored::All : Colored::Some;
    return m_list.colored;
}

void MaterialES20::PrepareSpecificNode(CameraNodeES20*, Mesh* mesh, MeshNode* node,
                                       std::vector<RenderItemES20>& items, bool clippingPlane)
{
    const detail::Walk walk(this, detail::Walk::Other);
    if (!EnsureTextureLoaded() || walk.IsGone(mesh) || walk.IsGone(node))
    {
        return;
    }
    if (MeshES20* meshData = MeshDataOf(mesh))
    {
        meshData->EnableClippingPlane(clippingPlane);
        items.push_back({mesh, this, true, node});
    }
    if (material->UsingDrawID())
    {
        material->InvalidateDrawID();
    }
}

bool MaterialES20::Apply(CameraNodeES20* camera, RenderPass pass)
{
    if (!material || (material->EachMesh().empty() && !IsNodeMaterial(*material)) || !material)
    {
        return false;
    }
    const unsigned int flags = material->GetFlags();
    if ((flags & MaterialFlagNoCull) != 0)
    {
        glDisable(GL_CULL_FACE);
    }
    if ((flags & MaterialFlagPolygonOffset) != 0)
    {
        glEnable(GL_POLYGON_OFFSET_FILL);
        glPolygonOffset(material->polygonOffsetFactor, material->polygonOffsetUnits);
    }
    else
    {
        glDisable(GL_POLYGON_OFFSET_FILL);
    }
    const auto slot = static_cast<unsigned int>(pass);
    currentEffect = slot < kRenderPassCount ? passEffects[slot] : nullptr;
    if (!currentEffect)
    {
        return false;
    }
    SetUpPass(slot);
    static_cast<MaterialEffectES20*>(currentEffect)->Apply(this, camera);
    return true;
}

void MaterialES20::SetUpPass(unsigned int pass)
{
    switch (pass)
    {
    case RenderPassAdvanced:
    case RenderPassAdvancedSecond:
        FollowShaderType(pass);
        if (AdvancedMaterialBaseES20* const advanced = AsAdvanced(*currentEffect))
        {
            advanced->passFlag = pass == RenderPassAdvancedSecond;
        }
        break;
    case RenderPassCrosshatch:
    case RenderPassCrosshatchSecond:
        if (auto* const crosshatch = dynamic_cast<CrosshatchEffectES20*>(currentEffect))
        {
            crosshatch->passFlag = pass == RenderPassCrosshatchSecond;
        }
        break;
    case RenderPassMonotone:
    case RenderPassMonotoneSecond:
        if (auto* const monotone = dynamic_cast<MonotoneEffectES20*>(currentEffect))
        {
            monotone->passFlag = pass == RenderPassMonotoneSecond;
        }
        break;
    default:
        break;
    }
}

void MaterialES20::FollowShaderType(unsigned int pass)
{
    const EffectCache::EffectType wanted = EffectES20::GetAdvancedMaterialShaderType();
    if (IsOfModel(currentEffect, wanted) || !effectCache)
    {
        return;
    }
    // The replaced one is kept, to the end of this object, so that going back and forth between
    // the models neither compiles anything anew nor piles up references.
    EffectES20*& replaced = m_replacedEffects[pass - RenderPassAdvanced];
    EffectES20* const effect =
        IsOfModel(replaced, wanted) ? std::exchange(replaced, nullptr) : effectCache->GetEffect(wanted);
    if (!effect)
    {
        return;
    }
    if (replaced)
    {
        replaced->Release();
    }
    replaced = currentEffect;
    currentEffect = effect;
    passEffects[pass] = effect;
}

void MaterialES20::Apply(CameraNodeES20* camera)
{
    currentEffect = passEffects[RenderPassDefault];
    if (currentEffect && material)
    {
        static_cast<MaterialEffectES20*>(currentEffect)->Apply(this, camera);
    }
}

void MaterialES20::Remove()
{
    // Polygon offset stays: every Apply sets it one way or the other.
    // Whether a material that is gone had turned it off is not known.
    if (!material || (material->GetFlags() & MaterialFlagNoCull) != 0)
    {
        glEnable(GL_CULL_FACE);
    }
    if (currentEffect)
    {
        static_cast<MaterialEffectES20*>(currentEffect)->Remove();
        currentEffect = nullptr;
    }
}

EffectES20* MaterialES20::GetShader(RenderPass pass)
{
    if (!material)
    {
        return nullptr;
    }
    const auto slot = static_cast<unsigned int>(pass);
    return passEffects[slot < kRenderPassCount ? slot : static_cast<unsigned int>(RenderPassDefault)];
}

EffectES20* MaterialES20::GetShader()
{
    return passEffects[RenderPassDefault];
}

void MaterialES20::CreateMeshES20(Mesh* mesh)
{
    if (bufferPool)
    {
        mesh->SetRenderData(new MeshES20(mesh, bufferPool), true);
    }
}

MeshES20* MaterialES20::MeshDataOf(Mesh* mesh)
{
    Object* const data = mesh->GetRenderData();
    MeshES20* const meshData = AsMeshData(data);
    const bool isOthers = data && !meshData && !dynamic_cast<RenderDataStandIn*>(data);
    if (isOthers || (meshData && meshData->pool))
    {
        return meshData;
    }
    CreateMeshES20(mesh);
    return AsMeshData(mesh->GetRenderData());
}

void MaterialES20::TakeEffects()
{
    if (!effectCache || !material)
    {
        return;
    }
    if (material->HasType(NodeTypeMaterial2D))
    {
        TakeEffect(RenderPassDefault, EffectCache::HUD);
        return;
    }
    if (material && material->HasType(NodeTypeSimMaterial))
    {
        TakeEffect(RenderPassDefault, EffectCache::SimMaterial);
        return;
    }
    for (unsigned int pass = 0; pass < kRenderPassCount; ++pass)
    {
        TakeEffect(pass, kPassEffects[pass]);
    }
}

void MaterialES20::TakeEffect(unsigned int pass, int effectType)
{
    EffectES20* effect = effectCache->GetEffect(static_cast<EffectCache::EffectType>(effectType));
    if (!effect)
    {
        return;
    }
    if (dynamic_cast<MaterialEffectES20*>(effect))
    {
        passEffects[pass] = effect;
    }
    else
    {
        effect->Release();
    }
}

void MaterialES20::ReleaseEffects()
{
    currentEffect = nullptr;
    const auto release = [](EffectES20*& slot)
    {
        if (EffectES20* effect = std::exchange(slot, nullptr))
        {
            effect->Release();
        }
    };
    std::for_each(std::begin(m_replacedEffects), std::end(m_replacedEffects), release);
    std::for_each(std::begin(passEffects), std::end(passEffects), release);
}

void MaterialES20::WatchMaterial()
{
    m_materialWatch.Watch(material->GetLifetime(), &OnMaterialGone, this);
}

void MaterialES20::OnMaterialGone(void* self)
{
    static_cast<MaterialES20*>(self)->material = nullptr;
}

void MaterialES20::WatchCache()
{
    if (effectCache)
    {
        m_cacheWatch.Watch(effectCache->GetLifetime(), &OnEffectCacheGone, this);
    }
    else
    {
        m_cacheWatch.Stop();
    }
}

void MaterialES20::OnEffectCacheGone(void* self)
{
    auto* data = static_cast<MaterialES20*>(self);
    data->ReleaseEffects();
    data->effectCache = nullptr;
    Material::ListingChanged();
}

void MaterialES20::TakeValues(const MaterialES20& other)
{
    material = other.material;
    textureLoader = other.textureLoader;
    bufferPool = other.bufferPool;
    effectCache = other.effectCache;
    uScale = other.uScale;
    vScale = other.vScale;
    materialUScale = other.materialUScale;
    materialVScale = other.materialVScale;
    if (material)
    {
        WatchMaterial();
    }
    else
    {
        m_materialWatch.Stop();
    }
    WatchCache();
}

} // namespace OV
