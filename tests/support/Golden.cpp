#include "tests/support/Golden.h"

#include "orvane_host/output/WritePNG.h"
#include "orvane/imaging/FilePath.h"
#include "orvane/imaging/Image.h"
#include "orvane/imaging/ImageCodec.h"

#include <exception>
#include <filesystem>
#include <memory>
#include <vector>

namespace OV::Test
{

namespace
{

/// Saves one picture of a failure and returns a word on where it is.
std::string Save(const Picture& picture, const std::string& path)
{
    std::string error;
    if (picture.IsEmpty())
    {
        return {};
    }
    const bool saved = Host::WritePNG(picture.GetRows(), picture.GetWidth(), picture.GetHeight(), path,
                                      Host::PNGAlpha::Keep, error);
    return "\n  " + path + (saved ? "" : ": " + error);
}

}  // namespace

GoldenFolders GoldenFolders::Default()
{
    return {ORVANE_GOLDEN_DIR, ORVANE_PICTURE_DIR};
}

Picture LoadPicture(const std::string& path)
{
    try
    {
        const std::unique_ptr<Image> image(ImageCodec::LoadImageData(FilePath{}, path, false, false));
        if (image)
        {
            const std::size_t bytes = static_cast<std::size_t>(image->width) * static_cast<std::size_t>(image->height) * 4;
            return Picture(image->width, image->height, {image->data, image->data + bytes});
        }
    }
    catch (const std::exception&)
    {
        // A damaged file is as good as none: the comparison fails.
    }
    return {};
}

::testing::AssertionResult MatchesGolden(const Picture& actual, const std::string& name, const GoldenLimits& limits,
                                         const GoldenFolders& folders)
{
    const Picture expected = LoadPicture(folders.golden + "/" + name + ".png");
    const PictureDifference difference = Compare(actual, expected);
    if (difference.sameSize && difference.largestChannelDifference <= limits.largestChannelDifference
        && difference.differingShare <= limits.differingShare)
    {
        return ::testing::AssertionSuccess();
    }
    std::filesystem::create_directories(folders.output);
    const std::string stem = folders.output + "/" + name;
    auto failure = ::testing::AssertionFailure();
    if (expected.IsEmpty())
    {
        failure << "there is no golden picture " << folders.golden << "/" << name << ".png";
    }
    else if (!difference.sameSize)
    {
        failure << "the picture is " << actual.GetWidth() << " x " << actual.GetHeight() << ", the golden one "
                << expected.GetWidth() << " x " << expected.GetHeight();
    }
    else
    {
        failure << "largest channel difference " << difference.largestChannelDifference << " (limit "
                << limits.largestChannelDifference << "), share of differing pixels " << difference.differingShare
                << " (limit " << limits.differingShare << ")";
    }
    return failure << Save(actual, stem + ".actual.png") << Save(expected, stem + ".expected.png")
                   << Save(expected.IsEmpty() ? Picture() : DrawDifference(actual, expected),
                           stem + ".difference.png");
}

}  // namespace OV::Test
