#pragma once

#include "tests/apps/render/RenderTool.h"
#include "tests/apps/viewer/VirtualDisplay.h"

#include <memory>
#include <string>
#include <vector>

namespace OV::Test
{

/// Runs orvane-view on a display of its own, with a script in place of a person.
class ViewerTool : public RenderTool
{
protected:
    static void SetUpTestSuite();
    static void TearDownTestSuite();

    /// Runs a script, in which FOLDER stands for the folder of the test, with nothing kept from
    /// another run and the window in 640x480.
    ProcessResult RunScript(const std::string& model, const std::string& script,
                            const std::vector<std::string>& options = {"--forget"}) const;

    /// The same, and expects that it ends well and in silence.
    /// @return what it printed.
    std::string View(const std::string& model, const std::string& script,
                     const std::vector<std::string>& options = {"--forget"}) const;

    ProcessResult RunViewer(const std::vector<std::string>& arguments) const;

    /// A model of two squares side by side, as nodes of their own.
    std::string WritePair() const
    {
        return WriteObj("pair.obj", "o left\nv -3 -1 0\nv -1 -1 0\nv -1 1 0\nv -3 1 0\nf 1 2 3 4\n"
                                    "o right\nusemtl green\nv 1 -1 0\nv 3 -1 0\nv 3 1 0\nv 1 1 0\nf 5 6 7 8\n");
    }

    Picture PictureAt(const std::string& name) const;

    /// The file of the program's state.
    std::string StatePath() const { return folder.Path("configuration/orvane/view.json"); }

private:
    static std::unique_ptr<VirtualDisplay> s_display;
};

/// Expects that no byte differs, and that there are pictures.
void ExpectSame(const Picture& left, const Picture& right);
void ExpectDifferent(const Picture& left, const Picture& right);

} // namespace OV::Test
