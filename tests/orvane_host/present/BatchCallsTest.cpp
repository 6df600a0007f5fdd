#include "orvane_host/present/BatchSettings.h"
#include "orvane/math/Transform.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"
#include "tests/orvane_host/present/PresentationStage.h"
#include "tests/orvane_host/present/SettingsDice.h"
#include "tests/support/GLRecorder.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <numeric>
#include <ostream>
#include <string>
#include <vector>

namespace OV::Test
{

namespace
{

using Host::BatchUse;

/// The GL calls of a frame by kind.
struct Calls
{
    std::size_t draws = 0;
    std::size_t programs = 0;
    std::size_t uniforms = 0;
    std::size_t pointers = 0;
    std::size_t switches = 0; ///< of attribute arrays
    std::size_t uploads = 0;
    std::int64_t uploaded = 0; ///< bytes

    bool operator==(const Calls& other) const
    {
        return draws == other.draws && programs == other.programs && uniforms == other.uniforms
            && pointers == other.pointers && switches == other.switches && uploads == other.uploads
            && uploaded == other.uploaded;
    }
};

std::ostream& operator<<(std::ostream& out, const Calls& calls)
{
    return out << calls.draws << " draws, " << calls.programs << " programs, " << calls.uniforms << " uniforms, "
               << calls.pointers << " pointers, " << calls.switches << " switches, " << calls.uploads
               << " uploads of " << calls.uploaded << " bytes";
}

/// Rectangles side by side in rows of one material each, every one a mesh at a node of its own.
class BatchCalls : public FlatStage
{
protected:
    static constexpr int Columns = 12;
    static constexpr int Rows = 4;
    static constexpr int Cell = 8;
    static constexpr std::int64_t BytesOfRect = 4 * 6 * sizeof(float);

    void Fill()
    {
        for (int row = 0; row < Rows; ++row)
        {
            Material& material = AddMaterial(Color(0.2f * static_cast<float>(row + 1), 0.5f, 0.0f));
            for (int column = 0; column < Columns; ++column)
            {
                nodes.push_back(&AddRect(material, {column * Cell, row * Cell, Cell - 2, Cell - 2}, 0.0f,
                                         static_cast<int>(nodes.size())));
                // Each has a matrix of its own.
                Move(nodes.size() - 1, 0.01f * static_cast<float>(nodes.size()));
            }
        }
    }

    void Move(std::size_t index, float lift)
    {
        Transform place;
        place.SetPosition(Vector(0.0f, 0.0f, lift));
        nodes[index]->SetLocal(place);
    }

    /// Shows a part of the picture's width, from the left.
    void LookAt(float share)
    {
        const float height = static_cast<float>(Height());
        Camera().SetDistanceToTarget(0.5f * share * height);
        Transform place;
        const float half = 0.5f * share;
        place.SetPosition(Vector(half * static_cast<float>(Width()), half * height, 100.0f));
        Camera().SetLocal(place);
    }

    /// Rectangles of two materials anywhere in a square, each at a height of its own.
    void Scatter(int count, int extent, unsigned int seed, const Color& first, const Color& second)
    {
        Dice dice(seed);
        Material* const materials[] = {&AddMaterial(first), &AddMaterial(second)};
        for (int i = 0; i < count; ++i)
        {
            const PixelRect rect{dice.Below(extent), dice.Below(extent), 3 + dice.Below(20), 3 + dice.Below(20)};
            nodes.push_back(&AddRect(*materials[i % 2], rect, 0.05f * static_cast<float>(i), i));
        }
    }

    /// A triangle whose mesh has further vertices, which no triangle uses.
    void AddPaddedTriangle(Material& material, const Vector& corner, std::size_t vertices)
    {
        std::vector<Vector> positions(vertices, corner);
        positions[1] = Vector(corner.x + 6.0f, corner.y, corner.z);
        positions[2] = Vector(corner.x, corner.y + 6.0f, corner.z);
        auto raw = std::make_shared<RawMesh>();
        raw->SetPositionBuffer(std::move(positions));
        raw->SetIndices({0, 1, 2});
        raw->EndDescription(true);
        auto* const mesh = new Mesh(raw, &World());
        material.AddMesh(mesh);
        nodes.push_back(new MeshNode(&World()));
        World().GetRoot()->AddChild(nodes.back(), false);
        mesh->AddNode(nodes.back());
    }

    /// Moves a node along X, by up to half of an extent.
    void MoveAlong(std::size_t index, Dice& dice, int extent)
    {
        Transform place;
        place.SetPosition(Vector(static_cast<float>(dice.Below(extent) - extent / 2), 0.0f, 0.0f));
        nodes[index]->SetLocal(place);
    }

    /// Shows some square within an extent.
    void LookAnywhere(Dice& dice, int extent)
    {
        const auto x = static_cast<float>(dice.Below(extent));
        const auto y = static_cast<float>(dice.Below(extent));
        Transform place;
        place.SetPosition(Vector(x, y, 100.0f));
        Camera().SetLocal(place);
        Camera().SetDistanceToTarget(10.0f + static_cast<float>(dice.Below(extent / 2)));
    }

    /// The pictures of some steps, from where all that was moved is back in its place.
    std::vector<Picture> Walk(BatchUse use, unsigned int seed, int steps, const std::function<void(Dice&, int)>& step)
    {
        for (MeshNode* const node : nodes)
        {
            node->SetLocal(Transform());
        }
        LookAt(1.0f);
        renderer->SetBatches({use});
        Dice dice(seed);
        std::vector<Picture> pictures;
        for (int i = 0; i < steps; ++i)
        {
            step(dice, i);
            pictures.push_back(Draw());
        }
        return pictures;
    }

    /// Leaves the scene as batches have it after the last step.
    void ExpectSameWalks(unsigned int seed, int steps, const std::function<void(Dice&, int)>& step)
    {
        const std::vector<Picture> expected = Walk(BatchUse::Off, seed, steps, step);
        const std::vector<Picture> actual = Walk(BatchUse::On, seed, steps, step);
        for (std::size_t i = 0; i < expected.size(); ++i)
        {
            ExpectSame(actual[i], expected[i], ("step " + std::to_string(i)).c_str());
        }
    }

    /// The calls of the 3D part of the next frame.
    std::vector<GLCall> RecordFrame()
    {
        World().MarkDirty();
        app.Update(0.0f);
        renderer->BeginRender(false, Color(1, 1, 1));
        std::vector<GLCall> calls;
        {
            const GLRecorder recorder(GLRecorder::Mode::Forward);
            renderer->Render3D(&World(), &Camera());
            calls = recorder.Calls();
        }
        renderer->EndRender();
        return calls;
    }

    static std::int64_t CountIndices(const std::vector<GLCall>& calls)
    {
        std::int64_t count = 0;
        for (const GLCall& call : calls)
        {
            const bool isOne = call.name.rfind("glDrawElements", 0) == 0;
            const bool isMany = call.name.rfind("glMultiDrawElements", 0) == 0;
            count += isOne ? call.Int(1) : isMany ? std::accumulate(call.ints.begin(), call.ints.end(), std::int64_t{0}) : 0;
        }
        return count;
    }

    Calls CallsOfFrame()
    {
        Calls counts;
        for (const GLCall& call : RecordFrame())
        {
            const auto begins = [&](const char* text) { return call.name.rfind(text, 0) == 0; };
            const bool isUpload = begins("glBufferData") || begins("glBufferSubData");
            counts.draws += begins("glDrawElements") || begins("glMultiDrawElements") ? 1 : 0;
            counts.programs += begins("glUseProgram") ? 1 : 0;
            counts.uniforms += begins("glUniform") ? 1 : 0;
            counts.pointers += begins("glVertexAttribPointer") ? 1 : 0;
            counts.switches += begins("glEnableVertexAttrib") || begins("glDisableVertexAttrib") ? 1 : 0;
            counts.uploads += isUpload ? 1 : 0;
            counts.uploaded += begins("glBufferSubData") ? call.Int(2) : isUpload ? call.Int(1) : 0;
        }
        return counts;
    }

    Calls SteadyFrame(BatchUse use)
    {
        renderer->SetBatches({use});
        Draw();
        Draw();
        return CallsOfFrame();
    }

    std::vector<MeshNode*> nodes;
};

} // namespace

TEST_F(BatchCalls, AStaticSceneTakesAPointerAMatrixAndADrawForEachNode)
{
    Fill();
    const Calls calls = SteadyFrame(BatchUse::Off);
    EXPECT_EQ(calls.draws, nodes.size());
    EXPECT_EQ(calls.programs, static_cast<std::size_t>(Rows));
    EXPECT_EQ(calls.uploads, 0u);
    // Unlit: no normals. The materials differ in a colour.
    EXPECT_EQ(calls.pointers, nodes.size());
    EXPECT_EQ(calls.switches, 2u * Rows);
    EXPECT_EQ(calls.uniforms, nodes.size() + Rows);
}

TEST_F(BatchCalls, TogetherItTakesThemForEachMaterial)
{
    Fill();
    const Calls calls = SteadyFrame(BatchUse::On);
    EXPECT_EQ(calls.draws, static_cast<std::size_t>(Rows));
    EXPECT_EQ(calls.programs, static_cast<std::size_t>(Rows));
    EXPECT_EQ(calls.uploads, 0u);
    EXPECT_EQ(calls.pointers, static_cast<std::size_t>(Rows));
    EXPECT_EQ(calls.switches, 2u * Rows);
    EXPECT_LE(calls.uniforms, 2u * Rows);
    EXPECT_EQ(CallsOfFrame(), calls);
}

TEST_F(BatchCalls, WithLightAtEveryPixelANodeTakesASecondMatrixAndAMaterialItsProgramAndNone)
{
    Fill();
    for (const Host::Look look : {Host::Look::Advanced, Host::Look::Phong})
    {
        renderer->SetLook(look);
        const Calls single = SteadyFrame(BatchUse::Off);
        EXPECT_EQ(single.draws, nodes.size());
        EXPECT_EQ(single.programs, 2u * Rows);
        EXPECT_EQ(single.uploads, 0u);
        EXPECT_EQ(single.pointers, nodes.size());
        EXPECT_EQ(single.switches, 2u * Rows);
        EXPECT_EQ(single.uniforms, 2 * nodes.size() + Rows);
        const Calls together = SteadyFrame(BatchUse::On);
        EXPECT_EQ(together.draws, static_cast<std::size_t>(Rows));
        EXPECT_EQ(together.programs, 2u * Rows);
        EXPECT_EQ(together.pointers, static_cast<std::size_t>(Rows));
        EXPECT_EQ(together.switches, 2u * Rows);
        EXPECT_LE(together.uniforms, 2u * Rows);
    }
}

TEST_F(BatchCalls, ANodeThatMovesOnceTakesOneUploadMore)
{
    Fill();
    const Calls still = SteadyFrame(BatchUse::On);
    Move(5, 1.0f);
    Calls expected = still;
    expected.uploads = 1;
    expected.uploaded = BytesOfRect;
    EXPECT_EQ(CallsOfFrame(), expected);
    EXPECT_EQ(CallsOfFrame(), still);
}

TEST_F(BatchCalls, ANodeThatMovesOnTakesADrawMore)
{
    Fill();
    const Calls still = SteadyFrame(BatchUse::On);
    Move(5, 1.0f);
    CallsOfFrame();
    Move(5, 2.0f);
    // It gets buffers of its own.
    EXPECT_GT(CallsOfFrame().uploads, 0u);
    Move(5, 3.0f);
    const Calls moving = CallsOfFrame();
    EXPECT_EQ(moving.draws, still.draws + 1);
    EXPECT_EQ(moving.programs, still.programs);
    EXPECT_EQ(moving.uploads, 0u);
    int frames = 0;
    Calls calls;
    for (calls = CallsOfFrame(); frames < 40 && calls.uploads == 0; ++frames)
    {
        calls = CallsOfFrame();
    }
    EXPECT_LT(frames, 20);
    EXPECT_EQ(calls.uploaded, BytesOfRect) << "what comes back is written where its room is";
    EXPECT_EQ(CallsOfFrame(), still);
}

TEST_F(BatchCalls, AViewThatSeesAQuarterOfAllTakesAQuarterOfTheCalls)
{
    Fill();
    for (const BatchUse use : {BatchUse::Auto, BatchUse::On})
    {
        LookAt(1.0f);
        const Calls whole = SteadyFrame(use);
        // One of the four rows, since they lie above each other in half of the picture's height.
        LookAt(0.12f);
        Draw();
        const Calls part = CallsOfFrame();
        if (use == BatchUse::Auto)
        {
            EXPECT_EQ(part, whole) << "node by node nothing is left out";
            continue;
        }
        EXPECT_EQ(part.draws, 1u);
        EXPECT_EQ(part.programs, 1u);
        EXPECT_LE(part.uniforms, whole.uniforms / Rows + 1);
    }
}

TEST_F(BatchCalls, AViewThatSeesATenthOfABatchDrawsAFifthOfItAtMost)
{
    Material& material = AddMaterial(Color(0.2f, 0.5f, 0.0f));
    constexpr int count = 100;
    for (int i = 0; i < count; ++i)
    {
        nodes.push_back(&AddRect(material, {9 * (i % 10), 6 * (i / 10), 6, 4}, 0.0f, i));
    }
    SteadyFrame(BatchUse::On);
    constexpr std::int64_t rect = 6;
    EXPECT_EQ(CountIndices(RecordFrame()), count * rect);
    // Three columns and three rows.
    LookAt(0.2f);
    Draw();
    const std::int64_t seen = CountIndices(RecordFrame());
    EXPECT_GE(seen, 9 * rect);
    EXPECT_LE(seen, count * rect / 5);
}

TEST_F(BatchCalls, NothingThatTouchesAViewIsLeftOut)
{
    constexpr int count = 400;
    constexpr int extent = 600;
    Scatter(count, extent, 21, Color(0.8f, 0.5f, 0.0f), Color(0.2f, 0.9f, 0.0f));
    ExpectSameWalks(7, 400, [&](Dice& dice, int) {
        if (dice.Below(3) == 0)
        {
            // Into the view, out of it or along it, while that rests.
            MoveAlong(static_cast<std::size_t>(dice.Below(count)), dice, extent);
        }
        else
        {
            LookAnywhere(dice, extent);
        }
    });
    EXPECT_GT(renderer->CountBatches().pieces, std::size_t{count / 2});
}

TEST_F(BatchCalls, WhatIsTooLargeForABatchIsLeftOutOfAViewOneByOne)
{
    Material& material = AddMaterial(Color(0.2f, 0.5f, 0.0f));
    constexpr int count = 10;
    for (int i = 0; i < count; ++i)
    {
        AddPaddedTriangle(material, Vector(static_cast<float>(9 * i), 0.0f, 0.0f), 2100);
    }
    EXPECT_EQ(SteadyFrame(BatchUse::On).draws, static_cast<std::size_t>(count));
    LookAt(0.08f);
    Draw();
    EXPECT_EQ(CallsOfFrame().draws, 1u) << "standing still";
    for (std::size_t i = 0; i < nodes.size(); ++i)
    {
        Move(i, 1.0f);
    }
    EXPECT_EQ(CallsOfFrame().draws, 1u) << "all moving";
}

TEST_F(BatchCalls, SeeThroughThingsOutsideTheViewAreLeftOut)
{
    // One row above the other.
    constexpr int count = 10;
    for (const int bottom : {0, 40})
    {
        Material& material = AddMaterial(Color(0.2f, 0.5f, 0.0f, 0.5f));
        for (int i = 0; i < count; ++i)
        {
            nodes.push_back(&AddRect(material, {9 * i, bottom, 6, 6}, 0.0f, i));
        }
    }
    EXPECT_EQ(SteadyFrame(BatchUse::On).draws, nodes.size());
    LookAt(0.08f);
    Draw();
    EXPECT_EQ(CallsOfFrame().draws, 1u) << "standing still";
    for (std::size_t i = 0; i < nodes.size(); ++i)
    {
        Move(i, 1.0f);
    }
    EXPECT_EQ(CallsOfFrame().draws, 1u) << "all moving";
}

TEST_F(BatchCalls, WhatMovesOnIsFollowedIntoTheViewAtOnceAndOutOfItSoon)
{
    Fill();
    SteadyFrame(BatchUse::On);
    const auto moveAll = [&](int frame) {
        for (std::size_t i = 0; i < nodes.size(); ++i)
        {
            Move(i, 0.02f * static_cast<float>(frame % 2 + 1));
        }
    };
    int frame = 0;
    for (; frame < 40; ++frame)
    {
        moveAll(frame);
        EXPECT_EQ(CallsOfFrame().draws, frame == 0 ? std::size_t{Rows} : nodes.size()) << "frame " << frame;
    }
    LookAt(0.08f);
    for (const int end = frame + 40; frame < end; ++frame)
    {
        moveAll(frame);
        Draw();
    }
    EXPECT_EQ(CallsOfFrame().draws, 1u) << "away from all but one";
    LookAt(1.0f);
    moveAll(frame);
    EXPECT_EQ(CallsOfFrame().draws, nodes.size()) << "and back";
}

TEST_F(BatchCalls, WhereAllMoveTheCallsAreThoseOfNodeByNode)
{
    Fill();
    int frame = 0;
    const auto moveAll = [&] {
        ++frame;
        for (std::size_t i = 0; i < nodes.size(); ++i)
        {
            Move(i, 0.02f * static_cast<float>(frame % 2 + 1));
        }
    };
    const auto callsOf = [](const std::vector<GLCall>& calls) {
        std::vector<std::string> names;
        for (const GLCall& call : calls)
        {
            names.push_back(call.name);
        }
        return names;
    };
    SteadyFrame(BatchUse::Off);
    moveAll();
    Draw();
    moveAll();
    const std::vector<std::string> expected = callsOf(RecordFrame());
    SteadyFrame(BatchUse::On);
    for (int i = 0; i < 40; ++i)
    {
        moveAll();
        Draw();
    }
    moveAll();
    EXPECT_EQ(callsOf(RecordFrame()), expected);
    EXPECT_EQ(renderer->CountBatches().single, nodes.size());
    for (const MeshNode* const node : nodes)
    {
        const auto* const data = dynamic_cast<const MeshES20*>(node->EachMesh().front()->GetRenderData());
        ASSERT_TRUE(data);
        EXPECT_TRUE(data->DrawsAsBase()) << "it would be drawn by itself, here and without batches";
    }
}

TEST_F(BatchCalls, WhereAllMovedWhatRestsComesBack)
{
    Fill();
    SteadyFrame(BatchUse::On);
    int frame = 0;
    const auto run = [&](int frames, std::size_t first) {
        for (const int end = frame + frames; frame < end; ++frame)
        {
            for (std::size_t i = first; i < nodes.size(); ++i)
            {
                Move(i, 0.02f * static_cast<float>(frame % 2 + 1));
            }
            Draw();
        }
    };
    run(40, 0);
    EXPECT_EQ(renderer->CountBatches().single, nodes.size());
    run(20, nodes.size() / 2);
    EXPECT_EQ(renderer->CountBatches().single, nodes.size() / 2) << "half of them";
    EXPECT_EQ(renderer->CountBatches().pieces, nodes.size() / 2);
    run(40, 0);
    EXPECT_EQ(renderer->CountBatches().single, nodes.size()) << "all again";
    run(20, nodes.size());
    EXPECT_EQ(renderer->CountBatches().pieces, nodes.size()) << "none any more";
    run(40, 0);
    std::vector<Node*> empty;
    for (std::size_t i = 0; i < 2 * nodes.size(); ++i)
    {
        empty.push_back(new Node(&World()));
        World().GetRoot()->AddChild(empty.back(), false);
    }
    for (int i = 0; i < 100; ++i)
    {
        Transform place;
        place.SetPosition(Vector(static_cast<float>(i), 0.0f, 0.0f));
        for (Node* const node : empty)
        {
            node->SetLocal(place);
        }
        Draw();
    }
    EXPECT_EQ(renderer->CountBatches().pieces, nodes.size()) << "none but what shows nothing";
    // What one does besides is seen in the frame after.
    run(40, 0);
    const std::size_t shown = CallsOfFrame().draws;
    nodes[3]->SetFlags(NodeFlagHidden, false);
    EXPECT_EQ(CallsOfFrame().draws, shown - 1);
    run(5, 0);
    nodes[3]->ClearFlags(NodeFlagHidden, false);
    run(1, 0);
    EXPECT_EQ(CallsOfFrame().draws, shown);
}

TEST_F(BatchCalls, WhereAllMovesNothingThatTouchesAViewIsLeftOut)
{
    constexpr int count = 100;
    constexpr int extent = 300;
    Scatter(count, extent, 5, Color(0.8f, 0.5f, 0.0f), Color(0.2f, 0.9f, 0.0f, 0.5f));
    ExpectSameWalks(9, 200, [&](Dice& dice, int step) {
        for (int i = 0; i < count; ++i)
        {
            // Some rest now and then, and come back to batches.
            if ((i + step / 20) % 5 != 0)
            {
                MoveAlong(static_cast<std::size_t>(i), dice, extent);
            }
        }
        if (step % 3 == 0)
        {
            LookAnywhere(dice, extent);
        }
    });
    EXPECT_GT(renderer->CountBatches().single, std::size_t{count / 2});
}

TEST_F(BatchCalls, WhatMovesAllAtOnceIsWrittenOverSeveralFrames)
{
    Material& material = AddMaterial(Color(0.2f, 0.5f, 0.0f));
    constexpr std::size_t count = 300;
    constexpr std::size_t vertices = 1000;
    constexpr std::int64_t mostBytes = 65536 * 3 * sizeof(float);
    for (std::size_t i = 0; i < count; ++i)
    {
        AddPaddedTriangle(material, Vector(1.0f, 1.0f, 0.0f), vertices);
    }
    SteadyFrame(BatchUse::On);
    const std::size_t together = renderer->CountBatches().pieces;
    EXPECT_EQ(together, count);
    for (const float lift : {1.0f, 2.0f})
    {
        for (std::size_t i = 0; i < count; ++i)
        {
            Move(i, lift);
        }
        Draw();
    }
    EXPECT_EQ(renderer->CountBatches().pieces, 0u);
    int uploads = 0;
    for (int frame = 0; frame < 60; ++frame)
    {
        const Calls calls = CallsOfFrame();
        EXPECT_LE(calls.uploaded, mostBytes) << "frame " << frame;
        uploads += calls.uploaded > 0 ? 1 : 0;
    }
    EXPECT_EQ(renderer->CountBatches().pieces, count);
    EXPECT_GE(uploads, 5);
}

} // namespace OV::Test
