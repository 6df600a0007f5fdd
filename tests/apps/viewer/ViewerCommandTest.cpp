#include "tests/apps/viewer/ViewerTool.h"

using namespace OV::Test;

namespace
{

class ViewerCommand : public ViewerTool
{
protected:
    /// Expects that the command which is told draws the picture that is saved.
    void ExpectCommandDraws(const std::string& model, const std::string& script) const
    {
        const std::string told = View(model, script + "\nwait\npicture FOLDER/seen.png\nprint command");
        const std::size_t begin = told.find(" ");
        ASSERT_NE(begin, std::string::npos);
        std::string command = told.substr(begin + 1, told.find_last_not_of('\n') - begin);
        const std::size_t output = command.find("picture.png");
        ASSERT_NE(output, std::string::npos);
        command.replace(output, 11, folder.Path("drawn.png"));
        // As a person pastes it.
        const ProcessResult result = RunProcess({"/bin/sh", "-c", RenderProgram() + " " + command});
        EXPECT_EQ(result.exitCode, 0) << result.errors << command;
        ExpectSame(PictureAt("seen.png"), PictureAt("drawn.png"));
    }
};

} // namespace

TEST_F(ViewerCommand, DrawsTheSamePictureByteForByte)
{
    const std::string cube = WriteCube();
    ExpectCommandDraws(cube, "");
    ExpectCommandDraws(cube, "view top");
    ExpectCommandDraws(cube, "drag 300,240 370,200\nscroll 320,240 2");
}

TEST_F(ViewerCommand, TellsEverySettingThatTheToolHas)
{
    const std::string cube = WriteCube();
    ExpectCommandDraws(cube, "look phong\nset view.orthographic true\nset view.fov 20\nset sky true\n"
                             "set background \"#AABBCC\"");
    ExpectCommandDraws(cube, "look monotone\nset lines {\"width\": 2.5, \"color\": \"#102030\", \"dash\": 4}\n"
                             "set cullBacks false\nset antialiasing \"fxaa\"");
    ExpectCommandDraws(cube, "set edges {\"weight\": 0.75}\nset occlusion true\nset samples 0\n"
                             "set fog {\"start\": 1, \"end\": 30}");
    ExpectCommandDraws(cube, "set section {\"planes\": [{\"normal\": [0, 0, 2], \"position\": [0, 0, 0.25]}], "
                             "\"fill\": \"#336699\", \"outlineWidth\": 0.05, \"outlineColor\": \"#FF0000\"}\n"
                             "set antialiasing \"ssaa\"");
    ExpectCommandDraws(cube, "set sheet {\"title\": \"It's a \\\"cube\\\"\", \"scaleBar\": true, \"north\": -30}");
}

TEST_F(ViewerCommand, LeavesTheSelectionOut)
{
    ExpectCommandDraws(WriteCube(), "click 320,240\nexpect selection cube");
}
