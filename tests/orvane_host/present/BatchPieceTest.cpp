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

} // namespace OV::Test
