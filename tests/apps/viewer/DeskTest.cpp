#include "apps/viewer/Desk.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <thread>

using namespace OV;
using namespace OV::ViewerApp;

namespace
{

/// A desk in a picture of 800 by 600, with no GL: nothing is drawn.
class DeskTest : public ::testing::Test
{
protected:
    DeskTest() { desk.SetPicture(800, 600, 1.0f); }

    std::string Write(const std::string& name, const std::string& object) const
    {
        std::ofstream(folder.Path(name)) << "o " << object << "\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";
        return folder.Path(name);
    }

    void Wait()
    {
        while (desk.IsOpening())
        {
            desk.Update(0.0);
            std::this_thread::yield();
        }
    }

    OV::Test::TemporaryFolder folder;
    Desk desk{[] {}};
};

} // namespace

TEST_F(DeskTest, WhatDoesNotFitTheTimeOfAFrameStepsBackWhileMovingAndComesBack)
{
    desk.Open(Write("a.obj", "wall"));
    Wait();
    Host::PresentationSettings settings;
    settings.occlusion = true;
    settings.antialiasing = Host::Antialiasing::Supersampling;
    ASSERT_TRUE(desk.Apply(settings));
    const auto move = [this]
    {
        desk.GetNavigator().OrbitBy({5.0, 0.0});
        desk.FollowNavigator();
    };
    desk.TellFrameTime(0.01);
    move();
    EXPECT_TRUE(desk.GetDrawn().occlusion) << "there is time for all";
    desk.TellFrameTime(0.2);
    move();
    EXPECT_FALSE(desk.GetDrawn().occlusion);
    EXPECT_EQ(desk.GetDrawn().antialiasing, Host::Antialiasing::None);
    EXPECT_TRUE(desk.GetSettings().occlusion) << "a person's choice stays";
    EXPECT_TRUE(desk.IsMoving());
    for (int i = 0; i < 3; ++i)
    {
        desk.Update(0.05);
        EXPECT_FALSE(desk.GetDrawn().occlusion);
    }
    desk.Update(0.05);
    desk.Update(0.05);
    EXPECT_TRUE(desk.GetDrawn().occlusion);
    EXPECT_EQ(desk.GetDrawn().antialiasing, Host::Antialiasing::Supersampling);
    EXPECT_FALSE(desk.IsMoving());
}

TEST_F(DeskTest, AHandThatHoldsStillSeesAll)
{
    desk.Open(Write("a.obj", "wall"));
    Wait();
    Host::PresentationSettings settings;
    settings.occlusion = true;
    ASSERT_TRUE(desk.Apply(settings));
    desk.TellFrameTime(0.2);
    desk.GetNavigator().BeginDrag(Navigator::Drag::Orbit, {400.0, 300.0}, std::nullopt);
    desk.GetNavigator().DragTo({410.0, 300.0});
    desk.FollowNavigator();
    EXPECT_FALSE(desk.GetDrawn().occlusion);
    for (int i = 0; i < 6; ++i)
    {
        desk.Update(0.05);
    }
    EXPECT_TRUE(desk.GetDrawn().occlusion);
    EXPECT_FALSE(desk.IsMoving());
    desk.GetNavigator().DragTo({420.0, 300.0});
    desk.FollowNavigator();
    EXPECT_FALSE(desk.GetDrawn().occlusion);
}

TEST_F(DeskTest, WhatIsDraggedOtherThanTheViewMovesToo)
{
    desk.Open(Write("a.obj", "wall"));
    Wait();
    Host::PresentationSettings settings;
    settings.occlusion = true;
    ASSERT_TRUE(desk.Apply(settings));
    settings.section.planes = {{Vector(0, 0, 1), Vector(0, 0, 0)}};
    desk.TellFrameTime(0.01);
    ASSERT_TRUE(desk.ApplyInMotion(settings));
    EXPECT_TRUE(desk.GetDrawn().occlusion) << "there is time for all";
    desk.TellFrameTime(0.2);
    settings.section.planes.front().position.z = 0.5f;
    ASSERT_TRUE(desk.ApplyInMotion(settings));
    EXPECT_FALSE(desk.GetDrawn().occlusion);
    EXPECT_EQ(desk.GetDrawn().section.planes.front().position.z, 0.5f);
    EXPECT_TRUE(desk.GetSettings().occlusion);
    for (int i = 0; i < 6; ++i)
    {
        desk.Update(0.05);
    }
    EXPECT_TRUE(desk.GetDrawn().occlusion);
    settings.section.planes.front().normal = Vector(0, 0, 0);
    desk.TellFrameTime(0.2);
    EXPECT_FALSE(desk.ApplyInMotion(settings));
    EXPECT_EQ(desk.GetSettings().section.planes.front().position.z, 0.5f);
    EXPECT_TRUE(desk.GetDrawn().occlusion);
}

TEST_F(DeskTest, WhatTookTooLongOnceStepsBackFromTheFirstFrameOfTheNextMovement)
{
    desk.Open(Write("a.obj", "wall"));
    Wait();
    Host::PresentationSettings settings;
    settings.occlusion = true;
    ASSERT_TRUE(desk.Apply(settings));
    const auto move = [this]
    {
        desk.GetNavigator().OrbitBy({5.0, 0.0});
        desk.FollowNavigator();
    };
    const auto rest = [this]
    {
        for (int i = 0; i < 6; ++i)
        {
            desk.Update(0.05);
        }
    };
    desk.TellFrameTime(0.2);
    move();
    EXPECT_FALSE(desk.GetDrawn().occlusion);
    desk.TellFrameTime(0.001);
    rest();
    EXPECT_TRUE(desk.GetDrawn().occlusion);
    move();
    EXPECT_FALSE(desk.GetDrawn().occlusion) << "the frame without it was the fast one";
    rest();
    desk.TellFrameTime(0.001);
    move();
    EXPECT_TRUE(desk.GetDrawn().occlusion) << "there was time for it at rest";
    // Other settings may be fast ones.
    desk.TellFrameTime(0.2);
    settings.sky = true;
    ASSERT_TRUE(desk.Apply(settings));
    move();
    EXPECT_TRUE(desk.GetDrawn().occlusion);
}

TEST_F(DeskTest, FilesComeOneAfterAnotherAndOneInPlaceOfAllComesAlone)
{
    const std::string a = Write("a.obj", "wall");
    const std::string b = Write("b.obj", "wall");
    const std::string c = Write("c.obj", "wall");
    desk.Open(a);
    desk.Open(b, Desk::Opening::Beside);
    desk.Open(c, Desk::Opening::Beside);
    Wait();
    EXPECT_EQ(desk.GetPaths(), (std::vector<std::string>{a, b, c}));
    EXPECT_TRUE(desk.IsFile("b.obj"));
    EXPECT_FALSE(desk.IsFile("b.obj/wall"));
    EXPECT_FALSE(desk.TakeAway("b.obj/wall"));
    EXPECT_TRUE(desk.TakeAway("a.obj"));
    EXPECT_EQ(desk.GetPaths(), (std::vector<std::string>{b, c}));
    desk.Open(b, Desk::Opening::Beside);
    desk.Open(a);
    Wait();
    EXPECT_EQ(desk.GetPaths(), std::vector<std::string>{a});
    EXPECT_FALSE(desk.IsFile("a.obj")) << "the only one";
    EXPECT_FALSE(desk.TakeAway("a.obj"));
}

TEST_F(DeskTest, TroubleWithOneOfSeveralFilesIsToldAtTheEnd)
{
    desk.Open(Write("a.obj", "wall"));
    desk.Open(folder.Path("none.obj"), Desk::Opening::Beside);
    desk.Open(Write("b.obj", "wall"), Desk::Opening::Beside);
    Wait();
    EXPECT_EQ(desk.GetPaths().size(), 2u);
    EXPECT_TRUE(desk.GetMessage().isTrouble);
    EXPECT_NE(desk.GetMessage().text.find("none.obj"), std::string::npos);
    desk.Open(Write("c.obj", "wall"), Desk::Opening::Beside);
    Wait();
    EXPECT_FALSE(desk.GetMessage().isTrouble);
}

TEST_F(DeskTest, OneFileThatIsReadAgainKeepsWhatIsDoneToTheOthers)
{
    const std::string a = Write("a.obj", "wall");
    const std::string b = Write("b.obj", "wall");
    desk.Open(a);
    desk.Open(b, Desk::Opening::Beside);
    Wait();
    desk.SetHidden("a.obj/wall", true);
    desk.Select({"b.obj/wall"});
    desk.LabelSelection();
    desk.AddDimension({{{0, 0, 0}, {1, 0, 0}}});
    std::ofstream(a) << "o wall\nv -5 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";
    desk.Open(a, Desk::Opening::Again);
    Wait();
    EXPECT_EQ(desk.GetPaths(), (std::vector<std::string>{a, b}));
    EXPECT_EQ(desk.GetModel()->GetModelBox()->low.x, -5.0f);
    EXPECT_TRUE(desk.IsHidden("a.obj/wall"));
    EXPECT_EQ(desk.GetSelection(), std::vector<std::string>{"b.obj/wall"});
    EXPECT_EQ(desk.GetLabels(), std::vector<std::string>{"b.obj/wall"});
    EXPECT_EQ(desk.GetDimensions().size(), 1u);
    // The node is gone, and with it what was said about it.
    std::ofstream(b) << "o fence\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";
    desk.OpenAgain();
    Wait();
    EXPECT_TRUE(desk.GetSelection().empty());
    EXPECT_TRUE(desk.GetLabels().empty());
    desk.Open(a);
    Wait();
    EXPECT_TRUE(desk.GetHidden().empty());
    EXPECT_TRUE(desk.GetDimensions().empty());
}
