#include "tests/apps/viewer/ViewerTool.h"

#include "tests/support/Golden.h"

namespace OV::Test
{

std::unique_ptr<VirtualDisplay> ViewerTool::s_display;

void ViewerTool::SetUpTestSuite()
{
    s_display = std::make_unique<VirtualDisplay>();
}

void ViewerTool::TearDownTestSuite()
{
    s_display.reset();
}

ProcessResult ViewerTool::RunViewer(const std::vector<std::string>& arguments) const
{
    std::vector<std::string> all = {ORVANE_VIEW_PROGRAM};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return RunProcess(all, {"DISPLAY=" + s_display->Name(), "XDG_CONFIG_HOME=" + folder.Path("configuration")});
}

ProcessResult ViewerTool::RunScript(const std::string& model, const std::string& script,
                                    const std::vector<std::string>& options) const
{
    std::string text = script;
    for (std::size_t at = text.find("FOLDER"); at != std::string::npos; at = text.find("FOLDER"))
    {
        text.replace(at, 6, folder.Path());
    }
    WriteWholeFile(folder.Path("script.txt"), "wait\n" + text + "\nquit\n");
    std::vector<std::string> arguments = {"--script", folder.Path("script.txt"), "--size", "640x480"};
    if (!model.empty())
    {
        arguments.push_back(model);
    }
    arguments.insert(arguments.end(), options.begin(), options.end());
    return RunViewer(arguments);
}

std::string ViewerTool::View(const std::string& model, const std::string& script,
                             const std::vector<std::string>& options) const
{
    const ProcessResult result = RunScript(model, script, options);
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_EQ(result.signal, 0);
    EXPECT_EQ(result.errors, "");
    return result.output;
}

Picture ViewerTool::PictureAt(const std::string& name) const
{
    Picture picture = LoadPicture(folder.Path(name));
    EXPECT_FALSE(picture.IsEmpty()) << "there is no " << name;
    return picture;
}

void ExpectSame(const Picture& left, const Picture& right)
{
    ASSERT_FALSE(left.IsEmpty());
    const PictureDifference difference = Compare(left, right);
    ASSERT_TRUE(difference.sameSize);
    EXPECT_EQ(difference.largestChannelDifference, 0) << "in a share of " << difference.differingShare;
}

void ExpectDifferent(const Picture& left, const Picture& right)
{
    ASSERT_FALSE(left.IsEmpty());
    ASSERT_FALSE(right.IsEmpty());
    EXPECT_TRUE(left != right);
}

} // namespace OV::Test
