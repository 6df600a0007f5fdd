#pragma once

#include "tests/support/Picture.h"

#include <gtest/gtest.h>

#include <string>

namespace OV::Test
{

/// What may differ from a golden picture: both limits must hold.
struct GoldenLimits
{
    int largestChannelDifference = 0;
    /// Share of the pixels that may differ at all, 0 to 1.
    double differingShare = 0.0;
};

/// Where golden pictures lie, and where a failure puts its pictures.
struct GoldenFolders
{
    std::string golden;
    std::string output;

    /// tests/golden of the source tree, and test-pictures of the build tree.
    static GoldenFolders Default();
};

/// Reads a PNG file; an empty picture when there is none.
Picture LoadPicture(const std::string& path);

/// Compares with the golden picture NAME.png. On failure the pictures NAME.actual.png,
/// NAME.expected.png and NAME.difference.png are in the output folder, and the message tells
/// what was measured. A golden picture that is missing is a failure.
::testing::AssertionResult MatchesGolden(const Picture& actual, const std::string& name, const GoldenLimits& limits,
                                         const GoldenFolders& folders = GoldenFolders::Default());

}  // namespace OV::Test
