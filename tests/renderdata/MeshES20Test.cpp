#include "orvane/renderdata/MeshES20.h"

#include "orvane/renderdata/SharedBuffer.h"
#include "orvane/renderdata/SharedBufferPool.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/NodeMaterial.h"
#include "orvane/scene/Scene.h"
#include "tests/renderdata/RenderDataDoubles.h"
#include "tests/support/GLRecorder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace OV::Test
{

namespace
{

using Names = std::vector<std::string>;

/// A mesh of one triangle at one node, uploaded, with an effect that shows in the recording.
class MeshES20Test : public ::testing::Test
{
protected:
    MeshES20Test() : mesh(MakeRawMesh(3, {0, 1, 2})), node(nullptr), material("material")
    {
        mesh.AddNode(&node);
        data = Attach(mesh, pool);
        pool.GenerateVBOs();
        recorder.Clear();
    }

    void Render(bool specificNode = false) { data->Render(&effect, mesh.GetNodes(), specificNode); }

    GLRecorder recorder;
    SharedBufferPool pool;
    Mesh mesh;
    MeshNode node;
    Material material;
    MarkingEffect effect;
    MeshES20* data = nullptr;
};

} // namespace

TEST_F(MeshES20Test, StartsZeroedButForItsMeshAndPool)
{
    Mesh other(MakeRawMesh(3, {0, 1, 2}));
    const MeshES20* fresh = Attach(other, pool);
    EXPECT_EQ(fresh->GetMesh(), &other);
    EXPECT_EQ(fresh->pool.Get(), &pool);
    EXPECT_NE(fresh->sharedBuffer, nullptr);
    EXPECT_EQ(fresh->vertexBufferId, 0u);
    EXPECT_EQ(fresh->indexBufferId, 0u);
    EXPECT_EQ(fresh->GetStride(), 0);
    EXPECT_EQ(fresh->GetPositionOffset(), 0);
    EXPECT_EQ(fresh->GetNormalOffset(), 0);
    EXPECT_EQ(fresh->GetTextureOffset(), 0);
    EXPECT_EQ(fresh->GetColorOffset(), 0);
    EXPECT_EQ(fresh->GetScalarOffset(), 0);
    EXPECT_EQ(fresh->indexOffset, 0);
    EXPECT_FALSE(fresh->clippingPlaneEnabled);
}

TEST_F(MeshES20Test, RenderBindsBuffersThenAttributesThenUniformsThenDraws)
{
    Render();
    EXPECT_EQ(recorder.Names(), (Names{"glBindBuffer", "glBindBuffer", "glEnableVertexAttribArray", "glUniform1i",
                                       "glDrawElements", "glDisableVertexAttribArray"}));
    const std::vector<GLCall>& calls = recorder.Calls();
    EXPECT_TRUE(calls[0].Begins({GL_ARRAY_BUFFER, static_cast<double>(data->vertexBufferId)}));
    EXPECT_TRUE(calls[1].Begins({GL_ELEMENT_ARRAY_BUFFER, static_cast<double>(data->indexBufferId)}));
    EXPECT_TRUE(calls[4].Begins({GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, 0}));
}

TEST_F(MeshES20Test, TheSecondMeshOfABufferDrawsFromItsOwnOffsetsWithoutABind)
{
    Mesh first(MakeRawMesh(4, {0, 1, 2, 1, 2, 3}));
    Mesh second(MakeRawMesh(3, {2, 1, 0}));
    first.AddNode(&node);
    second.AddNode(&node);
    MeshES20* firstData = Attach(first, pool);
    MeshES20* secondData = Attach(second, pool);
    pool.GenerateVBOs();
    recorder.Clear();
    firstData->Render(&effect, first.GetNodes(), false);
    secondData->Render(&effect, second.GetNodes(), false);
    EXPECT_EQ(recorder.Count("glBindBuffer"), 2u);
    EXPECT_EQ(recorder.Count("glEnableVertexAttribArray", {0}), 1u);
    EXPECT_EQ(recorder.Count("glEnableVertexAttribArray", {4 * 32}), 1u);
    EXPECT_EQ(recorder.Count("glDrawElements", {GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, 0}), 1u);
    EXPECT_EQ(recorder.Count("glDrawElements", {GL_TRIANGLES, 3, GL_UNSIGNED_SHORT, 12}), 1u);
}

TEST_F(MeshES20Test, ApplyBufferIsKeyedOnTheVertexBufferAlone)
{
    MeshES20::ResetBufferCache();
    MeshES20::ApplyBuffer(5, 6);
    MeshES20::ApplyBuffer(5, 7);
    EXPECT_EQ(recorder.Strings(), (Names{"glBindBuffer(" + std::to_string(GL_ARRAY_BUFFER) + ", 5)",
                                         "glBindBuffer(" + std::to_string(GL_ELEMENT_ARRAY_BUFFER) + ", 6)"}));
    EXPECT_EQ(MeshES20::s_vertexId, 5u);
    MeshES20::ApplyBuffer(8, 6);
    EXPECT_EQ(recorder.Count("glBindBuffer"), 4u);
    MeshES20::ResetBufferCache();
    EXPECT_EQ(MeshES20::s_vertexId, 0u);
    MeshES20::ApplyBuffer(8, 6);
    EXPECT_EQ(recorder.Count("glBindBuffer"), 6u);
    MeshES20::ResetBufferCache();
}

TEST_F(MeshES20Test, EveryNodeIsDrawnInTheOrderOfTheList)
{
    MeshNode second(nullptr);
    MeshNode third(nullptr);
    node.SetUserData(1);
    second.SetUserData(2);
    third.SetUserData(3);
    mesh.AddNode(&third);
    mesh.AddNode(&second);
    Render();
    EXPECT_EQ(recorder.Strings({"glUniform1i"}),
              (Names{"glUniform1i(0, 1)", "glUniform1i(0, 3)", "glUniform1i(0, 2)"}));
    EXPECT_EQ(recorder.Count("glDrawElements"), 3u);
    EXPECT_EQ(recorder.Count("glEnableVertexAttribArray"), 1u);
}

TEST_F(MeshES20Test, HiddenAndCulledNodesAreSkippedInBothKindsOfItem)
{
    for (const NodeFlags flag : {NodeFlagHidden, NodeFlagCulled})
    {
        for (const bool specificNode : {false, true})
        {
            node.SetFlags(flag, false);
            recorder.Clear();
            Render(specificNode);
            EXPECT_EQ(recorder.Count("glUniform1i"), 0u) << flag << specificNode;
            EXPECT_EQ(recorder.Count("glDrawElements"), 0u) << flag << specificNode;
            EXPECT_EQ(recorder.Count("glDisableVertexAttribArray"), 1u) << flag << specificNode;
            node.ClearFlags(flag, false);
        }
    }
}

TEST_F(MeshES20Test, ANodeWithItsOwnMaterialIsLeftToTheItemThatNamesIt)
{
    node.SetFlags(NodeFlagHasNodeMaterial, false);
    Render(false);
    EXPECT_EQ(recorder.Count("glDrawElements"), 0u);
    Render(true);
    EXPECT_EQ(recorder.Count("glDrawElements"), 1u);
}

TEST_F(MeshES20Test, ANodeThatIsNotReadyIsSkipped)
{
    Scene scene;
    auto* waiting = new MeshNode(&scene);
    scene.GetRoot()->AddChild(waiting, false);
    mesh.AddNode(waiting);
    waiting->SetDrawID(scene.GetUpdateID() + 1);
    Render();
    EXPECT_EQ(recorder.Count("glDrawElements"), 1u);
    waiting->SetDrawID(scene.GetUpdateID());
    Render();
    EXPECT_EQ(recorder.Count("glDrawElements"), 3u);
}

TEST_F(MeshES20Test, AMeshWithoutIndicesBindsNoUniforms)
{
    Mesh points(MakeRawMesh(3));
    points.AddNode(&node);
    MeshES20* pointsData = Attach(points, pool);
    pool.GenerateVBOs();
    recorder.Clear();
    pointsData->Render(&effect, points.GetNodes(), false);
    EXPECT_EQ(recorder.Names({"glEnableVertexAttribArray", "glUniform1i", "glDrawElements",
                              "glDisableVertexAttribArray"}),
              (Names{"glEnableVertexAttribArray", "glDisableVertexAttribArray"}));
}

TEST_F(MeshES20Test, TheDrawnCountIsNeverAboveTheUploadedOne)
{
    mesh.GetRawMesh()->indices.resize(300, 0);
    Render();
    EXPECT_EQ(recorder.Count("glDrawElements", {GL_TRIANGLES, 3}), 1u);
}

TEST_F(MeshES20Test, AMeshWhoseIndicesBecameFewerDrawsThose)
{
    for (const std::size_t left : {2u, 1u})
    {
        mesh.GetRawMesh()->indices.resize(left);
        recorder.Clear();
        Render();
        EXPECT_EQ(recorder.Count("glDrawElements", {GL_TRIANGLES, static_cast<double>(left)}), 1u);
    }
    mesh.GetRawMesh()->indices.clear();
    recorder.Clear();
    Render();
    EXPECT_EQ(recorder.Count("glDrawElements"), 0u);
    EXPECT_EQ(recorder.Count("glEnableVertexAttribArray"), 1u);
}

TEST_F(MeshES20Test, AMeshThatLostItsVerticesReturnsAtOnce)
{
    mesh.GetRawMesh()->positions.clear();
    recorder.Clear();
    Render();
    EXPECT_TRUE(recorder.Calls().empty());
    EXPECT_EQ(MeshES20::s_vertexId, 0u);
}

TEST_F(MeshES20Test, RenderReturnsBeforeAnyStateChangeWhenNothingIsUploaded)
{
    Mesh pending(MakeRawMesh(3, {0, 1, 2}));
    pending.AddNode(&node);
    pending.SetDrawID(7);
    material.SetFlags(MaterialFlagAlwaysPass);
    material.AddMesh(&pending);
    pending.SetFlags(MeshFlagNoCull);
    MeshES20* pendingData = Attach(pending, pool);
    pendingData->Render(&effect, pending.GetNodes(), false);
    EXPECT_TRUE(recorder.Calls().empty());
    EXPECT_EQ(MeshES20::s_vertexId, 0u);
}

TEST_F(MeshES20Test, RenderWithoutAnEffectReturnsBeforeAnyStateChange)
{
    data->Render(nullptr, mesh.GetNodes(), false);
    EXPECT_TRUE(recorder.Calls().empty());
}

TEST_F(MeshES20Test, AMeshWithoutVerticesReturnsAtOnce)
{
    Mesh empty(std::make_shared<RawMesh>());
    empty.AddNode(&node);
    MeshES20* emptyData = Attach(empty, pool);
    EXPECT_EQ(emptyData->sharedBuffer, nullptr);
    emptyData->Render(&effect, empty.GetNodes(), false);
    EXPECT_TRUE(recorder.Calls().empty());
}

TEST_F(MeshES20Test, RenderDataWithoutAMeshReturnsAtOnce)
{
    MeshES20 orphan(nullptr, &pool);
    orphan.Render(&effect, mesh.GetNodes(), false);
    EXPECT_TRUE(recorder.Calls().empty());
}

TEST_F(MeshES20Test, TheNoCullFlagOfAMeshTurnsCullingOffAroundIt)
{
    mesh.SetFlags(MeshFlagNoCull);
    material.AddMesh(&mesh);
    Render();
    EXPECT_EQ(recorder.Names({"glDisable", "glEnable", "glEnableVertexAttribArray", "glDrawElements",
                              "glDisableVertexAttribArray"}),
              (Names{"glDisable", "glEnableVertexAttribArray", "glDrawElements", "glDisableVertexAttribArray",
                     "glEnable"}));
    EXPECT_EQ(recorder.Count("glDisable", {GL_CULL_FACE}), 1u);
    EXPECT_EQ(recorder.Count("glEnable", {GL_CULL_FACE}), 1u);
}

TEST_F(MeshES20Test, WithoutAMaterialTheNoCullFlagDoesNothing)
{
    mesh.SetFlags(MeshFlagNoCull);
    Render();
    EXPECT_EQ(recorder.Count("glDisable"), 0u);
    EXPECT_EQ(recorder.Count("glEnable"), 0u);
}

TEST_F(MeshES20Test, WhereTheMaterialTurnedCullingOffTheMeshLeavesItAlone)
{
    mesh.SetFlags(MeshFlagNoCull);
    material.SetFlags(MaterialFlagNoCull);
    material.AddMesh(&mesh);
    Render();
    EXPECT_EQ(recorder.Count("glDisable"), 0u);
    EXPECT_EQ(recorder.Count("glEnable"), 0u);
}

TEST_F(MeshES20Test, TheEffectSeesClippingAndTheEffectFlagBeforeItBinds)
{
    Render();
    EXPECT_FALSE(effect.sawClipPlanesActive);
    EXPECT_FALSE(effect.sawMeshNodeFlag);
    data->EnableClippingPlane(true);
    mesh.SetFlags(MeshFlagEffectFlag);
    Render();
    EXPECT_TRUE(effect.sawClipPlanesActive);
    EXPECT_TRUE(effect.sawMeshNodeFlag);
    data->EnableClippingPlane(false);
    mesh.ClearFlags(MeshFlagEffectFlag);
    Render();
    EXPECT_FALSE(effect.sawClipPlanesActive);
    EXPECT_FALSE(effect.sawMeshNodeFlag);
}

TEST_F(MeshES20Test, AlwaysPassReplacesTheDepthFunctionAndRestoresIt)
{
    recorder.SetIntegers(GL_DEPTH_FUNC, {GL_GEQUAL});
    material.SetFlags(MaterialFlagAlwaysPass);
    material.AddMesh(&mesh);
    Render();
    EXPECT_EQ(recorder.Names(),
              (Names{"glBindBuffer", "glBindBuffer", "glEnableVertexAttribArray", "glGetIntegerv", "glDepthFunc",
                     "glUniform1i", "glDrawElements", "glDisableVertexAttribArray", "glDepthFunc"}));
    const std::vector<GLCall> functions = recorder.All("glDepthFunc");
    EXPECT_EQ(functions[0].Int(0), GL_ALWAYS);
    EXPECT_EQ(functions[1].Int(0), GL_GEQUAL);
}

TEST_F(MeshES20Test, PointsAreDrawnWithTheProgramPointSizeAroundThem)
{
    material.SetFlags(MaterialFlagPoints);
    material.AddMesh(&mesh);
    Render();
    EXPECT_EQ(recorder.Names({"glEnable", "glDisable", "glDrawElements"}),
              (Names{"glEnable", "glDrawElements", "glDisable"}));
    EXPECT_EQ(recorder.Count("glEnable", {GL_PROGRAM_POINT_SIZE}), 1u);
    EXPECT_EQ(recorder.Count("glDisable", {GL_PROGRAM_POINT_SIZE}), 1u);
    EXPECT_EQ(recorder.Count("glDrawElements", {GL_POINTS, 3, GL_UNSIGNED_SHORT, 0}), 1u);
}

TEST_F(MeshES20Test, ADrawIDIsUsedUpByTheDraw)
{
    Scene scene;
    scene.UpdateGraph(1.0f, 1.0f);
    auto* own = new Mesh(MakeRawMesh(3, {0, 1, 2}), &scene);
    own->AddNode(&node);
    MeshES20* ownData = Attach(*own, pool);
    pool.GenerateVBOs();
    own->SetDrawID(scene.GetUpdateID());
    ASSERT_TRUE(own->ReadyToDraw());
    recorder.Clear();
    ownData->Render(&effect, own->GetNodes(), false);
    EXPECT_EQ(recorder.Count("glDrawElements"), 1u);
    EXPECT_TRUE(own->UsingDrawID());
    EXPECT_FALSE(own->ReadyToDraw());
}

TEST_F(MeshES20Test, WithoutADrawIDNoneIsSet)
{
    Render();
    EXPECT_FALSE(mesh.UsingDrawID());
}

TEST_F(MeshES20Test, TwoMeshesOverOneRawMeshShareOneObject)
{
    Mesh other(mesh.GetRawMesh());
    EXPECT_EQ(other.GetRenderData(), data);
    EXPECT_EQ(data->GetMesh(), &mesh);
}

} // namespace OV::Test
