#include "tests/orvane_host/present/PresentationModels.h"
#include "tests/support/GLRecorder.h"

#include "orvane_host/present/PictureOptions.h"

#include <string>
#include <vector>

namespace OV::Test
{

namespace
{

using Host::Presentation;
using Host::PresentationSettings;

/// What a host asks for while there is no context.
class SuspendedPresentation : public PresentationFixture
{
};

} // namespace

TEST_F(SuspendedPresentation, AsksNothingOfGLAndComesBackAsItWas)
{
    const auto presentation = PresentBoxes();
    PresentationSettings settings;
    settings.lines.emplace();
    settings.sun.emplace().direction = Vector(1, 2, 1);
    settings.shadows.emplace();
    Apply(*presentation, settings);
    const Picture before = Draw(*presentation);
    ASSERT_FALSE(presentation->Pick({0, 0, Width(), Height()}).empty());
    presentation->Suspend();
    {
        const GLRecorder gl(GLRecorder::Mode::Forward);
        presentation->Draw(Width(), Height());
        presentation->Draw(Width() / 2, Height() / 2);
        presentation->Prepare();
        EXPECT_FALSE(presentation->Pick(Width() / 2, Height() / 2));
        EXPECT_TRUE(presentation->Pick({0, 0, Width(), Height()}).empty());
        EXPECT_TRUE(presentation->PickThrough(Width() / 2, Height() / 2).empty());
        std::vector<unsigned char> rgba;
        std::string error;
        EXPECT_FALSE(presentation->TakePicture(rgba, 8, 8, error));
        EXPECT_NE(error.find("resume"), std::string::npos) << error;
        EXPECT_TRUE(rgba.empty());
        EXPECT_FALSE(presentation->FindBlank(Host::PictureOptions()));
        presentation->Suspend();
        EXPECT_TRUE(gl.Calls().empty()) << gl.Calls().front().ToString();
    }
    presentation->Resume();
    ExpectSame(Draw(*presentation), before, "resumed");
    presentation->Resume();
    ExpectSame(Draw(*presentation), before, "resumed twice");
}

} // namespace OV::Test
