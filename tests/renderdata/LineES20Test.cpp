#include "orvane/renderdata/LineES20.h"

#include "orvane/effects/SolidLineEffectES20.h"
#include "orvane/renderdata/SharedBufferPool.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/RawLine.h"
#include "orvane/scene/Scene.h"
#include "tests/renderdata/RenderDataDoubles.h"
#include "tests/support/GLRecorder.h"
#include "tests/support/VirtualSlot.h"

#include <gmock/gmock.h>

namespace OV::Test
{

namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::shared_ptr<RawLine> MakeRawLine(std::size_t points, const std::vector<unsigned short>& pairs)
{
    auto raw = std::make_shared<RawLine>();
    std::vector<Vector> positions(points);
    for (std::size_t i = 0; i < points; ++i)
    {
        positions[i] = Vector(static_cast<float>(i), 0.0f, 0.0f);
    }
    raw->SetPositionBuffer(positions);
    raw->SetIndices(pairs);
    return raw;
}

class LineES20Test : public ::testing::Test
{
protected:
    LineES20& Attach(Line& line)
    {
        auto* data = new LineES20(&line, &pool);
        line.SetRenderData(data, true);
        return *data;
    }

    MeshNode& AddNode(Line& line, int userData)
    {
        auto* node = new MeshNode(&scene);
        node->SetUserData(userData);
        scene.GetRoot()->AddChild(node, false);
        line.AddNode(node);
        return *node;
    }

    /// The draws of a line, each as mode, count and offset.
    std::vector<std::string> Draws() const { return gl.Strings({"glDrawElements"}); }

    static std::string Draw(int count, int offset)
    {
        return CallText("glDrawElements", {GL_TRIANGLES, static_cast<double>(count), GL_UNSIGNED_SHORT,
                                           static_cast<double>(offset)});
    }

    GLRecorder gl;
    Scene scene;
    SharedBufferPool pool;
    MarkingEffect effect;
};

} // namespace

TEST_F(LineES20Test, JoinsThePoolAndKnowsItsLine)
{
    Line line(MakeRawLine(2, {0, 1}), nullptr);
    LineES20& data = Attach(line);
    EXPECT_EQ(data.line, &line);
    EXPECT_EQ(data.mesh, &line);
    EXPECT_NE(data.sharedBuffer, nullptr);
}

TEST_F(LineES20Test, RenderTakesTheSlotOfAMesh)
{
    EXPECT_EQ(VirtualSlot(&LineES20::Render), VirtualSlot(&MeshES20::Render));
    EXPECT_EQ(VirtualSlot(&LineES20::Render), 1);
}

TEST_F(LineES20Test, BeforeTheUploadReturnsBeforeBindingAnything)
{
    Line line(MakeRawLine(2, {0, 1}), nullptr);
    LineES20& data = Attach(line);
    AddNode(line, 1);
    gl.Clear();
    data.Render(&effect, line.GetNodes(), false);
    EXPECT_THAT(gl.Names(), IsEmpty());
}

TEST_F(LineES20Test, WithoutVerticesOrAnEffectDrawsNothing)
{
    Line line(std::make_shared<RawLine>(), nullptr);
    LineES20& empty = Attach(line);
    EXPECT_EQ(empty.sharedBuffer, nullptr);
    AddNode(line, 1);
    Line other(MakeRawLine(2, {0, 1}), nullptr);
    LineES20& data = Attach(other);
    AddNode(other, 1);
    pool.GenerateVBOs();
    gl.Clear();
    empty.Render(&effect, line.GetNodes(), false);
    data.Render(nullptr, other.GetNodes(), false);
    EXPECT_THAT(gl.Names(), IsEmpty());
}

TEST_F(LineES20Test, DrawsEachNodeAsTrianglesAfterOnePolygonOffset)
{
    Line line(MakeRawLine(3, {0, 1, 1, 2}), nullptr);
    LineES20& data = Attach(line);
    AddNode(line, 11);
    AddNode(line, 12);
    pool.GenerateVBOs();
    gl.Clear();
    data.Render(&effect, line.GetNodes(), false);
    EXPECT_THAT(gl.Strings(),
                ElementsAre(CallText("glBindBuffer", {GL_ARRAY_BUFFER, static_cast<double>(data.vertexBufferId)}),
                            CallText("glBindBuffer", {GL_ELEMENT_ARRAY_BUFFER, static_cast<double>(data.indexBufferId)}),
                            "glEnableVertexAttribArray(0)", "glUniform1i(0, 11)",
                            CallText("glEnable", {GL_POLYGON_OFFSET_FILL}), "glPolygonOffset(-1, -1)", Draw(12, 0),
                            "glUniform1i(0, 12)", Draw(12, 0), "glDisableVertexAttribArray(0)"));
}

TEST_F(LineES20Test, AStripIsDrawnByTheSameTriangles)
{
    LineStyle plain("plain");
    LineStyle strip("strip");
    strip.SetFlags(LineStyleFlagStrip);
    Line line(MakeRawLine(3, {0, 1, 1, 2}), nullptr);
    LineES20& data = Attach(line);
    AddNode(line, 1);
    pool.GenerateVBOs();
    for (LineStyle* style : {&plain, &strip})
    {
        style->AddLine(&line);
        gl.Clear();
        data.Render(&effect, line.GetNodes(), false);
        EXPECT_THAT(Draws(), ElementsAre(Draw(12, 0))) << style->GetName();
    }
}

TEST_F(LineES20Test, WithoutNodesDrawsNothingAndLeavesPolygonOffset)
{
    Line line(MakeRawLine(2, {0, 1}), nullptr);
    LineES20& data = Attach(line);
    pool.GenerateVBOs();
    gl.Clear();
    data.Render(&effect, line.GetNodes(), false);
    EXPECT_EQ(gl.Count("glDrawElements"), 0u);
    EXPECT_EQ(gl.Count("glEnable"), 0u);
    EXPECT_EQ(gl.Count("glPolygonOffset"), 0u);
    EXPECT_EQ(gl.Count("glDisableVertexAttribArray"), 1u);
}

TEST_F(LineES20Test, LeavesPolygonOffsetOnAndCullingAlone)
{
    Line line(MakeRawLine(2, {0, 1}), nullptr);
    line.SetFlags(MeshFlagNoCull);
    LineES20& data = Attach(line);
    AddNode(line, 1);
    pool.GenerateVBOs();
    gl.Clear();
    data.Render(&effect, line.GetNodes(), false);
    EXPECT_TRUE(gl.IsEnabled(GL_POLYGON_OFFSET_FILL));
    EXPECT_EQ(gl.Count("glDisable"), 0u);
    EXPECT_EQ(gl.Count("glDepthFunc"), 0u);
}

TEST_F(LineES20Test, SkipsNodesThatAreNotSeenNotReadyOrLeftToAnItem)
{
    Line line(MakeRawLine(2, {0, 1}), nullptr);
    LineES20& data = Attach(line);
    MeshNode& hidden = AddNode(line, 1);
    hidden.SetFlags(NodeFlagHidden, false);
    MeshNode& culled = AddNode(line, 2);
    culled.SetFlags(NodeFlagCulled, false);
    MeshNode& owned = AddNode(line, 3);
    owned.SetFlags(NodeFlagHasNodeMaterial, false);
    MeshNode& stale = AddNode(line, 4);
    stale.SetDrawID(scene.GetUpdateID() + 1);
    AddNode(line, 5);
    pool.GenerateVBOs();
    gl.Clear();
    data.Render(&effect, line.GetNodes(), false);
    EXPECT_THAT(gl.Strings({"glUniform1i"}), ElementsAre("glUniform1i(0, 5)"));
    gl.Clear();
    data.Render(&effect, line.GetNodes(), true);
    EXPECT_THAT(gl.Strings({"glUniform1i"}), ElementsAre("glUniform1i(0, 3)", "glUniform1i(0, 5)"));
}

TEST_F(LineES20Test, TellsTheEffectWhetherItIsCut)
{
    Line line(MakeRawLine(2, {0, 1}), nullptr);
    LineES20& data = Attach(line);
    pool.GenerateVBOs();
    data.EnableClippingPlane(true);
    data.Render(&effect, line.GetNodes(), false);
    EXPECT_TRUE(effect.sawClipPlanesActive);
    data.EnableClippingPlane(false);
    data.Render(&effect, line.GetNodes(), false);
    EXPECT_FALSE(effect.sawClipPlanesActive);
}

TEST_F(LineES20Test, ADrawIdIsSpentByDrawing)
{
    auto& line = *new Line(MakeRawLine(2, {0, 1}), &scene);
    LineES20& data = Attach(line);
    AddNode(line, 1);
    pool.GenerateVBOs();
    data.Render(&effect, line.GetNodes(), false);
    EXPECT_FALSE(line.UsingDrawID());
    line.SetDrawID(12);
    ASSERT_FALSE(line.ReadyToDraw());
    gl.Clear();
    data.Render(&effect, line.GetNodes(), false);
    // Drawn all the same: whether a line is ready is not asked.
    EXPECT_EQ(gl.Count("glDrawElements"), 1u);
    EXPECT_TRUE(line.UsingDrawID());
    ASSERT_EQ(scene.GetUpdateID(), 1u);
    EXPECT_TRUE(line.ReadyToDraw()) << "the ID is 1 now";
}

TEST_F(LineES20Test, ALineWithoutIndicesIsDrawnWithNone)
{
    Line line(MakeRawLine(2, {}), nullptr);
    LineES20& data = Attach(line);
    AddNode(line, 1);
    pool.GenerateVBOs();
    gl.Clear();
    data.Render(&effect, line.GetNodes(), false);
    EXPECT_THAT(Draws(), ElementsAre(Draw(0, 0)));
}

// The end of a segment is read four vertices behind its start.
TEST_F(LineES20Test, NothingIsReadPastTheLastPoint)
{
    const struct
    {
        const char* label;
        std::vector<unsigned short> pairs;
        int count;
    } cases[] = {
        {"the last point runs to the copy of the first", {0, 1, 1, 2, 2, 0}, 18},
        {"a pair that starts at the copy", {0, 1, 3, 0}, 0},
        {"a pair far out", {16383, 0}, 0},
        {"a pair that wraps around to the first point", {16384, 0}, 6},
        {"the second of a pair is not read", {0, 16383}, 6},
    };
    for (const auto& c : cases)
    {
        Line line(MakeRawLine(3, c.pairs), nullptr);
        LineES20& data = Attach(line);
        AddNode(line, 1);
        pool.GenerateVBOs();
        gl.Clear();
        data.Render(&effect, line.GetNodes(), false);
        EXPECT_THAT(Draws(), ElementsAre(Draw(c.count, 0))) << c.label;
    }
}

TEST_F(LineES20Test, NothingIsReadOutOfALineOfOtherMakings)
{
    // Positions and indices set past the operations of RawLine.
    auto raw = std::make_shared<RawLine>();
    raw->positions.assign(7, Vector());
    raw->normals.assign(7, Vector());
    raw->indices = {0, 1, 3};
    for (const int count : {0, 3})
    {
        Line line(raw, nullptr);
        LineES20& data = Attach(line);
        AddNode(line, 1);
        pool.GenerateVBOs();
        gl.Clear();
        data.Render(&effect, line.GetNodes(), false);
        EXPECT_THAT(Draws(), ElementsAre(Draw(count, 0)));
        raw->positions.emplace_back();
    }
}

} // namespace OV::Test
