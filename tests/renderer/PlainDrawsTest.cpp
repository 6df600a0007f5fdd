#include "orvane/effects/AdvancedMaterialBaseES20.h"
#include "orvane/effects/DepthIdPassEffectES20.h"
#include "orvane/effects/EffectES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/NodeMaterial.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"
#include "tests/effects/EffectSettingsGuard.h"
#include "tests/renderer/RendererDoubles.h"
#include "tests/support/CountingMeshData.h"
#include "tests/support/GLRecorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

// A frame draws plain meshes of the engine's own class in one loop over what a list has kept of them, and
// those of a host's class by looking at each. Whatever changes between two frames, both make the same calls.
namespace OV::Test
{

namespace
{

using MakeMesh = std::function<Mesh*(const std::shared_ptr<RawMesh>&, Scene*)>;

class HostMesh : public Mesh
{
public:
    using Mesh::Mesh;
};

Mesh* MakeOwn(const std::shared_ptr<RawMesh>& geometry, Scene* scene)
{
    return new Mesh(geometry, scene);
}

Mesh* MakeHosts(const std::shared_ptr<RawMesh>& geometry, Scene* scene)
{
    return new HostMesh(geometry, scene);
}

/// In which pass all of a stage is drawn, by which model where there are two, and with which identifiers.
struct Look
{
    const char* label;
    RenderPass pass;
    EffectCache::EffectType model;
    int idMode = 0;
};

const Look kLooks[] = {
    {"basic", RenderPassDefault, EffectCache::AdvancedMaterial},
    {"advanced", RenderPassAdvanced, EffectCache::AdvancedMaterial},
    {"Phong", RenderPassAdvanced, EffectCache::AdvancedMaterialPhong},
    {"identifiers of vertices", RenderPassDepthId, EffectCache::AdvancedMaterial, 0},
    {"identifiers of nodes", RenderPassDepthId, EffectCache::AdvancedMaterial, 1},
    {"monotone", RenderPassMonotone, EffectCache::AdvancedMaterial},
    {"monotone, second pass", RenderPassMonotoneSecond, EffectCache::AdvancedMaterial},
};
const Look& kBasic = kLooks[0];

/// What changes how all meshes of a stage are drawn.
struct Kind
{
    const char* label;
    Format format = {true, false, false};
    bool isLit = true;
    bool isMirrored = false; ///< every second node
    bool hasPlanes = false;  ///< the program has the uniforms of clip planes
    bool hasTexture = false; ///< likewise an attribute of texture coordinates
    bool takesColors = false; ///< of vertices, where the effect can
    bool isCut = false;       ///< there is a clip plane
    bool isEdited = false;    ///< every third node, where the effect greys the others
};

const Kind kKinds[] = {
    {"plain"},
    {"without normals", {false, false, false}},
    {"with texture coordinates", {true, true, false}},
    {"with a texture", {true, true, false}, true, false, false, true},
    {"a texture without coordinates", {true, false, false}, true, false, false, true},
    {"with colours", {true, false, true}},
    {"unlit", {true, false, false}, false},
    {"unlit, without normals", {false, false, false}, false},
    {"mirrored", {true, false, false}, true, true},
    {"mirrored, with clip planes", {true, false, false}, true, true, true},
    {"with clip planes", {true, false, false}, true, false, true},
    {"its colours taken", {true, false, true}, true, false, false, false, true},
    {"its colours and texture taken", {true, true, true}, true, false, false, true, true},
    {"colours taken that are not there", {true, false, false}, true, false, false, false, true},
    {"cut", {true, false, false}, true, true, true, false, false, true},
    {"edited", {true, false, false}, true, false, false, false, false, false, true},
};

/// Three meshes of one material, then one of another, each at a node of its own.
struct Stage
{
    Stage(MakeMesh makeMesh, const Kind& meshKind, const Look& inLook = kBasic) :
        look(inLook), make(std::move(makeMesh)), kind(meshKind)
    {
        EffectES20::SetAdvancedMaterialShaderType(look.model);
        EffectES20::ClearClipPlanes();
        if (kind.isCut)
        {
            EffectES20::AddClipPlane({1, 0, 0}, {1, 0, 0});
        }
        if (look.pass == RenderPassAdvanced)
        {
            auto* const effect =
                static_cast<AdvancedMaterialBaseES20*>(renderer.effectCache.GetEffect(look.model));
            effect->SetVertexColors(kind.takesColors);
            if (kind.isEdited)
            {
                effect->SetEditInContextPath({{1, 2}});
            }
            // The materials hold it from the first frame on.
            m_effect.reset(effect);
        }
        if (look.pass == RenderPassDepthId)
        {
            auto* const effect =
                static_cast<DepthIdPassEffectES20*>(renderer.effectCache.GetEffect(EffectCache::DepthIdPass));
            effect->SetIdMode(look.idMode);
            m_effect.reset(effect);
        }
        if (!kind.hasPlanes)
        {
            recorder.SetUniformLocation("u_numClipPlanes", -1);
        }
        recorder.SetAttribLocation("a_texture", kind.hasTexture ? 2 : -1);
        if (kind.isLit)
        {
            scene.GetRoot()->AddChild(new LightNode(&scene), false);
        }
        material = AddMaterial(scene, "first");
        other = AddMaterial(scene, "second");
        for (int i = 0; i < 4; ++i)
        {
            AddMesh(i < 3 ? *material : *other);
        }
        renderer.Resize(64, 64);
    }

    void AddMesh(Material& to)
    {
        auto* const mesh = make(MakeRawMesh(3, {0, 1, 2, 2, 1, 0}, kind.format), &scene);
        auto* const node = new MeshNode(&scene);
        Transform place;
        place.SetPosition(Vector(static_cast<float>(nodes.size()), 0.0f, -5.0f));
        // Two that stand side by side have one identifier.
        node->SetUserData(static_cast<int>(nodes.size() / 2) * 70000 - 5);
        if (kind.isMirrored && nodes.size() % 2 == 0)
        {
            place.SetScale(Vector(-1.0f, 1.0f, 1.0f));
        }
        node->SetLocal(place);
        if (kind.isEdited && nodes.size() % 3 == 0)
        {
            node->SetPath({{1, 2}, {3, 4}});
        }
        mesh->AddNode(node);
        scene.GetRoot()->AddChild(node, false);
        to.AddMesh(mesh);
        meshes.push_back(mesh);
        nodes.push_back(node);
    }

    /// The calls of a frame.
    std::vector<std::string> Frame()
    {
        recorder.Clear();
        scene.UpdateGraph(64.0f, 64.0f);
        if (look.pass == RenderPassDefault)
        {
            renderer.Render3D(&scene, scene.GetCameraNode());
        }
        else
        {
            DrawInPass();
        }
        return Calls();
    }

    /// Of items in the pass of the look.
    std::vector<std::string> Draw(const std::vector<RenderItemES20>& items)
    {
        recorder.Clear();
        renderer.RenderItemList(Camera(), items, look.pass);
        return Calls();
    }

    std::vector<std::string> Calls() const
    {
        std::vector<std::string> calls;
        for (const GLCall& call : recorder.Calls())
        {
            calls.push_back(call.ToString());
        }
        return calls;
    }

    CameraNodeES20* Camera() { return static_cast<CameraNodeES20*>(scene.GetCameraNode()->GetRenderData()); }

    EffectSettingsGuard settings;
    GLRecorder recorder;
    Scene scene;
    OpenRenderer20 renderer{nullptr, nullptr};
    Look look;
    MakeMesh make;
    Kind kind;
    Material* material = nullptr;
    Material* other = nullptr;
    std::vector<Mesh*> meshes;
    std::vector<MeshNode*> nodes;
    std::unique_ptr<Material> removed; ///< from the scene, which hands it back

private:
    struct Releasing
    {
        void operator()(EffectES20* effect) const { effect->Release(); }
    };

    /// What Render3D does about materials, in another pass.
    void DrawInPass()
    {
        if (!Camera())
        {
            scene.GetCameraNode()->SetRenderData(new CameraNodeES20(scene.GetCameraNode()));
        }
        Camera()->UpdateMVP(64, 64, false);
        std::vector<RenderItemES20> items;
        renderer.PrepareWholeMaterials(scene.GetOptimizedMaterials(), Camera(), items, false);
        renderer.bufferPool.GenerateVBOs();
        renderer.RenderItemList(Camera(), items, look.pass);
        MeshES20::ResetBufferCache();
    }

    std::unique_ptr<EffectES20, Releasing> m_effect;
};

/// Render data of a host's class that draws something else, after which nothing is known of a program.
class NestingData : public MeshES20
{
public:
    NestingData(Mesh* mesh, OpenRenderer20& drawnBy) : MeshES20(mesh, &drawnBy.bufferPool), m_renderer(drawnBy) {}

    void Render(EffectES20* effect, const std::vector<MeshNode*>& nodes, bool specificNode) override
    {
        MeshES20::Render(effect, nodes, specificNode);
        m_renderer.RenderItemList(nullptr, {}, RenderPassDefault);
    }

private:
    OpenRenderer20& m_renderer;
};

/// An effect of a host's class that points at positions and texture coordinates.
class StreamsEffect : public MaterialEffectES20
{
public:
    explicit StreamsEffect(bool saysSo) : MaterialEffectES20(nullptr)
    {
        m_discardsAtPlanes = true;
        if (saysSo)
        {
            DrawByStreams(0, 2);
        }
    }

    void Apply(MaterialES20*, CameraNodeES20* camera) override
    {
        m_camera = camera;
        UseOptions(0);
    }

    void Remove() override { EndUse(); }

    void BindMeshAttributes(MeshES20* mesh) override
    {
        ++bound;
        EnableAttribute(0, 3, mesh->GetStride(), mesh->GetPositionOffset());
        if (HasAttribute(2))
        {
            EnableStream(2, 2, mesh->GetStride(), mesh->GetTextureOffset());
        }
    }

    void ReleaseMeshAttributes(MeshES20* mesh) override
    {
        if (HasAttribute(2))
        {
            DisableStream(2, mesh->GetTextureOffset());
        }
        DisableAttribute(0);
    }

    void BindMeshUniforms(MeshNode* node) override
    {
        Set(0, ModelViewProjection(node));
        SetClipPlanes(2, 3, 1, clipPlanesActive);
    }

    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override
    {
        static constexpr IndexedName uniforms[] = {
            {0, "u_mvpMatrix"}, {1, "u_numClipPlanes"}, {2, "u_clipPlaneNormals"}, {3, "u_clipPlanePositions"}};
        static constexpr IndexedName attributes[] = {{0, "a_position"}, {2, "a_texture"}};
        static constexpr OptionRow noOptions[] = {{0, "DEFAULT"}};
        static constexpr ProgramTemplate source = {"StreamsEffect", "", "", noOptions, uniforms, attributes};
        return CreateFromTemplate(source, options, name);
    }

    int bound = 0;
};

std::vector<std::pair<const Look*, const Kind*>> LooksAndKinds()
{
    std::vector<std::pair<const Look*, const Kind*>> pairs;
    for (const Look& look : kLooks)
    {
        for (const Kind& kind : kKinds)
        {
            // The two models differ in the places of uniforms alone.
            if (look.model != EffectCache::AdvancedMaterialPhong || &kind == &kKinds[0] || kind.takesColors)
            {
                pairs.emplace_back(&look, &kind);
            }
        }
    }
    return pairs;
}

struct Change
{
    const char* label;
    std::function<void(Stage&)> make;
};

const Change kChanges[] = {
    {"nothing", [](Stage&) {}},
    {"a node moves", [](Stage& s) { s.nodes[1]->SetLocal(Transform()); }},
    {"the first node is hidden", [](Stage& s) { s.nodes[0]->SetFlags(NodeFlagHidden, false); }},
    {"a node is hidden", [](Stage& s) { s.nodes[1]->SetFlags(NodeFlagHidden, false); }},
    {"a node has a draw ID of the past", [](Stage& s) { s.nodes[1]->InvalidateDrawID(); }},
    {"a node has a material of its own",
     [](Stage& s)
     {
         auto* const own = new NodeMaterial;
         s.scene.AddMaterial(own);
         own->AddNode(s.nodes[1]);
     }},
    {"a mesh is shown at a second node", [](Stage& s) { s.meshes[1]->AddNode(s.nodes[2]); }},
    {"a mesh is shown at another node",
     [](Stage& s)
     {
         s.meshes[1]->RemoveNode(s.nodes[1]);
         s.meshes[1]->AddNode(s.nodes[3]);
     }},
    {"a node shows a mesh of points first",
     [](Stage& s)
     {
         s.meshes[1]->RemoveNode(s.nodes[1]);
         s.meshes[3]->AddNode(s.nodes[1]);
         s.meshes[1]->AddNode(s.nodes[1]);
         s.other->SetFlags(MaterialFlagPoints);
     }},
    {"a mesh is shown nowhere", [](Stage& s) { s.meshes[1]->RemoveNode(s.nodes[1]); }},
    {"a node dies", [](Stage& s) { delete s.nodes[1]; }},
    {"all nodes die",
     [](Stage& s)
     {
         for (MeshNode* node : s.nodes)
         {
             s.scene.DeleteSubtree(node);
         }
     }},
    {"a mesh dies", [](Stage& s) { delete s.meshes[1]; }},
    {"a mesh comes", [](Stage& s) { s.AddMesh(*s.material); }},
    {"a mesh of another format comes",
     [](Stage& s)
     {
         s.kind.format.normals = !s.kind.format.normals;
         s.AddMesh(*s.material);
         s.kind.format.normals = !s.kind.format.normals;
         s.AddMesh(*s.material);
     }},
    {"a mesh changes its material", [](Stage& s) { s.other->AddMesh(s.meshes[1]); }},
    {"a material dies",
     [](Stage& s)
     {
         s.scene.RemoveMaterial(s.material);
         delete s.material;
     }},
    {"a material leaves the scene",
     [](Stage& s)
     {
         s.scene.RemoveMaterial(s.material);
         s.removed.reset(s.material);
     }},
    {"a material dies, and another one comes",
     [](Stage& s)
     {
         delete s.material;
         s.material = AddMaterial(s.scene, "third");
         s.AddMesh(*s.material);
     }},
    {"the last material dies, and one without meshes comes, as a rule to where it was",
     [](Stage& s)
     {
         delete s.other;
         s.other = AddMaterial(s.scene, "third");
     }},
    {"a material becomes see-through",
     [](Stage& s)
     {
         s.material->SetOpacity(0.5f);
         s.scene.ProcessChangedMaterial(s.material);
     }},
    {"a material has a draw ID of the past", [](Stage& s) { s.material->InvalidateDrawID(); }},
    {"a material has a draw ID of the next frame",
     [](Stage& s) { s.material->SetDrawID(s.scene.GetUpdateID() + 1); }},
    {"a material loses its render data", [](Stage& s) { s.material->Suspend(); }},
    {"a material has other render data",
     [](Stage& s)
     {
         s.material->SetRenderData(
             new MaterialES20(s.material, nullptr, &s.renderer.bufferPool, &s.renderer.effectCache));
     }},
    {"a mesh is drawn from both sides", [](Stage& s) { s.meshes[1]->SetFlags(MeshFlagNoCull); }},
    {"a mesh marks its back faces", [](Stage& s) { s.meshes[1]->SetFlags(MeshFlagShowFaceSides); }},
    {"a mesh has the effect's flag", [](Stage& s) { s.meshes[1]->SetFlags(MeshFlagEffectFlag); }},
    {"a mesh has a draw ID of the past", [](Stage& s) { s.meshes[1]->InvalidateDrawID(); }},
    {"a mesh has a draw ID of the next frame", [](Stage& s) { s.meshes[1]->SetDrawID(s.scene.GetUpdateID() + 1); }},
    {"a mesh loses its render data", [](Stage& s) { s.meshes[1]->Suspend(); }},
    {"a mesh has the render data in its own slot",
     [](Stage& s) { s.meshes[1]->SetRenderData(new MeshES20(s.meshes[1], &s.renderer.bufferPool), false); }},
    {"a mesh draws something else in between",
     [](Stage& s) { s.meshes[0]->SetRenderData(new NestingData(s.meshes[0], s.renderer), true); }},
    {"fewer indices", [](Stage& s) { s.meshes[1]->GetRawMesh()->indices.resize(3); }},
    {"no indices", [](Stage& s) { s.meshes[1]->GetRawMesh()->indices.clear(); }},
    {"no positions", [](Stage& s) { s.meshes[1]->GetRawMesh()->positions.clear(); }},
    {"a mesh is turned round", [](Stage& s) { Mesh::InvertOrder(s.meshes[1], false); }},
    {"a mesh becomes another", [](Stage& s) { *s.meshes[1] = *s.meshes[3]; }},
    {"a second mesh over the same geometry",
     [](Stage& s)
     {
         Mesh* const second = s.make(s.meshes[1]->GetRawMesh(), &s.scene);
         second->AddNode(s.nodes[2]);
         second->SetFlags(MeshFlagShowFaceSides);
         s.material->AddMesh(second);
     }},
    {"drawn before all", [](Stage& s) { s.material->SetFlags(MaterialFlagAlwaysPass); }},
    {"drawn as points", [](Stage& s) { s.material->SetFlags(MaterialFlagPoints); }},
    {"drawn from both sides", [](Stage& s) { s.material->SetFlags(MaterialFlagNoCull); }},
    {"unlit", [](Stage& s) { s.material->SetFlags(MaterialFlagUnlit); }},
    {"suspended",
     [](Stage& s)
     {
         s.scene.Suspend();
         s.scene.Resume();
     }},
};

} // namespace

TEST(PlainDraws, FollowEveryChangeBetweenFrames)
{
    for (const auto& [look, kind] : LooksAndKinds())
    {
        for (const Change& change : kChanges)
        {
            const auto framesBy = [&, look = look, kind = kind](const MakeMesh& make)
            {
                Stage stage(make, *kind, *look);
                std::vector<std::vector<std::string>> frames;
                frames.push_back(stage.Frame());
                frames.push_back(stage.Frame());
                change.make(stage);
                frames.push_back(stage.Frame());
                frames.push_back(stage.Frame());
                frames.push_back(stage.Frame());
                return frames;
            };
            EXPECT_EQ(framesBy(MakeOwn), framesBy(MakeHosts))
                << look->label << ", " << kind->label << ", " << change.label;
        }
    }
}

TEST(PlainDraws, AChangeIsTakenBack)
{
    Stage stage(MakeOwn, kKinds[0]);
    stage.Frame();
    const std::vector<std::string> before = stage.Frame();
    stage.meshes[1]->SetFlags(MeshFlagNoCull);
    EXPECT_NE(stage.Frame(), before);
    stage.meshes[1]->ClearFlags(MeshFlagNoCull);
    EXPECT_EQ(stage.Frame(), before);
    stage.meshes[1]->AddNode(stage.nodes[2]);
    EXPECT_NE(stage.Frame(), before);
    stage.meshes[1]->RemoveNode(stage.nodes[2]);
    EXPECT_EQ(stage.Frame(), before);
}

TEST(PlainDraws, ItemsMayBeLeftOutRepeatedAndReordered)
{
    for (const MakeMesh& make : {MakeMesh(MakeOwn), MakeMesh(MakeHosts)})
    {
        Stage stage(make, kKinds[0]);
        stage.Frame();
        auto* const style = static_cast<MaterialES20*>(stage.material->GetRenderData());
        auto* const camera = static_cast<CameraNodeES20*>(stage.scene.GetCameraNode()->GetRenderData());
        const std::vector<std::vector<int>> orders = {{0, 1, 2}, {0, 2}, {2}, {2, 1, 0}, {1, 1, 2}, {}};
        for (const std::vector<int>& order : orders)
        {
            std::vector<RenderItemES20> items;
            for (const int index : order)
            {
                items.push_back({stage.meshes[static_cast<std::size_t>(index)], style, false, nullptr});
            }
            stage.recorder.Clear();
            stage.renderer.RenderItemList(camera, items, RenderPassDefault);
            EXPECT_EQ(stage.recorder.All("glDrawElements").size(), order.size());
        }
    }
}

// Whoever lists meshes by other means, or some of them, has no list of a material to draw by.
TEST(PlainDraws, ItemsOfNoListAreDrawnWithTheSameCalls)
{
    const std::vector<std::vector<int>> orders = {{0, 1, 2}, {0, 2}, {2}, {2, 1, 0}, {1, 1, 2}, {3, 0, 1}, {}};
    for (const auto& [look, kind] : LooksAndKinds())
    {
        for (const std::vector<int>& order : orders)
        {
            const auto callsBy = [&, look = look, kind = kind](const MakeMesh& make)
            {
                Stage stage(make, *kind, *look);
                stage.Frame();
                // Render data that are gone end all lists.
                stage.meshes[3]->Suspend();
                stage.nodes[1]->SetFlags(order.size() == 2 ? NodeFlagHidden : NodeFlagNoHitTest, false);
                auto* const style = static_cast<MaterialES20*>(stage.material->GetRenderData());
                std::vector<RenderItemES20> items;
                for (const int index : order)
                {
                    items.push_back({stage.meshes[static_cast<std::size_t>(index)], style, false, nullptr});
                }
                return stage.Draw(items);
            };
            EXPECT_EQ(callsBy(MakeOwn), callsBy(MakeHosts))
                << look->label << ", " << kind->label << ", " << order.size() << " items";
        }
    }
}

TEST(PlainDraws, MoreItemsOfNoListThanAreDrawnAtOnce)
{
    const auto callsBy = [](const MakeMesh& make, const Look& look)
    {
        Stage stage(make, kKinds[0], look);
        for (int i = 0; i < 200; ++i)
        {
            stage.AddMesh(*stage.material);
        }
        stage.Frame();
        stage.meshes[3]->Suspend();
        auto* const style = static_cast<MaterialES20*>(stage.material->GetRenderData());
        std::vector<RenderItemES20> items;
        for (Mesh* const mesh : stage.material->EachMesh())
        {
            items.push_back({mesh, style, false, nullptr});
        }
        std::vector<std::string> calls = stage.Draw(items);
        EXPECT_EQ(stage.recorder.All("glDrawElements").size(), items.size());
        return calls;
    };
    for (const Look& look : kLooks)
    {
        EXPECT_EQ(callsBy(MakeOwn, look), callsBy(MakeHosts, look)) << look.label;
    }
}

TEST(PlainDraws, DataThatSayTheyDrawAsTheBaseAreDrawnWithTheOthers)
{
    for (const Look& look : kLooks)
    {
        for (const bool saysSo : {true, false})
        {
            Stage stage(MakeOwn, kKinds[0], look);
            stage.Frame();
            const std::vector<std::string> before = stage.Frame();
            auto* const data = new CountingMeshData(stage.meshes[1], &stage.renderer.bufferPool, saysSo);
            stage.meshes[1]->SetRenderData(data, true);
            stage.Frame();
            EXPECT_EQ(stage.Frame().size(), before.size() + 4) << look.label << ": its buffer is another one";
            EXPECT_EQ(data->renders, saysSo ? 0 : 2) << look.label;
            // Likewise where there is no list.
            stage.meshes[3]->Suspend();
            auto* const style = static_cast<MaterialES20*>(stage.material->GetRenderData());
            stage.Draw({{stage.meshes[1], style, false, nullptr}});
            EXPECT_EQ(stage.recorder.All("glDrawElements").size(), 1u);
            EXPECT_EQ(data->renders, saysSo ? 0 : 3) << look.label;
        }
    }
}

TEST(PlainDraws, AHostsEffectThatSaysWhichStreamsItTakesIsAskedForUniformsAlone)
{
    for (const Kind& kind : kKinds)
    {
        const auto callsBy = [&](bool saysSo, bool inList)
        {
            Stage stage(MakeOwn, kind);
            stage.Frame();
            StreamsEffect effect(saysSo);
            std::vector<RenderItemES20> items;
            std::vector<std::pair<EffectES20**, EffectES20*>> replaced;
            for (Material* const material : {stage.material, stage.other})
            {
                auto* const style = static_cast<MaterialES20*>(material->GetRenderData());
                EffectES20*& slot = style->passEffects[RenderPassVertexColor];
                replaced.emplace_back(&slot, std::exchange(slot, &effect));
            }
            if (inList)
            {
                // What is clipped in the one frame and not in the next ends lists, and the frame after has them.
                for (int i = 0; i < 2; ++i)
                {
                    items.clear();
                    stage.renderer.PrepareWholeMaterials(stage.scene.GetOptimizedMaterials(), stage.Camera(), items,
                                                         true);
                }
            }
            else
            {
                for (Mesh* const mesh : stage.meshes)
                {
                    auto* const style = static_cast<MaterialES20*>(mesh->GetMaterial()->GetRenderData());
                    items.push_back({mesh, style, false, nullptr});
                }
            }
            stage.recorder.Clear();
            stage.renderer.RenderItemList(stage.Camera(), items, RenderPassVertexColor);
            std::vector<std::string> calls = stage.Calls();
            EXPECT_EQ(stage.recorder.All("glDrawElements").size(), stage.meshes.size());
            EXPECT_EQ(effect.bound, saysSo ? 0 : static_cast<int>(stage.meshes.size())) << kind.label;
            for (const auto& [slot, before] : replaced)
            {
                *slot = before;
            }
            return calls;
        };
        for (const bool inList : {false, true})
        {
            EXPECT_EQ(callsBy(true, inList), callsBy(false, inList)) << kind.label;
        }
    }
}

TEST(PlainDraws, AFrameInWhichNoMaterialHasChangedLooksAtNone)
{
    Stage stage(MakeOwn, kKinds[0]);
    for (int i = 0; i < 3; ++i)
    {
        stage.Frame();
    }
    // Without a word: whoever looks asks for the texture, and learns that there is none.
    auto* const style = static_cast<MaterialES20*>(stage.material->GetRenderData());
    style->textureId = MaterialES20::PendingTexture;
    stage.Frame();
    EXPECT_EQ(style->textureId, MaterialES20::PendingTexture);
    EXPECT_EQ(stage.recorder.All("glDrawElements").size(), stage.meshes.size());
    // Another one changes.
    stage.meshes.back()->SetFlags(MeshFlagNoCull);
    stage.Frame();
    EXPECT_EQ(style->textureId, 0u);
    EXPECT_EQ(stage.recorder.All("glDrawElements").size(), stage.meshes.size());
}

TEST(PlainDraws, WhatIsListedAsAWholeIsWhatIsListedOneByOne)
{
    Stage stage(MakeOwn, kKinds[0]);
    stage.Frame();
    auto* const camera = static_cast<CameraNodeES20*>(stage.scene.GetCameraNode()->GetRenderData());
    Material* const third = AddMaterial(stage.scene, "third");
    stage.AddMesh(*third);
    stage.AddMesh(*third);
    // A mesh at several nodes is an item of its own.
    stage.meshes.back()->AddNode(stage.nodes[0]);
    std::vector<Material*> lists[] = {
        {stage.material, stage.other, third}, {third, nullptr, stage.other}, {stage.other}, {}};
    const auto expectSame = [&](const std::vector<Material*>& list, bool clipped)
    {
        std::vector<RenderItemES20> items;
        stage.renderer.PrepareWholeMaterials(list, camera, items, clipped);
        std::vector<RenderItemES20> expected;
        for (Material* const material : list)
        {
            for (Mesh* const mesh : material ? material->EachMesh() : OrderedMeshes())
            {
                EXPECT_EQ(static_cast<MeshES20*>(mesh->GetRenderData())->clippingPlaneEnabled, clipped);
            }
            stage.renderer.PrepareWholeMaterial(material, camera, expected, clipped);
        }
        ASSERT_EQ(items.size(), expected.size());
        for (std::size_t i = 0; i < items.size(); ++i)
        {
            EXPECT_EQ(items[i].mesh, expected[i].mesh) << i;
            EXPECT_EQ(items[i].style, expected[i].style) << i;
        }
    };
    for (int round = 0; round < 12; ++round)
    {
        for (std::size_t i = 0; i < std::size(lists); ++i)
        {
            // Often enough for what is kept to be used.
            for (const bool clipped : {true, true, true, false, false, false})
            {
                expectSame(lists[i], clipped);
            }
        }
        std::vector<Material*>& list = lists[static_cast<std::size_t>(round) % std::size(lists)];
        std::reverse(list.begin(), list.end());
        list.resize(round % 3 == 0 ? list.size() + 1 : list.size(), stage.material);
    }
}

class HostMaterial : public Material
{
public:
    using Material::Material;
};

TEST(PlainDraws, AMaterialOfAHostsClassIsWholeToo)
{
    Stage stage(MakeOwn, kKinds[0]);
    auto* const material = new HostMaterial("a host's");
    stage.scene.AddMaterial(material);
    stage.AddMesh(*material);
    stage.AddMesh(*material);
    stage.Frame();
    std::vector<RenderItemES20> items;
    stage.renderer.PrepareWholeMaterial(material, stage.Camera(), items, false);
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(items[0].mesh, nullptr);
    stage.Draw(items);
    EXPECT_EQ(stage.recorder.All("glDrawElements").size(), 2u);
}

TEST(PlainDraws, WhatHasColoursIsKnownOfAWholeMaterial)
{
    using Colored = MaterialES20::Colored;
    Stage stage(MakeOwn, kKinds[0]);
    const auto colored = [&stage]
    {
        stage.Frame();
        return static_cast<MaterialES20*>(stage.material->GetRenderData())->HowManyListedAreColored();
    };
    EXPECT_EQ(colored(), Colored::None);
    stage.kind.format = {true, false, true};
    stage.AddMesh(*stage.material);
    EXPECT_EQ(colored(), Colored::Some);
    EXPECT_EQ(colored(), Colored::Some);
    for (int i = 0; i < 3; ++i)
    {
        stage.other->AddMesh(stage.meshes[static_cast<std::size_t>(i)]);
    }
    EXPECT_EQ(colored(), Colored::All);
    stage.kind.format = {true, false, false};
    stage.AddMesh(*stage.material);
    EXPECT_EQ(colored(), Colored::Some);
    // Asked before it is uploaded, it is asked again.
    stage.AddMesh(*stage.material);
    delete stage.meshes[stage.meshes.size() - 2];
    std::vector<RenderItemES20> items;
    stage.renderer.PrepareWholeMaterial(stage.material, stage.Camera(), items, false);
    EXPECT_EQ(static_cast<MaterialES20*>(stage.material->GetRenderData())->HowManyListedAreColored(), Colored::All);
    EXPECT_EQ(colored(), Colored::Some);
}

TEST(PlainDraws, AWholeMaterialIsOneItemAndItsMeshesCanBeListed)
{
    Stage stage(MakeOwn, kKinds[0]);
    stage.Frame();
    auto* const camera = static_cast<CameraNodeES20*>(stage.scene.GetCameraNode()->GetRenderData());
    std::vector<RenderItemES20> whole;
    stage.renderer.PrepareWholeMaterials({stage.material, stage.other}, camera, whole, true);
    ASSERT_EQ(whole.size(), 2u);
    EXPECT_EQ(whole[0].mesh, nullptr);
    EXPECT_EQ(whole[0].style, stage.material->GetRenderData());
    EXPECT_EQ(whole[1].style, stage.other->GetRenderData());
    for (Mesh* const mesh : stage.meshes)
    {
        EXPECT_TRUE(static_cast<MeshES20*>(mesh->GetRenderData())->clippingPlaneEnabled);
    }
    std::vector<RenderItemES20> items;
    OpenRenderer20::ListMeshes(whole[0], items);
    ASSERT_EQ(items.size(), 3u);
    for (std::size_t i = 0; i < items.size(); ++i)
    {
        EXPECT_EQ(items[i].mesh, stage.meshes[i]);
        EXPECT_EQ(items[i].style, whole[0].style);
        EXPECT_FALSE(items[i].specificNode);
    }
    // Of a material that is not drawn so, each mesh is an item.
    stage.meshes[1]->SetFlags(MeshFlagNoCull);
    whole.clear();
    stage.renderer.PrepareWholeMaterial(stage.material, camera, whole, true);
    ASSERT_EQ(whole.size(), 3u);
    EXPECT_EQ(whole[1].mesh, stage.meshes[1]);
}

} // namespace OV::Test
