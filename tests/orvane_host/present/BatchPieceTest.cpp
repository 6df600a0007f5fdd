#include "orvane_host/present/detail/BatchPiece.h"

#include "orvane_host/geometry/ViewVolume.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/RawMesh.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>
#include <vector>

namespace OV::Test
{

namespace
{

std::vector<Vector> Scattered(std::size_t count)
{
    std::vector<Vector> positions;
    for (std::size_t i = 0; i < count; ++i)
    {
        const auto number = static_cast<float>(i);
        positions.push_back(Vector(std::sin(number), 2.0f * std::sin(3.0f * number), 3.0f * std::cos(7.0f * number)));
    }
    return positions;
}

} // namespace

TEST(BatchPiece, ShiftedPositionsAreThoseOfADoubleSum)
{
    Transform place;
    const Vector shift(1000.25f, -20.5f, 0.125f);
    place.SetPosition(shift);
    // Any number is left over where several are written at once.
    for (std::size_t count = 1; count <= 13; ++count)
    {
        std::vector<Vector> positions = Scattered(count);
        positions[count / 2].y = count > 2 ? std::numeric_limits<float>::quiet_NaN() : positions[count / 2].y;
        const auto raw = std::make_shared<RawMesh>();
        raw->SetPositionBuffer(std::vector<Vector>(positions));
        const Mesh mesh(raw, nullptr);
        std::vector<float> written(3 * count + 1, 77.0f);
        const Host::WorldBox box = Host::Detail::WriteShiftedPositions(mesh, place, written.data());

        Host::WorldBox expected = Host::WorldBox::Empty();
        for (std::size_t i = 0; i < count; ++i)
        {
            const float numbers[] = {positions[i].x, positions[i].y, positions[i].z};
            const float shifts[] = {shift.x, shift.y, shift.z};
            float* const low[] = {&expected.low.x, &expected.low.y, &expected.low.z};
            float* const high[] = {&expected.high.x, &expected.high.y, &expected.high.z};
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                const auto sum = static_cast<float>(static_cast<double>(numbers[axis]) + shifts[axis]);
                if (std::isnan(sum))
                {
                    EXPECT_TRUE(std::isnan(written[3 * i + axis])) << count << ", " << i;
                    continue;
                }
                EXPECT_EQ(written[3 * i + axis], sum) << count << ", " << i << ", " << axis;
                *low[axis] = std::fmin(*low[axis], sum);
                *high[axis] = std::fmax(*high[axis], sum);
            }
        }
        EXPECT_EQ(written.back(), 77.0f) << "beyond the end";
        EXPECT_TRUE(box.low == expected.low && box.high == expected.high) << count;
    }
}

TEST(BatchPiece, NumbersOfMaterialsStandInNormalsAndHardlyTurnThem)
{
    MeshFormatKey streams;
    streams.hasNormals = true;
    for (const bool hasTexture : {false, true})
    {
        streams.hasTexture = hasTexture;
        const Host::Detail::BatchLayout layout(streams, 5, true);
        EXPECT_EQ(layout.floats, hasTexture ? 8 : 6) << "they take no room";
        const float values[] = {1.0f, -1.0f, 0.0f, -0.0f, 0.3f};
        for (const unsigned char number : {0, 1, 127, 255})
        {
            std::vector<float> vertices(5 * static_cast<std::size_t>(layout.floats), 0.25f);
            const auto normal = [&](std::size_t i) {
                return static_cast<std::size_t>(layout.normal) + i * static_cast<std::size_t>(layout.size);
            };
            for (std::size_t i = 0; i < 5; ++i)
            {
                vertices[normal(i) + 2] = values[i];
            }
            std::vector<float> expected = vertices;
            Host::Detail::WriteMaterial(number, 5, layout, vertices.data());
            for (std::size_t i = 0; i < 5; ++i)
            {
                float& written = vertices[normal(i) + 2];
                const auto* const bytes = reinterpret_cast<const unsigned char*>(vertices.data());
                const std::size_t at = static_cast<std::size_t>(layout.MaterialByte())
                    + i * static_cast<std::size_t>(layout.size) * sizeof(float);
                EXPECT_EQ(bytes[at], number);
                EXPECT_NEAR(written, values[i], 1.0f / 32768.0f);
                EXPECT_TRUE(std::isnormal(written)) << "processors are slow with what is smaller: " << written;
                written = expected[normal(i) + 2];
            }
            EXPECT_EQ(vertices, expected) << "nothing else is written";
        }
    }
}

TEST(BatchPiece, NumbersOfMaterialsHaveRoomOfTheirOwnWithoutNormals)
{
    const Host::Detail::BatchLayout layout(MeshFormatKey(), 3, true);
    EXPECT_EQ(layout.size, 4);
    std::vector<float> vertices(12, 0.25f);
    Host::Detail::WriteMaterial(200, 3, layout, vertices.data());
    for (std::size_t i = 0; i < 3; ++i)
    {
        const auto* const bytes = reinterpret_cast<const unsigned char*>(vertices.data() + 4 * i);
        EXPECT_EQ(bytes[layout.MaterialByte()], 200);
        EXPECT_EQ(vertices[4 * i + 2], 0.25f);
    }
    EXPECT_EQ(Host::Detail::BatchLayout(MeshFormatKey(), 3, false).size, 3) << "one material takes none";
}

} // namespace OV::Test
