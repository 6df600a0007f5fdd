#include "tests/orvane_host/import/BoxObj.h"
#include "tests/orvane_host/import/TinyModels.h"
#include "tests/orvane_host/present/PresentationModels.h"
#include "tests/support/TemporaryFolder.h"

#include "orvane_host/import/ModelImporter.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>

namespace OV::Test
{

namespace
{

using Host::PresentationSettings;

/// A board that is let into a wall which leans and is turned, so that none of its coordinates is round.
class CoplanarPicture : public PresentationFixture
{
protected:
    CoplanarPicture() : PresentationFixture(SmallWidth, SmallHeight, 0)
    {
        WriteFile(folder.Path("colors.mtl"), "newmtl wall\nKd 0 0 1\nnewmtl board\nKd 1 0 0\n");
        boxes.Add("wall", "wall", Vector(-5.3f, -5.1f, -2), Vector(5.7f, 5.9f, 0));
        boxes.Add("board", "board", Vector(-1.1f, -1.3f, -0.25f), Vector(1.7f, 0.9f, 0));
        WriteFile(folder.Path("boxes.obj"), boxes.Text("colors.mtl"));
    }

    std::unique_ptr<Host::Presentation> Present(bool ordered = true) const
    {
        Host::ImportOptions options;
        options.orderCoplanar = ordered;
        return std::make_unique<Host::Presentation>(Host::ModelImporter::Import(folder.Path("boxes.obj"), options));
    }

    /// @param tilt of the line of sight against that straight on, in degrees.
    PresentationSettings From(double distance, double tilt, bool orthographic) const
    {
        const double angle = tilt * std::acos(-1.0) / 180.0;
        PresentationSettings wanted;
        wanted.antialiasing = Host::Antialiasing::None;
        wanted.background = Color(1, 1, 1);
        wanted.view.eye = boxes.At(Vector(static_cast<float>(distance * std::sin(angle)), 0.1f,
                                          static_cast<float>(distance * std::cos(angle))));
        wanted.view.target = boxes.At(Vector(0, 0, 0));
        wanted.view.orthographic = orthographic;
        // The board stays several pixels large.
        wanted.view.fov = static_cast<float>(std::min(35.0, 700.0 / distance));
        return wanted;
    }

    /// Draws with both, with the one and with the other.
    int CountWrong(Host::Presentation& presentation, const PresentationSettings& wanted) const
    {
        Apply(presentation, wanted);
        const Picture both = Draw(presentation);
        EXPECT_TRUE(presentation.Isolate("board"));
        const Picture board = Draw(presentation);
        EXPECT_TRUE(presentation.Isolate("wall"));
        const Picture wall = Draw(presentation);
        presentation.ShowAll();
        const Pixel front = board.At(Width() / 2, Height() / 2);
        const auto isInside = [&](int x, int y) {
            const Pixel own = board.At(x, y);
            return board.At(x - 1, y) == own && board.At(x + 1, y) == own && board.At(x, y - 1) == own
                && board.At(x, y + 1) == own;
        };
        int wrong = 0;
        for (int y = 1; y + 1 < Height(); ++y)
        {
            for (int x = 1; x + 1 < Width(); ++x)
            {
                // The wall hides the sides of the board, but for a share of a pixel by which it stands back.
                const Pixel expected = board.At(x, y) == front ? front : wall.At(x, y);
                wrong += !isInside(x, y) || both.At(x, y) == expected ? 0 : 1;
            }
        }
        return wrong;
    }

    /// Pixels in the middle of one colour that have another one in another picture.
    int CountOther(const Picture& actual, const Picture& expected) const
    {
        int wrong = 0;
        for (int y = 2; y + 2 < Height(); ++y)
        {
            for (int x = 2; x + 2 < Width(); ++x)
            {
                const Pixel& middle = expected.At(x, y);
                bool isInside = true;
                for (int i = 0; i < 25; ++i)
                {
                    isInside = isInside && expected.At(x - 2 + i % 5, y - 2 + i / 5) == middle;
                }
                const Pixel& own = actual.At(x, y);
                const int most = std::max({std::abs(own.r - middle.r), std::abs(own.g - middle.g), std::abs(own.b - middle.b)});
                wrong += isInside && most > 2 ? 1 : 0;
            }
        }
        return wrong;
    }

    static BoxObj NewBoxes()
    {
        return BoxObj(Vector(12, 3, -40), Vector(0.6f, 0.8f, 0.0f), Vector(-0.48f, 0.36f, 0.8f), Vector(0.64f, -0.48f, 0.6f));
    }

    TemporaryFolder folder;
    BoxObj boxes = NewBoxes();
};

constexpr double kDistances[] = {2.5, 7.0, 20.0, 61.0, 190.0, 700.0};
constexpr double kTilts[] = {0.0, 31.0, 62.0, 80.0};

TEST_F(CoplanarPicture, TheThinnerOneIsSeenAtEveryDistanceAndAngle)
{
    const auto presentation = Present();
    for (const bool orthographic : {false, true})
    {
        for (const double distance : kDistances)
        {
            for (const double tilt : kTilts)
            {
                EXPECT_EQ(CountWrong(*presentation, From(distance, tilt, orthographic)), 0)
                    << distance << " away, " << tilt << " degrees, orthographic " << orthographic;
            }
        }
    }
}

TEST_F(CoplanarPicture, WithoutAnOrderBothAreSeen)
{
    const auto presentation = Present(false);
    int wrong = 0;
    for (const double distance : kDistances)
    {
        wrong += CountWrong(*presentation, From(distance, 31.0, false));
    }
    EXPECT_GT(wrong, 0);
}

TEST_F(CoplanarPicture, SheetsThatLookOppositeWaysAreInOrderWhereBacksAreSeen)
{
    for (const bool boardLooksBack : {false, true})
    {
        boxes = NewBoxes();
        boxes.AddSheet("wall", "wall", Vector(-5.3f, -5.1f, 0), Vector(5.7f, 5.9f, 0), !boardLooksBack);
        boxes.AddSheet("board", "board", Vector(-1.1f, -1.3f, 0), Vector(1.7f, 0.9f, 0), boardLooksBack);
        WriteFile(folder.Path("boxes.obj"), boxes.Text("colors.mtl"));
        for (const bool isOrdered : {true, false})
        {
            const auto presentation = Present(isOrdered);
            int wrong = 0;
            for (const double distance : kDistances)
            {
                for (const double tilt : {0.0, 31.0, 62.0, 149.0, 180.0, 211.0})
                {
                    PresentationSettings wanted = From(distance, tilt, false);
                    wanted.cullBacks = false;
                    wrong += CountWrong(*presentation, wanted);
                }
            }
            EXPECT_EQ(wrong == 0, isOrdered) << wrong << " pixels, board looks back " << boardLooksBack;
        }
    }
}

TEST_F(CoplanarPicture, GlassIsInOrderToo)
{
    for (const char* const glass : {"wall", "board", "both"})
    {
        const std::string which = glass;
        WriteFile(folder.Path("colors.mtl"),
                  std::string("newmtl wall\nKd 0 0 1\n") + (which != "board" ? "d 0.5\n" : "") + "newmtl board\nKd 1 0 0\n"
                      + (which != "wall" ? "d 0.5\n" : ""));
        for (const bool isOrdered : {true, false})
        {
            int wrong = 0;
            const auto presentation = Present(isOrdered);
            // The same with the board clear of the wall.
            BoxObj clear = NewBoxes();
            clear.Add("wall", "wall", Vector(-5.3f, -5.1f, -2), Vector(5.7f, 5.9f, 0));
            clear.Add("board", "board", Vector(-1.1f, -1.3f, -0.25f), Vector(1.7f, 0.9f, 0.02f));
            WriteFile(folder.Path("clear.obj"), clear.Text("colors.mtl"));
            Host::Presentation apart(Host::ModelImporter::Import(folder.Path("clear.obj"), Host::ImportOptions()));
            for (const double distance : {7.0, 20.0, 61.0})
            {
                for (const double tilt : {0.0, 31.0, 62.0})
                {
                    Apply(*presentation, From(distance, tilt, false));
                    Apply(apart, From(distance, tilt, false));
                    wrong += CountOther(Draw(*presentation), Draw(apart));
                }
            }
            EXPECT_EQ(wrong == 0, isOrdered) << wrong << " pixels, glass is " << which;
        }
    }
}

TEST_F(CoplanarPicture, BatchesChangeNothingInIt)
{
    // Several of a kind, since a batch of one is none.
    boxes.Add("second wall", "wall", Vector(6, -5.1f, -2), Vector(9, 5.9f, 0));
    boxes.Add("second board", "board", Vector(6.5f, -1.3f, -0.25f), Vector(7.5f, 0.9f, 0));
    WriteFile(folder.Path("boxes.obj"), boxes.Text("colors.mtl"));
    const auto presentation = Present();
    PresentationSettings wanted = From(20.0, 62.0, false);
    wanted.batches.use = Host::BatchUse::Off;
    Apply(*presentation, wanted);
    const Picture single = Draw(*presentation);
    wanted.batches.use = Host::BatchUse::On;
    Apply(*presentation, wanted);
    // What has just come is drawn by itself until it has rested.
    Draw(*presentation);
    ExpectSame(Draw(*presentation), single, "batches");
    EXPECT_GT(presentation->GetStatistics().batches.batches, 0u);
}

TEST_F(CoplanarPicture, EdgesAreDrawnWhereOneEndsAndNowhereElse)
{
    const auto presentation = Present();
    for (const double distance : kDistances)
    {
        for (const double tilt : kTilts)
        {
            PresentationSettings wanted = From(distance, tilt, false);
            Apply(*presentation, wanted);
            const Picture plain = Draw(*presentation);
            wanted.edges = Host::EdgeLook();
            Apply(*presentation, wanted);
            const Picture edged = Draw(*presentation);
            const auto isInside = [&](int x, int y) {
                for (int i = -2; i <= 2; ++i)
                {
                    for (int j = -2; j <= 2; ++j)
                    {
                        if (!(plain.At(x + i, y + j) == plain.At(x, y)))
                        {
                            return false;
                        }
                    }
                }
                return true;
            };
            int wrong = 0;
            for (int y = 2; y + 2 < Height(); ++y)
            {
                for (int x = 2; x + 2 < Width(); ++x)
                {
                    wrong += isInside(x, y) && !(edged.At(x, y) == plain.At(x, y)) ? 1 : 0;
                }
            }
            EXPECT_EQ(wrong, 0) << distance << " away, " << tilt << " degrees";
        }
    }
}

TEST_F(CoplanarPicture, LinesLeaveItInOrder)
{
    const auto presentation = Present();
    for (const double tilt : kTilts)
    {
        PresentationSettings wanted = From(20.0, tilt, false);
        Apply(*presentation, wanted);
        const Picture plain = Draw(*presentation);
        wanted.lines.emplace();
        wanted.lines->color = Color(0, 1, 0);
        Apply(*presentation, wanted);
        const Picture lined = Draw(*presentation);
        int lines = 0;
        for (int y = 0; y < Height(); ++y)
        {
            for (int x = 0; x < Width(); ++x)
            {
                // Neither of the two has any green.
                const bool isLine = lined.At(x, y).g > 0;
                lines += isLine ? 1 : 0;
                ASSERT_TRUE(isLine || lined.At(x, y) == plain.At(x, y)) << x << ", " << y << " at " << tilt;
            }
        }
        EXPECT_GT(lines, 0) << tilt;
        Apply(*presentation, From(20.0, tilt, false));
        ExpectSame(Draw(*presentation), plain, "without lines again");
    }
}

} // namespace

} // namespace OV::Test
