#include "orvane/renderdata/SharedBufferPool.h"
#include "tests/renderdata/RenderDataDoubles.h"
#include "tests/support/GLRecorder.h"

#include <gtest/gtest.h>

namespace OV::Test
{

TEST(IndexRange, AMeshWithAnIndexPastItsVerticesIsNotDrawn)
{
    const struct
    {
        const char* label;
        std::vector<unsigned short> indices;
        std::size_t draws;
    } cases[] = {
        {"the last vertex", {0, 1, 3}, 1},
        {"one past it", {0, 1, 4}, 0},
        {"one past it, among others", {0, 4, 1, 0, 1, 2}, 0},
        {"far past it", {0, 1, 65535}, 0},
    };
    for (const auto& c : cases)
    {
        GLRecorder gl;
        SharedBufferPool pool;
        MarkingEffect effect;
        // Two that are whole, so that there are vertices to read by mistake.
        Mesh before(MakeRawMesh(4, {0, 1, 2}));
        Mesh mesh(MakeRawMesh(4, c.indices));
        Mesh after(MakeRawMesh(4, {0, 1, 2}));
        MeshNode node(nullptr);
        std::size_t draws = 0;
        for (Mesh* each : {&before, &mesh, &after})
        {
            Attach(*each, pool);
            each->AddNode(&node);
        }
        pool.GenerateVBOs();
        for (Mesh* each : {&before, &mesh, &after})
        {
            gl.Clear();
            DataOf(*each)->Render(&effect, each->GetNodes(), false);
            draws = gl.Count("glDrawElements");
            EXPECT_EQ(draws, each == &mesh ? c.draws : 1u) << c.label;
        }
    }
}

TEST(IndexRange, IndicesAreUploadedAsTheyAre)
{
    GLRecorder gl;
    SharedBufferPool pool;
    Mesh mesh(MakeRawMesh(3, {0, 65535, 7, 2}));
    MeshES20* data = Attach(mesh, pool);
    pool.GenerateVBOs();
    const std::vector<unsigned char> expected = {0, 0, 255, 255, 7, 0, 2, 0};
    EXPECT_EQ(gl.BufferBytes(data->indexBufferId), expected);
    EXPECT_EQ(data->spareVertices, 2 - 65535);
}

} // namespace OV::Test
