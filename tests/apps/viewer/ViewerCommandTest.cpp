#include "tests/apps/viewer/ViewerTool.h"

using namespace OV::Test;

namespace
{

class ViewerCommand : public ViewerTool
{
protected:
    /// Expects that the command which is told draws the picture that is saved.
    void ExpectCommandDraws(const std::string& model, const std::string& script,
                            const std::vector<std::string>& options = {"--forget"}) const
    {
        SCOPED_TRACE(script);
        const std::string told = View(model, script + "\nwait\npicture FOLDER/seen.png\nprint command", options);
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

TEST_F(ViewerCommand, GoesToTheClipboard)
{
    const std::string told = View(WriteCube(), "set sky true\nkey ctrl+c\nprint clipboard\nprint command\nexpect message Copied");
    const std::size_t line = told.find('\n');
    EXPECT_NE(told.find("orvane-render"), std::string::npos) << told;
    EXPECT_EQ(told.substr(0, line), told.substr(line + 1, line));
}

TEST_F(ViewerCommand, IsNotCopiedWithoutAModel)
{
    const std::string told = View("", "key ctrl+c\nprint clipboard\nexpect message There is no model");
    EXPECT_EQ(told, "\n");
}

TEST_F(ViewerCommand, LeavesTheSelectionOut)
{
    ExpectCommandDraws(WriteCube(), "click 320,240\nexpect selection cube");
}

TEST_F(ViewerCommand, LeavesOutWhatIsHidden)
{
    const std::string pair = WritePair();
    ExpectCommandDraws(pair, "select left\nkey h");
    ExpectCommandDraws(pair, "select right\nkey i\nset view.upAxis \"z\"\nset view.named \"front\"");
}

TEST_F(ViewerCommand, DrawsMeasuresAndNames)
{
    const std::string told =
        View(WritePair(), "view front\nwait\nkey m\nclick 120,240\nclick 520,240\nkey escape\nselect left\nkey n\n"
                          "wait\nprint command");
    EXPECT_NE(told.find("--distance="), std::string::npos) << told;
    EXPECT_NE(told.find("--label="), std::string::npos) << told;
    ExpectCommandDraws(WritePair(), "view front\nwait\nkey m\nclick 120,240\nclick 520,240\nkey shift+m\nclick 120,240\n"
                                    "click 320,240\nclick 520,240\nkey escape\nkey escape\nselect left\nkey n");
}

TEST_F(ViewerCommand, DrawsLinesAsWideAsOnAFineScreen)
{
    ExpectCommandDraws(WriteCube(), "set lines {\"width\": 2, \"dash\": 6}", {"--forget", "--scale", "2"});
}

TEST_F(ViewerCommand, NamesAllFiles)
{
    const std::string other = WriteObj("other.obj", "v 2 0 0\nv 4 0 0\nv 2 2 0\nf 1 2 3\n");
    ExpectCommandDraws(WriteCube(), "add " + other + "\nwait\nselect other.obj\nkey n");
}
