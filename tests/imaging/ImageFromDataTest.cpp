#include "orvane/imaging/Image.h"
#include "orvane/imaging/detail/RowTasks.h"
#include "orvane/imaging/detail/WidenRGB.h"
#include "tests/imaging/Decoding.h"
#include "tests/imaging/FailurePoints.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

namespace OV
{
namespace
{

using namespace Test;

int MachineThreads()
{
    return std::max(1, int(std::thread::hardware_concurrency()));
}

using Selector = std::tuple<bool, bool, bool>;  // swap, RGB, flip

class ImageFromData : public ::testing::TestWithParam<Selector>
{
protected:
    // Compares one pixel with what the table of transforms says.
    static void ExpectConverted(int width, int height)
    {
        const auto [swap, rgb, flip] = GetParam();
        const std::size_t sourceBytes = rgb ? 3 : 4;
        Bytes source = NoiseBytes(std::size_t(width) * std::size_t(height) * sourceBytes);
        const Bytes before = source;
        const std::unique_ptr<Image> image(Image::ImageFromData(width, height, source.data(), swap, rgb, flip));
        ASSERT_EQ(image->width, width);
        ASSERT_EQ(image->height, height);
        EXPECT_EQ(source, before);
        for (int y = 0; y < height; ++y)
        {
            for (int x = 0; x < width; ++x)
            {
                const std::size_t row = std::size_t(flip ? height - 1 - y : y);
                const unsigned char* in = &source[(row * std::size_t(width) + std::size_t(x)) * sourceBytes];
                const unsigned char* out = image->data + (std::size_t(y) * std::size_t(width) + std::size_t(x)) * 4;
                const Bytes expected = {in[swap ? 2 : 0], in[1], in[swap ? 0 : 2],
                                        rgb ? static_cast<unsigned char>(255) : in[3]};
                ASSERT_EQ(Bytes(out, out + 4), expected) << "x " << x << " y " << y;
            }
        }
    }
};

TEST_P(ImageFromData, ConvertsSmallPicturesExactly)
{
    ExpectConverted(1, 1);
    ExpectConverted(5, 3);
    ExpectConverted(1, 40);
    ExpectConverted(40, 1);
}

TEST_P(ImageFromData, ConvertsOnBothSidesOfTheTaskThreshold)
{
    ExpectConverted(256, 255);
    ExpectConverted(256, 256);
    ExpectConverted(257, 301);
}

TEST_P(ImageFromData, ConvertsWideAndTallPicturesThroughTasks)
{
    ExpectConverted(100000, 2);
    ExpectConverted(65536, 1);
    ExpectConverted(1, 70000);
}

std::string SelectorName(const ::testing::TestParamInfo<Selector>& info)
{
    const auto [swap, rgb, flip] = info.param;
    return std::string(rgb ? "RGB" : "RGBA") + (swap ? "Swapped" : "Straight") + (flip ? "Flipped" : "Upright");
}

INSTANTIATE_TEST_SUITE_P(AllSelectors, ImageFromData,
                         ::testing::Combine(::testing::Bool(), ::testing::Bool(), ::testing::Bool()), SelectorName);

TEST(ImageFromDataThreads, BelowTheThresholdAllHappensOnTheCaller)
{
    const FailureScope scope;
    Bytes source(256 * 255 * 4);
    delete Image::ImageFromData(256, 255, source.data(), false, false, false);
    EXPECT_EQ(Failures().threadsAsked, 0);
}

TEST(ImageFromDataThreads, FromTheThresholdOnNoMoreThreadsRunThanTheMachineHas)
{
    const FailureScope scope;
    Bytes source(256 * 256 * 4);
    delete Image::ImageFromData(256, 256, source.data(), false, false, false);
    EXPECT_EQ(Failures().threadsAsked, MachineThreads() - 1);
}

TEST(ImageFromDataThreads, APictureOf8192By8192IsConvertedByBoundedThreads)
{
    const FailureScope scope;
    constexpr std::size_t side = 8192;
    Bytes source(side * side * 3);
    for (std::size_t y = 0; y < side; ++y)
    {
        std::memset(&source[y * side * 3], int(y % 251), side * 3);
    }
    const std::unique_ptr<Image> image(Image::ImageFromData(side, side, source.data(), true, true, true));
    EXPECT_EQ(Failures().threadsAsked, MachineThreads() - 1);
    Bytes expected(side * 4);
    for (std::size_t y = 0; y < side; ++y)
    {
        const auto value = static_cast<unsigned char>((side - 1 - y) % 251);
        for (std::size_t x = 0; x < side; ++x)
        {
            std::fill_n(&expected[x * 4], 3, value);
            expected[x * 4 + 3] = 255;
        }
        ASSERT_EQ(0, std::memcmp(expected.data(), image->data + y * side * 4, side * 4)) << "row " << y;
    }
}

TEST(ImageFromDataThreads, WithoutThreadsTheCallerDoesAll)
{
    const FailureScope scope;
    Failures().threads = true;
    Bytes source = NoiseBytes(300 * 300 * 4);
    const std::unique_ptr<Image> image(Image::ImageFromData(300, 300, source.data(), false, false, false));
    EXPECT_EQ(0, std::memcmp(image->data, source.data(), source.size()));
}

TEST(ImageFromDataThreads, SeveralThreadsMayConvertAtOnce)
{
    Bytes source = NoiseBytes(300 * 300 * 4);
    std::vector<std::thread> threads;
    std::atomic<int> right{0};
    for (int i = 0; i < 4; ++i)
    {
        threads.emplace_back([&] {
            const std::unique_ptr<Image> image(Image::ImageFromData(300, 300, source.data(), false, false, false));
            right += std::memcmp(image->data, source.data(), source.size()) == 0 ? 1 : 0;
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(right, 4);
}

TEST(ImageFromDataSizes, NoPixelsGiveAnImageWithoutPixels)
{
    unsigned char source[4] = {1, 2, 3, 4};
    for (const auto& [width, height] : {std::pair(0, 5), std::pair(5, 0), std::pair(-1, -1)})
    {
        const std::unique_ptr<Image> image(Image::ImageFromData(width, height, source, false, false, false));
        EXPECT_EQ(image->width, std::max(width, 0));
        EXPECT_EQ(image->height, std::max(height, 0));
        EXPECT_NE(image->data, nullptr);
    }
}

// Blocks of exact size: the sanitizer sees a read past the last pixel.
TEST(ImageWidenRGB, EveryLengthIsWidenedWithoutAReadPastTheEnd)
{
    for (auto* const widen : {&detail::WidenRGB, &detail::WidenRGBPlain})
    {
        for (std::size_t pixels = 0; pixels < 40; ++pixels)
        {
            Bytes source = NoiseBytes(pixels * 3);
            source.shrink_to_fit();
            Bytes result(pixels * 4 + 1, 7);
            widen(source.data(), result.data(), pixels);
            for (std::size_t i = 0; i < pixels; ++i)
            {
                ASSERT_EQ(0, std::memcmp(&result[i * 4], &source[i * 3], 3)) << i << " of " << pixels;
                ASSERT_EQ(result[i * 4 + 3], 255) << i << " of " << pixels;
            }
            ASSERT_EQ(result.back(), 7) << pixels;
        }
    }
}

TEST(ImageRowTasks, OneTaskBelowTheThreshold)
{
    const detail::RowTasks tasks = detail::PlanRowTasks(256, 255, 4);
    EXPECT_EQ(tasks.count, 1u);
    EXPECT_EQ(tasks.Rows(0), 255u);
}

TEST(ImageRowTasks, AsManyAsRowsFromTheThresholdOn)
{
    const detail::RowTasks tasks = detail::PlanRowTasks(256, 256, 4);
    EXPECT_EQ(tasks.count, 256u);
    EXPECT_EQ(tasks.rowsPerTask, 1u);
    EXPECT_EQ(tasks.Rows(0), 1u);
    EXPECT_EQ(tasks.Rows(255), 1u);
}

TEST(ImageRowTasks, FewerRowsThanThreadsLeaveAllToTheLast)
{
    const detail::RowTasks tasks = detail::PlanRowTasks(100000, 2, 4);
    EXPECT_EQ(tasks.count, 4u);
    EXPECT_EQ(tasks.rowsPerTask, 0u);
    EXPECT_EQ(tasks.Rows(0), 0u);
    EXPECT_EQ(tasks.Rows(2), 0u);
    EXPECT_EQ(tasks.Rows(3), 2u);
}

TEST(ImageRowTasks, AnUnknownNumberOfThreadsCountsAsOne)
{
    const detail::RowTasks tasks = detail::PlanRowTasks(65536, 1, 0);
    EXPECT_EQ(tasks.count, 1u);
    EXPECT_EQ(tasks.Rows(0), 1u);
}

TEST(ImageRowTasks, EachTaskRunsOnceOnNoMoreThanTheGivenThreads)
{
    for (const std::size_t threads : {0u, 1u, 3u, 8u})
    {
        for (const std::size_t count : {1u, 2u, 7u, 1000u})
        {
            std::mutex guard;
            std::vector<int> runs(count, 0);
            std::set<std::thread::id> ids;
            detail::RunTasks(count, threads, [&](std::size_t task) {
                const std::lock_guard<std::mutex> lock(guard);
                ++runs[task];
                ids.insert(std::this_thread::get_id());
            });
            EXPECT_EQ(std::count(runs.begin(), runs.end(), 1), std::ptrdiff_t(count));
            EXPECT_LE(ids.size(), std::max(std::size_t(1), threads));
        }
    }
}

TEST(ImageRowTasks, WithoutThreadsTheCallerRunsThemAll)
{
    const FailureScope scope;
    Failures().threads = true;
    std::vector<std::thread::id> ids(100);
    detail::RunTasks(ids.size(), 4, [&](std::size_t task) { ids[task] = std::this_thread::get_id(); });
    EXPECT_EQ(std::count(ids.begin(), ids.end(), std::this_thread::get_id()), 100);
    EXPECT_EQ(Failures().threadsAsked, 1);
}

}  // namespace
}  // namespace OV
