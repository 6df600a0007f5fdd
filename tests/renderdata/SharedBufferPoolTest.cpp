#include "orvane/renderdata/SharedBufferPool.h"

#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/SharedBuffer.h"
#include "orvane/scene/Material.h"
#include "tests/renderdata/RenderDataDoubles.h"
#include "tests/support/GLRecorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <random>
#include <set>

namespace OV::Test
{

namespace
{

using ::testing::Test;

const std::vector<unsigned short> kTriangle = {0, 1, 2};

std::vector<float> FloatsOf(const GLRecorder& recorder, unsigned buffer)
{
    const std::vector<unsigned char> bytes = recorder.BufferBytes(buffer);
    std::vector<float> floats(bytes.size() / sizeof(float));
    std::memcpy(floats.data(), bytes.data(), floats.size() * sizeof(float));
    return floats;
}

std::vector<unsigned short> IndicesOf(const GLRecorder& recorder, unsigned buffer)
{
    const std::vector<unsigned char> bytes = recorder.BufferBytes(buffer);
    std::vector<unsigned short> indices(bytes.size() / sizeof(unsigned short));
    std::memcpy(indices.data(), bytes.data(), indices.size() * sizeof(unsigned short));
    return indices;
}

/// Makes the nth glGenBuffers from here, from 1, give no name.
class NamelessBuffer
{
public:
    explicit NamelessBuffer(int nth)
    {
        s_left = nth;
        s_original = glGenBuffers;
        glGenBuffers = Generate;
    }

    ~NamelessBuffer() { glGenBuffers = s_original; }

    NamelessBuffer(const NamelessBuffer&) = delete;
    NamelessBuffer& operator=(const NamelessBuffer&) = delete;

private:
    static void GLAPIENTRY Generate(GLsizei count, GLuint* names)
    {
        if (--s_left == 0)
        {
            std::fill(names, names + count, 0u);
            return;
        }
        s_original(count, names);
    }

    static inline int s_left = 0;
    static inline PFNGLGENBUFFERSPROC s_original = nullptr;
};

class SharedBufferPoolTest : public Test
{
protected:
    GLRecorder recorder;
    SharedBufferPool pool;
};

struct PackedFormat
{
    const char* label;
    Format format;
    int stride;
    int normalOffset;
    int textureOffset;
    int colorOffset;
    std::vector<float> firstVertex;
};

// Position 1 2 3, normal 4 5 6, texture coordinate 7 8, colour 9 10 11 12.
const PackedFormat kPackedFormats[] = {
    {"position", {false, false, false}, 32, -1, -1, -1, {1, 2, 3, 0, 0, 0, 0, 0}},
    {"normal", {true, false, false}, 32, 12, -1, -1, {1, 2, 3, 4, 5, 6, 0, 0}},
    {"texture", {false, true, false}, 32, -1, 12, -1, {1, 2, 3, 7, 8, 0, 0, 0}},
    {"normal and texture",
     {true, true, false},
     64,
     12,
     24,
     -1,
     {1, 2, 3, 4, 5, 6, 7, 8, 0, 0, 0, 0, 0, 0, 0, 0}},
    {"colour", {false, false, true}, 32, -1, -1, 12, {1, 2, 3, 9, 10, 11, 12, 0}},
    {"normal and colour",
     {true, false, true},
     64,
     12,
     -1,
     24,
     {1, 2, 3, 4, 5, 6, 9, 10, 11, 12, 0, 0, 0, 0, 0, 0}},
    {"texture and colour",
     {false, true, true},
     64,
     -1,
     12,
     20,
     {1, 2, 3, 7, 8, 9, 10, 11, 12, 0, 0, 0, 0, 0, 0, 0}},
    {"all",
     {true, true, true},
     64,
     12,
     24,
     32,
     {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 0, 0, 0, 0}},
};

/// Vertex i has the numbers of the table, each but the padding higher by 100 i.
std::shared_ptr<RawMesh> MakeNumbered(const Format& format, int vertices)
{
    auto raw = std::make_shared<RawMesh>();
    for (int i = 0; i < vertices; ++i)
    {
        const float b = 100.0f * static_cast<float>(i);
        raw->positions.emplace_back(b + 1, b + 2, b + 3);
        if (format.normals)
            raw->normals.emplace_back(b + 4, b + 5, b + 6);
        if (format.texture)
            raw->textureCoordinates.emplace_back(b + 7, b + 8);
        if (format.colors)
            raw->colors.emplace_back(b + 9, b + 10, b + 11, b + 12);
    }
    raw->indices = {0, 1, 2};
    raw->EndDescription(true);
    return raw;
}

} // namespace

TEST(MeshFormatKey, SortsByNormalsThenTextureThenColourAbsentFirst)
{
    std::vector<MeshFormatKey> keys;
    for (const bool normals : {false, true})
        for (const bool texture : {false, true})
            for (const bool color : {false, true})
                keys.push_back({normals, texture, color, false});
    for (std::size_t a = 0; a < keys.size(); ++a)
        for (std::size_t b = 0; b < keys.size(); ++b)
            EXPECT_EQ(keys[a] < keys[b], a < b) << a << " " << b;
}

TEST(MeshFormatKey, NamesTheStreamsThatAreNotEmpty)
{
    Mesh mesh(MakeRawMesh(3, kTriangle, {true, false, true}));
    const MeshFormatKey key = MeshFormatKey::Of(mesh);
    EXPECT_TRUE(key.hasNormals);
    EXPECT_FALSE(key.hasTexture);
    EXPECT_TRUE(key.hasColor);
    EXPECT_FALSE(key.reserved);
}

TEST_F(SharedBufferPoolTest, EveryFormatIsPackedByteByByte)
{
    for (const PackedFormat& expected : kPackedFormats)
    {
        SCOPED_TRACE(expected.label);
        Mesh mesh(MakeNumbered(expected.format, 3));
        MeshES20* data = Attach(mesh, pool);
        pool.GenerateVBOs();

        EXPECT_EQ(data->GetStride(), expected.stride);
        EXPECT_EQ(data->GetPositionOffset(), 0);
        EXPECT_EQ(data->GetNormalOffset(), expected.normalOffset);
        EXPECT_EQ(data->GetTextureOffset(), expected.textureOffset);
        EXPECT_EQ(data->GetColorOffset(), expected.colorOffset);
        EXPECT_EQ(data->GetScalarOffset(), -1);

        std::vector<float> vertices;
        for (int i = 0; i < 3; ++i)
            for (const float number : expected.firstVertex)
                vertices.push_back(number == 0.0f ? 0.0f : number + 100.0f * static_cast<float>(i));
        ASSERT_EQ(vertices.size() * sizeof(float), 3u * static_cast<unsigned>(expected.stride));
        const std::vector<unsigned char> bytes = recorder.BufferBytes(data->vertexBufferId);
        ASSERT_EQ(bytes.size(), vertices.size() * sizeof(float));
        EXPECT_EQ(std::memcmp(bytes.data(), vertices.data(), bytes.size()), 0);
        EXPECT_EQ(IndicesOf(recorder, data->indexBufferId), kTriangle);
    }
}

TEST_F(SharedBufferPoolTest, NormalsAndTextureTakeA64ByteVertexWhoseSecondHalfIsZero)
{
    Mesh mesh(MakeNumbered({true, true, false}, 2));
    MeshES20* data = Attach(mesh, pool);
    pool.GenerateVBOs();
    ASSERT_EQ(data->GetStride(), 64);
    const std::vector<unsigned char> bytes = recorder.BufferBytes(data->vertexBufferId);
    ASSERT_EQ(bytes.size(), 128u);
    for (int vertex = 0; vertex < 2; ++vertex)
        for (int byte = 32; byte < 64; ++byte)
            EXPECT_EQ(bytes[vertex * 64 + byte], 0) << vertex << " " << byte;
}

TEST_F(SharedBufferPoolTest, ShortStreamsArePackedWithZeros)
{
    auto raw = std::make_shared<RawMesh>();
    raw->SetNormalBuffer({Vector(1, 2, 3)});
    raw->SetTextureBuffer({TextureCoordinate(4, 5), TextureCoordinate(6, 7)});
    raw->SetColorBuffer({Color(8, 9, 10, 11)});
    raw->SetPositionBuffer({Vector(21, 22, 23), Vector(24, 25, 26), Vector(27, 28, 29)});
    Mesh mesh(raw);
    MeshES20* data = Attach(mesh, pool);
    pool.GenerateVBOs();
    const std::vector<float> expected = {21, 22, 23, 1, 2, 3, 4, 5, 8, 9, 10, 11, 0, 0, 0, 0, //
                                         24, 25, 26, 0, 0, 0, 6, 7, 0, 0, 0,  0,  0, 0, 0, 0, //
                                         27, 28, 29, 0, 0, 0, 0, 0, 0, 0, 0,  0,  0, 0, 0, 0};
    EXPECT_EQ(FloatsOf(recorder, data->vertexBufferId), expected);
}

TEST_F(SharedBufferPoolTest, LongStreamsAreCutAtThePositions)
{
    auto raw = std::make_shared<RawMesh>();
    raw->SetNormalBuffer({Vector(1, 2, 3), Vector(4, 5, 6)});
    raw->SetPositionBuffer({Vector(21, 22, 23)});
    Mesh mesh(raw);
    MeshES20* data = Attach(mesh, pool);
    pool.GenerateVBOs();
    EXPECT_EQ(FloatsOf(recorder, data->vertexBufferId), (std::vector<float>{21, 22, 23, 1, 2, 3, 0, 0}));
}

TEST_F(SharedBufferPoolTest, TwoMeshesOfOneFormatLieSideBySideWithTheirOwnIndices)
{
    Mesh first(MakeNumbered({true, false, true}, 3));
    Mesh second(MakeNumbered({true, false, true}, 3));
    MeshES20* firstData = Attach(first, pool);
    MeshES20* secondData = Attach(second, pool);
    EXPECT_EQ(firstData->sharedBuffer, secondData->sharedBuffer);
    pool.GenerateVBOs();

    EXPECT_EQ(IndicesOf(recorder, firstData->indexBufferId), (std::vector<unsigned short>{0, 1, 2, 0, 1, 2}));
    EXPECT_EQ(firstData->indexOffset, 0);
    EXPECT_EQ(secondData->indexOffset, 6);
    EXPECT_EQ(firstData->GetPositionOffset(), 0);
    EXPECT_EQ(secondData->GetPositionOffset(), 3 * 64);
    EXPECT_EQ(secondData->GetNormalOffset(), 3 * 64 + 12);
    EXPECT_EQ(secondData->GetTextureOffset(), -1);
    EXPECT_EQ(secondData->GetColorOffset(), 3 * 64 + 24);
    EXPECT_EQ(secondData->vertexBufferId, firstData->vertexBufferId);
    EXPECT_EQ(secondData->indexBufferId, firstData->indexBufferId);
    EXPECT_EQ(firstData->indexCount, 3);
    EXPECT_EQ(secondData->indexCount, 3);
}

TEST_F(SharedBufferPoolTest, DifferentFormatsTakeDifferentBuffersUploadedInTheOrderOfTheKeys)
{
    Mesh all(MakeNumbered({true, true, true}, 1));
    Mesh positions(MakeNumbered({}, 1));
    MeshES20* allData = Attach(all, pool);
    MeshES20* positionsData = Attach(positions, pool);
    EXPECT_NE(allData->sharedBuffer, positionsData->sharedBuffer);
    pool.GenerateVBOs();
    EXPECT_LT(positionsData->vertexBufferId, allData->vertexBufferId);
}

TEST_F(SharedBufferPoolTest, NumbersOfBuffersDoNotComeAgain)
{
    std::set<std::uint64_t> numbers;
    for (int i = 0; i < 8; ++i)
    {
        Mesh mesh(MakeNumbered({}, 3));
        Mesh beside(MakeNumbered({}, 3));
        const MeshES20* const data = Attach(mesh, pool);
        EXPECT_EQ(Attach(beside, pool)->sharedBuffer->GetNumber(), data->sharedBuffer->GetNumber());
        pool.GenerateVBOs();
        EXPECT_TRUE(numbers.insert(data->sharedBuffer->GetNumber()).second);
    }
}

TEST_F(SharedBufferPoolTest, UploadCallsGLOncePerBufferAndUnbinds)
{
    Mesh first(MakeNumbered({}, 3));
    Mesh second(MakeNumbered({}, 5));
    Attach(first, pool);
    Attach(second, pool);
    MeshES20::ApplyBuffer(98, 99);
    recorder.Clear();
    EXPECT_TRUE(pool.GenerateVBOs());

    EXPECT_EQ(recorder.Names(),
              (std::vector<std::string>{"glGenBuffers", "glBindBuffer", "glGenBuffers", "glBindBuffer",
                                        "glBufferData", "glBufferData", "glBindBuffer", "glBindBuffer"}));
    const std::vector<GLCall>& calls = recorder.Calls();
    const double vertexBuffer = DataOf(first)->vertexBufferId;
    const double indexBuffer = DataOf(first)->indexBufferId;
    EXPECT_TRUE(calls[1].Begins({GL_ARRAY_BUFFER, vertexBuffer}));
    EXPECT_TRUE(calls[3].Begins({GL_ELEMENT_ARRAY_BUFFER, indexBuffer}));
    EXPECT_TRUE(calls[4].Begins({GL_ARRAY_BUFFER, 8 * 32}));
    EXPECT_EQ(calls[4].Int(3), GL_DYNAMIC_DRAW);
    EXPECT_TRUE(calls[5].Begins({GL_ELEMENT_ARRAY_BUFFER, 6 * 2}));
    EXPECT_EQ(calls[5].Int(3), GL_DYNAMIC_DRAW);
    EXPECT_TRUE(calls[6].Begins({GL_ELEMENT_ARRAY_BUFFER, 0}));
    EXPECT_TRUE(calls[7].Begins({GL_ARRAY_BUFFER, 0}));
    EXPECT_EQ(MeshES20::s_vertexId, 0u);
}

TEST_F(SharedBufferPoolTest, WithoutANameForEitherBufferNothingIsUploadedDrawnOrLeft)
{
    // The first name that is asked for is the vertex buffer's, the second the index buffer's.
    for (const int nameless : {1, 2})
    {
        SCOPED_TRACE(nameless);
        Mesh mesh(MakeNumbered({}, 3));
        Attach(mesh, pool);
        MeshES20::ApplyBuffer(98, 99);
        {
            const NamelessBuffer failing(nameless);
            EXPECT_TRUE(pool.GenerateVBOs());
        }
        EXPECT_EQ(DataOf(mesh)->vertexBufferId, 0u);
        EXPECT_EQ(DataOf(mesh)->indexBufferId, 0u);
        EXPECT_EQ(recorder.Count("glBufferData"), 0u);
        EXPECT_EQ(recorder.LiveCount(), 0u);
        EXPECT_EQ(MeshES20::s_vertexId, 0u) << "other buffers were bound since";
        MarkingEffect effect;
        recorder.Clear();
        DataOf(mesh)->Render(&effect, mesh.GetNodes(), false);
        EXPECT_TRUE(recorder.Calls().empty());
    }
    EXPECT_TRUE(recorder.StrayDeletes().empty());
}

TEST_F(SharedBufferPoolTest, GenerateVBOsOfAnEmptyPoolReturnsFalseWithoutGL)
{
    recorder.Clear();
    EXPECT_FALSE(pool.GenerateVBOs());
    EXPECT_TRUE(recorder.Calls().empty());
}

TEST_F(SharedBufferPoolTest, ASecondGenerateVBOsReturnsFalse)
{
    Mesh mesh(MakeNumbered({}, 3));
    Attach(mesh, pool);
    EXPECT_TRUE(pool.GenerateVBOs());
    recorder.Clear();
    EXPECT_FALSE(pool.GenerateVBOs());
    EXPECT_TRUE(recorder.Calls().empty());
}

TEST_F(SharedBufferPoolTest, AMeshThatComesAfterTheUploadOpensANewBuffer)
{
    Mesh first(MakeNumbered({}, 3));
    Mesh second(MakeNumbered({}, 3));
    MeshES20* firstData = Attach(first, pool);
    pool.GenerateVBOs();
    MeshES20* secondData = Attach(second, pool);
    EXPECT_NE(firstData->sharedBuffer, secondData->sharedBuffer);
    EXPECT_EQ(secondData->vertexBufferId, 0u);
    EXPECT_TRUE(pool.GenerateVBOs());
    EXPECT_NE(secondData->vertexBufferId, 0u);
    EXPECT_NE(firstData->vertexBufferId, secondData->vertexBufferId);
}

TEST_F(SharedBufferPoolTest, AMeshLargerThanTheCapHasAnEmptyBufferToItself)
{
    Mesh large(MakeRawMesh(70000, kTriangle));
    MeshES20* largeData = Attach(large, pool);
    ASSERT_NE(largeData->sharedBuffer, nullptr);
    EXPECT_EQ(largeData->sharedBuffer->bytesUsed, 2240000);
    EXPECT_EQ(largeData->vertexBufferId, 0u);
    EXPECT_TRUE(recorder.Calls().empty());

    Mesh next(MakeRawMesh(3, kTriangle));
    MeshES20* nextData = Attach(next, pool);
    // Refusal uploads the full buffer at this moment.
    EXPECT_NE(largeData->vertexBufferId, 0u);
    EXPECT_EQ(recorder.BufferBytes(largeData->vertexBufferId).size(), 2240000u);
    EXPECT_NE(nextData->sharedBuffer, largeData->sharedBuffer);
    EXPECT_EQ(nextData->vertexBufferId, 0u);
    EXPECT_EQ(nextData->sharedBuffer->bytesUsed, 96);

    recorder.Clear();
    EXPECT_TRUE(pool.GenerateVBOs());
    EXPECT_EQ(recorder.Count("glGenBuffers"), 2u);
    EXPECT_NE(nextData->vertexBufferId, 0u);
}

TEST_F(SharedBufferPoolTest, AMeshThatFillsTheCapExactlyIsAccepted)
{
    Mesh first(MakeRawMesh(62499));
    Mesh second(MakeRawMesh(1));
    Mesh third(MakeRawMesh(1));
    MeshES20* firstData = Attach(first, pool);
    MeshES20* secondData = Attach(second, pool);
    EXPECT_EQ(secondData->sharedBuffer, firstData->sharedBuffer);
    EXPECT_EQ(firstData->sharedBuffer->bytesUsed, 2000000);
    EXPECT_EQ(firstData->vertexBufferId, 0u);
    MeshES20* thirdData = Attach(third, pool);
    EXPECT_NE(thirdData->sharedBuffer, firstData->sharedBuffer);
    EXPECT_NE(firstData->vertexBufferId, 0u);
}

TEST_F(SharedBufferPoolTest, OneVertexAboveTheCapIsRefused)
{
    Mesh first(MakeRawMesh(62499));
    Mesh second(MakeRawMesh(2));
    MeshES20* firstData = Attach(first, pool);
    MeshES20* secondData = Attach(second, pool);
    EXPECT_NE(secondData->sharedBuffer, firstData->sharedBuffer);
    EXPECT_EQ(firstData->sharedBuffer->bytesUsed, 62499 * 32);
}

TEST_F(SharedBufferPoolTest, AScaleOfTwoHalvesThatAxisAtUpload)
{
    Mesh mesh(MakeNumbered({false, true, false}, 1));
    Material material("scaled");
    material.uScale = 2.0f;
    material.AddMesh(&mesh);
    material.SetRenderData(new MaterialES20(&material, nullptr, &pool, nullptr));
    MeshES20* data = Attach(mesh, pool);
    pool.GenerateVBOs();
    EXPECT_EQ(FloatsOf(recorder, data->vertexBufferId), (std::vector<float>{1, 2, 3, 3.5f, 8, 0, 0, 0}));
}

TEST_F(SharedBufferPoolTest, TheMaterialsOwnScaleIsBakedInNotTheLoadersProduct)
{
    LaidDownLoader loader;
    loader.answers = {{5, 4.0f, 4.0f, false, false}};
    Mesh mesh(MakeNumbered({false, true, false}, 1));
    Material material("scaled");
    material.textureName = "t.png";
    material.vScale = 4.0f;
    material.AddMesh(&mesh);
    material.SetRenderData(new MaterialES20(&material, &loader, &pool, nullptr));
    MeshES20* data = Attach(mesh, pool);
    pool.GenerateVBOs();
    EXPECT_EQ(FloatsOf(recorder, data->vertexBufferId), (std::vector<float>{1, 2, 3, 7, 2, 0, 0, 0}));
}

TEST_F(SharedBufferPoolTest, AScaleOfOneCopiesTheTextureCoordinatesBitByBit)
{
    // A signalling NaN would come back quiet from any arithmetic.
    const unsigned signalling = 0x7FA00001u;
    TextureCoordinate odd;
    std::memcpy(&odd.u, &signalling, sizeof(odd.u));
    odd.v = -0.0f;
    auto raw = std::make_shared<RawMesh>();
    raw->textureCoordinates = {odd};
    raw->positions = {Vector(1, 2, 3)};
    Mesh mesh(raw);
    Material material("plain");
    material.AddMesh(&mesh);
    material.SetRenderData(new MaterialES20(&material, nullptr, &pool, nullptr));
    MeshES20* data = Attach(mesh, pool);
    pool.GenerateVBOs();
    const std::vector<unsigned char> bytes = recorder.BufferBytes(data->vertexBufferId);
    ASSERT_EQ(bytes.size(), 32u);
    EXPECT_EQ(std::memcmp(bytes.data() + 12, &odd, sizeof(odd)), 0);
}

TEST_F(SharedBufferPoolTest, AScaleThatChangesAfterTheUploadChangesNothing)
{
    Mesh mesh(MakeNumbered({false, true, false}, 1));
    Material material("plain");
    material.AddMesh(&mesh);
    auto* materialData = new MaterialES20(&material, nullptr, &pool, nullptr);
    material.SetRenderData(materialData);
    MeshES20* data = Attach(mesh, pool);
    pool.GenerateVBOs();
    materialData->materialUScale = 9.0f;
    EXPECT_FALSE(pool.GenerateVBOs());
    EXPECT_EQ(FloatsOf(recorder, data->vertexBufferId), (std::vector<float>{1, 2, 3, 7, 8, 0, 0, 0}));
}

TEST_F(SharedBufferPoolTest, AMaterialWithoutRenderDataScalesNothing)
{
    Mesh mesh(MakeNumbered({false, true, false}, 1));
    Material material("bare");
    material.uScale = 2.0f;
    material.AddMesh(&mesh);
    MeshES20* data = Attach(mesh, pool);
    pool.GenerateVBOs();
    EXPECT_EQ(FloatsOf(recorder, data->vertexBufferId), (std::vector<float>{1, 2, 3, 7, 8, 0, 0, 0}));
}

TEST_F(SharedBufferPoolTest, RemovingAMeshLeavesTheOthersInPlaceAndFreesNothing)
{
    auto first = std::make_unique<Mesh>(MakeNumbered({}, 3));
    Mesh second(MakeNumbered({}, 3));
    Attach(*first, pool);
    MeshES20* secondData = Attach(second, pool);
    pool.GenerateVBOs();
    SharedBuffer* buffer = secondData->sharedBuffer;
    recorder.Clear();
    first.reset();
    EXPECT_TRUE(recorder.Calls().empty());
    EXPECT_EQ(secondData->GetPositionOffset(), 3 * 32);
    EXPECT_EQ(secondData->indexOffset, 6);
    EXPECT_EQ(buffer->meshes, std::vector<MeshES20*>{secondData});
    // Space is given back with the whole buffer only.
    EXPECT_EQ(buffer->bytesUsed, 6 * 32);
}

TEST_F(SharedBufferPoolTest, RemovingTheLastMeshDeletesTheIndexBufferThenTheVertexBuffer)
{
    auto mesh = std::make_unique<Mesh>(MakeNumbered({}, 3));
    MeshES20* data = Attach(*mesh, pool);
    pool.GenerateVBOs();
    const int vertexBuffer = static_cast<int>(data->vertexBufferId);
    const int indexBuffer = static_cast<int>(data->indexBufferId);
    recorder.Clear();
    mesh.reset();
    const std::vector<GLCall> deletes = recorder.All("glDeleteBuffers");
    ASSERT_EQ(deletes.size(), 2u);
    EXPECT_EQ(deletes[0].ints, std::vector<int>{indexBuffer});
    EXPECT_EQ(deletes[1].ints, std::vector<int>{vertexBuffer});
    EXPECT_EQ(recorder.LiveCount(), 0u);
    EXPECT_TRUE(recorder.StrayDeletes().empty());
}

TEST_F(SharedBufferPoolTest, DeletingTheBufferThatWasBoundLastForgetsIt)
{
    auto mesh = std::make_unique<Mesh>(MakeNumbered({}, 3));
    MeshES20* data = Attach(*mesh, pool);
    pool.GenerateVBOs();
    MeshES20::ApplyBuffer(data->vertexBufferId, data->indexBufferId);
    ASSERT_EQ(MeshES20::s_vertexId, data->vertexBufferId);
    mesh.reset();
    EXPECT_EQ(MeshES20::s_vertexId, 0u);
}

TEST_F(SharedBufferPoolTest, DeletingAnotherBufferKeepsTheOneBoundLast)
{
    auto mesh = std::make_unique<Mesh>(MakeNumbered({}, 3));
    Attach(*mesh, pool);
    pool.GenerateVBOs();
    MeshES20::ApplyBuffer(900, 901);
    mesh.reset();
    EXPECT_EQ(MeshES20::s_vertexId, 900u);
    MeshES20::ResetBufferCache();
}

TEST_F(SharedBufferPoolTest, ABufferThatEmptiesWhileOpenLeavesThePoolWithoutGL)
{
    auto mesh = std::make_unique<Mesh>(MakeNumbered({}, 3));
    Attach(*mesh, pool);
    mesh.reset();
    EXPECT_FALSE(pool.GenerateVBOs());
    EXPECT_TRUE(recorder.Calls().empty());
}

TEST_F(SharedBufferPoolTest, MeshesLeaveInAnyOrder)
{
    for (const std::vector<int>& order :
         {std::vector<int>{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}})
    {
        for (const bool uploaded : {false, true})
        {
            std::unique_ptr<Mesh> meshes[3];
            for (auto& mesh : meshes)
            {
                mesh = std::make_unique<Mesh>(MakeNumbered({true, false, false}, 3));
                Attach(*mesh, pool);
            }
            if (uploaded)
                pool.GenerateVBOs();
            for (const int i : order)
                meshes[i].reset();
            EXPECT_FALSE(pool.GenerateVBOs());
            EXPECT_EQ(recorder.LiveCount(), 0u);
        }
    }
    EXPECT_TRUE(recorder.StrayDeletes().empty());
}

TEST_F(SharedBufferPoolTest, AMeshWithoutVerticesStaysOutsideForGood)
{
    auto raw = std::make_shared<RawMesh>();
    Mesh mesh(raw);
    MeshES20* data = Attach(mesh, pool);
    EXPECT_EQ(data->sharedBuffer, nullptr);
    EXPECT_FALSE(pool.GenerateVBOs());
    raw->SetPositionBuffer({Vector(1, 2, 3)});
    EXPECT_EQ(data->sharedBuffer, nullptr);
    EXPECT_FALSE(pool.GenerateVBOs());
    EXPECT_EQ(data->vertexBufferId, 0u);
}

TEST_F(SharedBufferPoolTest, AMeshWithoutIndicesIsUploadedAllTheSame)
{
    Mesh mesh(MakeRawMesh(4));
    MeshES20* data = Attach(mesh, pool);
    EXPECT_TRUE(pool.GenerateVBOs());
    EXPECT_EQ(recorder.BufferBytes(data->vertexBufferId).size(), 4u * 32u);
    EXPECT_TRUE(recorder.BufferBytes(data->indexBufferId).empty());
    EXPECT_EQ(data->indexCount, 0);
}

TEST_F(SharedBufferPoolTest, ASecondTryOnAnUploadedBufferUploadsNothing)
{
    Mesh mesh(MakeNumbered({}, 3));
    MeshES20* data = Attach(mesh, pool);
    pool.GenerateVBOs();
    recorder.Clear();
    data->sharedBuffer->GenerateBuffers();
    EXPECT_TRUE(recorder.Calls().empty());
}

TEST_F(SharedBufferPoolTest, RemovingAStrangerChangesNothing)
{
    Mesh mesh(MakeNumbered({}, 3));
    Mesh other(MakeNumbered({true, true, true}, 3));
    MeshES20* data = Attach(mesh, pool);
    MeshES20* stranger = Attach(other, pool);
    data->sharedBuffer->RemoveMesh(stranger);
    EXPECT_EQ(data->sharedBuffer->meshes.size(), 1u);
    EXPECT_EQ(stranger->sharedBuffer->meshes.size(), 1u);
}

TEST_F(SharedBufferPoolTest, ManyMeshesFillBufferAfterBuffer)
{
    // 1000 vertices of 64 bytes: 31 meshes are 1,984,000 bytes, the 32nd would be too much.
    std::vector<std::unique_ptr<Mesh>> meshes;
    for (int i = 0; i < 100; ++i)
    {
        meshes.push_back(std::make_unique<Mesh>(MakeRawMesh(1000, kTriangle, {true, true, false})));
        Attach(*meshes.back(), pool);
    }
    pool.GenerateVBOs();
    const std::set<unsigned> live = recorder.Live(GLObjectKind::Buffer);
    EXPECT_EQ(live.size(), 2u * 4u);
    std::set<SharedBuffer*> buffers;
    for (const auto& mesh : meshes)
    {
        buffers.insert(DataOf(*mesh)->sharedBuffer);
        EXPECT_LE(DataOf(*mesh)->sharedBuffer->bytesUsed, SharedBuffer::MaxBytes);
    }
    EXPECT_EQ(buffers.size(), 4u);
    meshes.clear();
    EXPECT_EQ(recorder.LiveCount(), 0u);
}

TEST(SharedBufferPool, MayDieBeforeWhatWasUploaded)
{
    GLRecorder recorder;
    auto pool = std::make_unique<SharedBufferPool>();
    auto mesh = std::make_unique<Mesh>(MakeNumbered({}, 3));
    MeshES20* data = Attach(*mesh, *pool);
    pool->GenerateVBOs();
    pool.reset();
    EXPECT_EQ(data->pool.Get(), nullptr);
    EXPECT_EQ(data->sharedBuffer->pool.Get(), nullptr);
    mesh.reset();
    EXPECT_EQ(recorder.LiveCount(), 0u);
}

TEST(SharedBufferPool, MayDieBeforeWhatIsStillOpen)
{
    GLRecorder recorder;
    auto pool = std::make_unique<SharedBufferPool>();
    auto first = std::make_unique<Mesh>(MakeNumbered({}, 3));
    auto second = std::make_unique<Mesh>(MakeNumbered({}, 3));
    Attach(*first, *pool);
    Attach(*second, *pool);
    pool.reset();
    first.reset();
    second.reset();
    EXPECT_TRUE(recorder.Calls().empty());
}

TEST(SharedBufferPool, ACopyListsTheOpenBuffersAndTheFirstToUploadTakesThem)
{
    GLRecorder recorder;
    SharedBufferPool original;
    Mesh mesh(MakeNumbered({}, 3));
    Attach(mesh, original);
    SharedBufferPool copy(original);
    EXPECT_TRUE(copy.GenerateVBOs());
    EXPECT_EQ(recorder.Count("glGenBuffers"), 2u);
    EXPECT_FALSE(original.GenerateVBOs());
    EXPECT_NE(DataOf(mesh)->vertexBufferId, 0u);
}

TEST(SharedBufferPool, ABufferThatEmptiesLeavesEveryCopy)
{
    GLRecorder recorder;
    SharedBufferPool original;
    auto mesh = std::make_unique<Mesh>(MakeNumbered({}, 3));
    Attach(*mesh, original);
    SharedBufferPool copy(original);
    SharedBufferPool assigned;
    assigned = copy;
    mesh.reset();
    EXPECT_FALSE(original.GenerateVBOs());
    EXPECT_FALSE(copy.GenerateVBOs());
    EXPECT_FALSE(assigned.GenerateVBOs());
}

TEST(SharedBufferPool, AMoveTakesTheOpenBuffersAlong)
{
    GLRecorder recorder;
    SharedBufferPool original;
    auto mesh = std::make_unique<Mesh>(MakeNumbered({}, 3));
    Attach(*mesh, original);
    SharedBufferPool moved(std::move(original));
    EXPECT_FALSE(original.GenerateVBOs());
    SharedBufferPool assigned;
    assigned = std::move(moved);
    EXPECT_FALSE(moved.GenerateVBOs());
    EXPECT_TRUE(assigned.GenerateVBOs());
    mesh.reset();
    EXPECT_EQ(recorder.LiveCount(), 0u);
}

TEST(SharedBufferPool, AssignmentToItselfKeepsTheOpenBuffers)
{
    GLRecorder recorder;
    SharedBufferPool pool;
    Mesh mesh(MakeNumbered({}, 3));
    Attach(mesh, pool);
    SharedBufferPool& same = pool;
    pool = same;
    EXPECT_TRUE(pool.GenerateVBOs());
}

TEST(SharedBufferPool, RandomOperationsKeepTheAccountsRight)
{
    GLRecorder recorder;
    recorder.SetRecording(false);
    std::mt19937 random(20240611);
    const auto pick = [&random](std::size_t count) { return static_cast<std::size_t>(random() % count); };
    std::vector<std::unique_ptr<SharedBufferPool>> pools;
    pools.push_back(std::make_unique<SharedBufferPool>());
    std::vector<std::unique_ptr<Mesh>> meshes;
    for (int step = 0; step < 1500; ++step)
    {
        switch (pick(9))
        {
        case 0:
        case 1:
        case 2:
        {
            const std::size_t kind = pick(8);
            meshes.push_back(std::make_unique<Mesh>(
                MakeRawMesh(1 + pick(3) * 9000, kTriangle, {(kind & 1) != 0, (kind & 2) != 0, (kind & 4) != 0})));
            Attach(*meshes.back(), *pools[pick(pools.size())]);
            break;
        }
        case 3:
        case 4:
            if (!meshes.empty())
                meshes.erase(meshes.begin() + static_cast<std::ptrdiff_t>(pick(meshes.size())));
            break;
        case 5:
            pools[pick(pools.size())]->GenerateVBOs();
            break;
        case 6:
            if (pools.size() < 4)
                pools.push_back(std::make_unique<SharedBufferPool>(*pools[pick(pools.size())]));
            break;
        case 7:
            if (pools.size() > 1)
                pools.erase(pools.begin() + static_cast<std::ptrdiff_t>(pick(pools.size())));
            break;
        case 8:
            if (!meshes.empty())
                meshes[pick(meshes.size())]->Suspend();
            break;
        }
        std::set<unsigned> expected;
        for (const auto& mesh : meshes)
        {
            const MeshES20* data = DataOf(*mesh);
            if (!data)
                continue;
            const SharedBuffer* buffer = data->sharedBuffer;
            ASSERT_NE(buffer, nullptr);
            ASSERT_EQ(std::count(buffer->meshes.begin(), buffer->meshes.end(), data), 1);
            ASSERT_EQ(data->vertexBufferId, buffer->vertexBufferId);
            if (buffer->vertexBufferId != 0)
            {
                expected.insert(buffer->vertexBufferId);
                expected.insert(buffer->indexBufferId);
            }
        }
        ASSERT_EQ(recorder.Live(GLObjectKind::Buffer), expected) << "step " << step;
    }
    meshes.clear();
    EXPECT_EQ(recorder.LiveCount(), 0u);
    EXPECT_TRUE(recorder.StrayDeletes().empty());
}

TEST(SharedBufferPoolPtr, ReadsNullOnceThePoolIsGone)
{
    SharedBufferPoolPtr first;
    EXPECT_EQ(first.Get(), nullptr);
    {
        SharedBufferPool pool;
        first = &pool;
        SharedBufferPoolPtr second = first;
        EXPECT_EQ(second.Get(), &pool);
        SharedBufferPool copy = pool;
        SharedBufferPoolPtr third(&copy);
        EXPECT_EQ(third.Get(), &copy) << "a copy of a pool is another one";
        second = nullptr;
        EXPECT_EQ(second.Get(), nullptr);
        EXPECT_EQ(first.Get(), &pool);
    }
    EXPECT_EQ(first.Get(), nullptr);
}

} // namespace OV::Test
