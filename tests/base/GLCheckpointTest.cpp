#include "orvane/base/GLCheckpoint.h"

#include "tests/support/GLRecorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <type_traits>

namespace OV::Test
{

namespace
{

TEST(GLCheckpoint, AsksGLNothing)
{
    static_assert(std::is_same_v<decltype(&OV_GL_CHECKPOINT), void (*)()>, "a function without arguments or result");
    const GLRecorder recorder;
    OV_GL_CHECKPOINT();
    EXPECT_THAT(recorder.Strings(), testing::IsEmpty());
}

}  // namespace

}  // namespace OV::Test
