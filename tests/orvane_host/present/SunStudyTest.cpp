#include "orvane_host/present/SunHoursMap.h"
#include "orvane_host/present/SunStudy.h"
#include "orvane_host/sheet/ColorScale.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "tests/orvane_host/present/PresentationModels.h"
#include "tests/support/Golden.h"
#include "tests/support/TemporaryFolder.h"

#include <GL/gl.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <string>
#include <utility>

namespace OV::Test
{

namespace
{

using Host::SunStudyTimes;

std::string TroubleOf(const std::string& text, std::optional<int> offsetElse = std::nullopt)
{
    std::string error;
    EXPECT_FALSE(SunStudyTimes::Parse(text, error, offsetElse)) << text;
    return error;
}

SunStudyTimes Times(const std::string& text)
{
    std::string error;
    const std::optional<SunStudyTimes> times = SunStudyTimes::Parse(text, error, 60);
    EXPECT_TRUE(times) << text << ": " << error;
    return times.value_or(SunStudyTimes());
}

/// Pixels of a sheet.
std::vector<unsigned char> PartOf(const std::vector<unsigned char>& sheet, int sheetWidth, const PixelRect& part)
{
    std::vector<unsigned char> pixels;
    for (int y = part.y; y < part.y + part.height; ++y)
    {
        const auto begin = sheet.begin() + (static_cast<std::ptrdiff_t>(y) * sheetWidth + part.x) * 4;
        pixels.insert(pixels.end(), begin, begin + static_cast<std::ptrdiff_t>(part.width) * 4);
    }
    return pixels;
}

class SunStudyPicture : public PresentationFixture
{
protected:
    SunStudyPicture() : PresentationFixture(320, 240), presentation(PresentBoxes())
    {
        wanted = presentation->GetSettings();
        wanted.sun.emplace().time = "2026-06-21T12:00Z";
        wanted.sun->place = Host::GeoPlace{52.52f, 13.4f};
        Apply(*presentation, wanted);
    }

    std::unique_ptr<Host::Presentation> presentation;
    Host::PresentationSettings wanted;
};

} // namespace

TEST(SunStudyTimes, ReadsFirstLastAndStep)
{
    const SunStudyTimes day = Times("2026-03-20T09:00/17:00/1h");
    EXPECT_EQ(day.first.Text(), "2026-03-20T09:00+01:00");
    EXPECT_EQ(day.last.Text(), "2026-03-20T17:00+01:00");
    EXPECT_EQ(day.stepSeconds, 3600);
    EXPECT_EQ(day.Moments().size(), 9u);
    EXPECT_EQ(day.Moments()[3].Text(), "2026-03-20T12:00+01:00");
    EXPECT_EQ(day.Hours(), 8.0);
    const SunStudyTimes other = Times("2026-03-20T09:00-03:00/10:10/30min");
    EXPECT_EQ(other.last.Text(), "2026-03-20T10:10-03:00");
    EXPECT_EQ(other.Moments().size(), 3u);
    EXPECT_EQ(other.Hours(), 1.0) << "to the last of the moments";
    EXPECT_EQ(Times("2026-03-20T09:00Z/2026-03-21T09:00Z/1h30m").stepSeconds, 5400);
    EXPECT_EQ(Times("2026-03-20T09:00Z/12:00+02:00/5m").last.Text(), "2026-03-20T12:00+02:00");
}

TEST(SunStudyTimes, RefusesWhatIsNoneWithTheReason)
{
    for (const char* text : {"", "2026-03-20T09:00Z", "2026-03-20T09:00Z/17:00", "2026-03-20T09:00Z/17:00/1h/2"})
    {
        EXPECT_EQ(TroubleOf(text), "it has to be FIRST/LAST/STEP, such as 2026-03-20T09:00+01:00/17:00/1h") << text;
    }
    EXPECT_EQ(TroubleOf("2026-03-20T09:00/17:00/1h"),
              "the first time: it lacks the offset from UTC, such as Z or +02:00");
    EXPECT_EQ(TroubleOf("2026-03-20T09:00Z/25:00/1h"), "the last time: the time has to be 00:00:00 to 23:59:60");
    for (const char* step : {"", "0h", "h", "1", "1s", "-1h", "1h30", "30m1h", "1.5h", "1h 30m", "9999999h", "1mi"})
    {
        EXPECT_EQ(TroubleOf(std::string("2026-03-20T09:00Z/17:00/") + step),
                  "the step has to be hours and minutes, such as 1h, 30m or 1h30m")
            << step;
    }
    EXPECT_EQ(TroubleOf("2026-03-20T09:00Z/09:00/1h"), "the last time has to be after the first one, and at most 366 days");
    EXPECT_EQ(TroubleOf("2026-03-20T09:00Z/2027-03-22T09:00Z/1h"),
              "the last time has to be after the first one, and at most 366 days");
    EXPECT_EQ(TroubleOf("2026-03-20T00:00Z/2026-03-21T01:00Z/1m"), "there are at most 1500 moments; make the step longer");
    EXPECT_EQ(Times("2026-03-20T00:00Z/2026-03-21T00:59Z/1m").Moments().size(), 1500u);
}

TEST(SunStudyTimes, ClocksFollowTheLongitudeInWholeHours)
{
    EXPECT_EQ(Host::SunStudy::NominalOffset(13.4), 60);
    EXPECT_EQ(Host::SunStudy::NominalOffset(0.0), 0);
    EXPECT_EQ(Host::SunStudy::NominalOffset(-58.4), -240);
    EXPECT_EQ(Host::SunStudy::NominalOffset(180.0), 720);
}

TEST(ColorScale, HasTheColoursOfScalarMaterials)
{
    const std::pair<float, Color> stops[] = {{0.0f, Color(0, 0, 1)},     {0.125f, Color(0, 0.5f, 1)}, {0.25f, Color(0, 1, 1)},
                                             {0.375f, Color(0, 1, 0.5f)}, {0.5f, Color(0, 1, 0)},     {0.625f, Color(0.5f, 1, 0)},
                                             {0.75f, Color(1, 1, 0)},     {0.875f, Color(1, 0.5f, 0)}, {1.0f, Color(1, 0, 0)},
                                             {-1.0f, Color(0, 0, 1)},     {2.0f, Color(1, 0, 0)}};
    for (const auto& [value, color] : stops)
    {
        const Color actual = Host::ColorScale::ColorOf(value);
        EXPECT_FLOAT_EQ(actual.r, color.r) << value;
        EXPECT_FLOAT_EQ(actual.g, color.g) << value;
        EXPECT_FLOAT_EQ(actual.b, color.b) << value;
    }
}

TEST_F(SunStudyPicture, MomentsStandForTheirTimeWhileTheSunIsUp)
{
    std::string error;
    const auto day = Host::SunStudy::MomentsOf(*presentation, Times("2026-03-20T09:00+01:00/17:00/1h"), error);
    ASSERT_TRUE(day) << error;
    ASSERT_EQ(day->size(), 9u);
    EXPECT_EQ(day->front().hours, 0.5);
    EXPECT_EQ((*day)[1].hours, 1.0);
    EXPECT_EQ(day->back().hours, 0.5);
    EXPECT_EQ(day->front().toNext, 1.0);
    EXPECT_GT(day->front().towardSun.x, 0.0) << "in the east";
    EXPECT_LT(day->back().towardSun.x, 0.0) << "in the west";
    const auto night = Host::SunStudy::MomentsOf(*presentation, Times("2026-12-21T00:00+01:00/23:00/1h"), error);
    ASSERT_TRUE(night) << error;
    EXPECT_EQ(night->size(), 7u) << "from 09:00 to 15:00";
    EXPECT_EQ(night->front().toNext, 1.0);
    EXPECT_EQ(night->back().toNext, 0.0) << "the sun has gone down";
    wanted.sun.reset();
    Apply(*presentation, wanted);
    EXPECT_FALSE(Host::SunStudy::MomentsOf(*presentation, Times("2026-03-20T09:00Z/17:00/1h"), error));
    EXPECT_EQ(error, "sun: a study goes by time and place; set no direction");
}

TEST_F(SunStudyPicture, ASheetHoldsThePictureOfEachMomentAndLeavesEverythingAsItWas)
{
    wanted.sheet.title = "nowhere on the sheet";
    wanted.sheet.north = 0.0f;
    Apply(*presentation, wanted);
    const Picture before = Draw(*presentation);
    std::string error;
    std::vector<unsigned char> sheet;
    const SunStudyTimes times = Times("2026-12-21T06:00+01:00/12:00/2h");
    ASSERT_TRUE(Host::SunStudy::DrawSheet(*presentation, times, 402, 302, sheet, error)) << error;
    ASSERT_EQ(sheet.size(), 402u * 302u * 4u);
    EXPECT_EQ(presentation->GetSettings(), wanted);
    ExpectSame(Draw(*presentation), before, "after the sheet");
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    // Two by two, two pixels apart: pictures of 200 by 131, each that of its moment, with a strip of 19
    // below it.
    Host::PresentationSettings alone = wanted;
    alone.sheet.title.clear();
    const TemporaryFolder folder;
    for (int i = 0; i < 4; ++i)
    {
        SCOPED_TRACE(i);
        alone.sun->time = times.Moments()[static_cast<std::size_t>(i)].Text();
        alone.sheet.north = i == 0 ? std::optional<float>(0.0f) : std::nullopt;
        Apply(*presentation, alone);
        ASSERT_TRUE(presentation->SavePicture(folder.Path("a.png"), 200, 131, error)) << error;
        const std::vector<unsigned char> rows = LoadPicture(folder.Path("a.png")).GetRows();
        ASSERT_EQ(rows.size(), 200u * 131u * 4u);
        EXPECT_EQ(PartOf(sheet, 402, {i % 2 * 202, i / 2 * 152, 200, 131}), rows);
    }
    std::vector<unsigned char> again;
    Apply(*presentation, wanted);
    ASSERT_TRUE(Host::SunStudy::DrawSheet(*presentation, times, 402, 302, again, error)) << error;
    EXPECT_EQ(again, sheet);
}

TEST_F(SunStudyPicture, LabelsStandInStripsOfTheirOwnBelowThePictures)
{
    // What has a colour is no label.
    wanted.background = Color(1.0f, 0.0f, 0.0f);
    Apply(*presentation, wanted);
    std::string error;
    std::vector<unsigned char> sheet;
    ASSERT_TRUE(Host::SunStudy::DrawSheet(*presentation, Times("2026-12-21T08:00+01:00/11:00/1h"), 1202, 902, sheet, error))
        << error;
    // Two by two, four pixels apart: pictures of 599 by 422, with a strip of 27 below each.
    std::set<std::vector<unsigned char>> strips;
    for (int i = 0; i < 4; ++i)
    {
        SCOPED_TRACE(i);
        const std::vector<unsigned char> strip = PartOf(sheet, 1202, {i % 2 * 603, i / 2 * 453 + 422, 599, 27});
        int colored = 0;
        int inked = 0;
        int first = 599;
        int last = 0;
        for (std::size_t at = 0; at < strip.size(); at += 4)
        {
            const int x = static_cast<int>(at / 4 % 599);
            colored += strip[at] != strip[at + 1] || strip[at] != strip[at + 2] ? 1 : 0;
            if (strip[at] < 128)
            {
                ++inked;
                first = std::min(first, x);
                last = std::max(last, x);
            }
        }
        EXPECT_EQ(colored, 0);
        EXPECT_GT(inked, 300) << "the label";
        EXPECT_NEAR(first + last, 598, 6) << "in the middle";
        for (int x = 0; x < 599; ++x)
        {
            const auto top = static_cast<std::size_t>(x) * 4;
            const std::size_t bottom = top + std::size_t(26) * 599 * 4;
            ASSERT_EQ(strip[top], 255) << x;
            ASSERT_EQ(strip[bottom], 255) << x;
        }
        strips.insert(strip);
    }
    EXPECT_EQ(strips.size(), 4u) << "each with its time";
}

TEST_F(SunStudyPicture, ASheetWithoutRoomIsRefused)
{
    std::string error;
    std::vector<unsigned char> sheet;
    EXPECT_FALSE(Host::SunStudy::DrawSheet(*presentation, Times("2026-03-20T00:00Z/23:00/5m"), 640, 480, sheet, error));
    EXPECT_EQ(error, "277 pictures have no room on 640x480; ask for a larger sheet or a longer step");
    EXPECT_TRUE(sheet.empty());
}

TEST_F(SunStudyPicture, AMapOfTheGroundHasTheHoursOfTheRayCasterAndTheirColours)
{
    std::string error;
    const SunStudyTimes times = Times("2026-03-20T08:00+01:00/16:00/1h");
    Host::SunHoursMap map(*presentation);
    const Picture before = Draw(*presentation);
    ASSERT_TRUE(map.Show(times, "ground", error)) << error;
    EXPECT_EQ(map.GetMostHours(), 8.0);
    const auto moments = Host::SunStudy::MomentsOf(*presentation, times, error);
    ASSERT_TRUE(moments);
    const Host::RayCaster caster(presentation->GetScene(),
                                 [](const MeshNode& node, const Mesh& mesh)
                                 {
                                     const bool isClear = mesh.GetMaterial() && mesh.GetMaterial()->GetOpacity() < 1.0f;
                                     return isClear ? Host::RayCaster::Faces::None : Host::RayCaster::ShownFaces(node, mesh);
                                 });
    ASSERT_GT(map.GetPieces().size(), 5000u);
    std::set<float> found;
    int off = 0;
    for (const Host::SunHoursMap::Piece& piece : map.GetPieces())
    {
        double hours = 0.0;
        const QGM::Point3d from(piece.middle.place.x, piece.middle.place.y + 1e-4, piece.middle.place.z);
        for (const Host::SunMoment& moment : *moments)
        {
            hours += caster.IsBlocked(from, moment.towardSun) ? 0.0 : moment.hours;
        }
        off += std::abs(hours - piece.hours) > 1.0 ? 1 : 0;
        found.insert(piece.hours);
    }
    EXPECT_EQ(off, 0) << "more than a step from the ray caster";
    EXPECT_EQ(*found.begin(), 0.0f) << "under the house";
    EXPECT_EQ(*found.rbegin(), 8.0f);
    EXPECT_GE(found.size(), 6u);

    // From above, a piece in the open is red, which is the right end of the scale.
    ASSERT_TRUE(map.Frame(320.0f / 240.0f));
    map.Layout(320, 240);
    const Picture shown = Draw(*presentation);
    EXPECT_NE(shown, before);
    int red = 0;
    for (int y = 0; y < 240; ++y)
    {
        for (int x = 0; x < 320; ++x)
        {
            red += shown.At(x, y) == Pixel{255, 0, 0, 255} ? 1 : 0;
        }
    }
    EXPECT_GE(red, 5000) << "what is in the open has sun all the time";
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    map.Hide();
    Apply(*presentation, wanted);
    ExpectSame(Draw(*presentation), before, "without the map");
}

TEST_F(SunStudyPicture, AMapIsSeenBeyondTheDepthOfTheModel)
{
    wanted.view.eye = Vector(0, 10, 10);
    wanted.view.target = Vector(0, 0, 0);
    Apply(*presentation, wanted);
    std::string error;
    Host::SunHoursMap map(*presentation);
    ASSERT_TRUE(map.Show(Times("2026-06-21T11:00+01:00/13:00/1h"), "ground", error)) << error;
    ASSERT_TRUE(map.Frame(320.0f / 240.0f));
    const Picture shown = Draw(*presentation);
    const CameraNode& camera = presentation->GetCamera();
    const auto& m = camera.GetGlobal().GetTransf3d().m;
    const auto along = [&](const QGM::Point3d& point, int column)
    { return (point.x - m[0][3]) * m[0][column] + (point.y - m[1][3]) * m[1][column] + (point.z - m[2][3]) * m[2][column]; };
    std::vector<QGM::Point3d> places;
    for (const Host::SunHoursMap::Piece& piece : map.GetPieces())
    {
        // Beside the model, which hides the rest.
        if (piece.middle.place.x < -3.5)
        {
            places.push_back(piece.middle.place);
        }
    }
    ASSERT_GT(places.size(), 1000u);
    std::sort(places.begin(), places.end(),
              [&](const QGM::Point3d& left, const QGM::Point3d& right) { return along(left, 2) < along(right, 2); });
    // Near the far rim, and not in its last pixels.
    for (const std::size_t rank : {std::size_t(80), std::size_t(120), std::size_t(160)})
    {
        const QGM::Point3d& place = places[rank];
        const double scale = 120.0 / (-along(place, 2) * std::tan(double(camera.GetFOV())));
        const int x = static_cast<int>(std::floor(160.0 + along(place, 0) * scale));
        const int y = static_cast<int>(std::floor(120.0 + along(place, 1) * scale));
        EXPECT_EQ(shown.At(x, y), (Pixel{255, 0, 0, 255})) << rank << ": " << x << ", " << y;
    }
}

TEST_F(SunStudyPicture, AMapOfASplinterHasAnEnd)
{
    // So far from the origin numbers lie farther apart than its pieces are to be wide.
    auto* const box = dynamic_cast<MeshNode*>(presentation->FindNode("house/right"));
    ASSERT_TRUE(box);
    std::vector<Vector>& positions = box->GetMeshes().front()->GetRawMesh()->positions;
    std::fill(positions.begin(), positions.end(), Vector(5e37f, 0.0f, 0.0f));
    positions[1] = Vector(1e38f, 0.0f, 0.0f);
    positions[2] = Vector(7e37f, 1.0f, 0.0f);
    presentation->Refresh();
    std::string error;
    Host::SunHoursMap map(*presentation);
    EXPECT_TRUE(map.Show(Times("2026-03-20T12:00+01:00/13:00/1h"), "house/right", error)) << error;
    EXPECT_FALSE(map.GetPieces().empty());
}

TEST_F(SunStudyPicture, AMapOfANodeLiesOnItsFaces)
{
    std::string error;
    Host::SunHoursMap map(*presentation);
    EXPECT_FALSE(map.Show(Times("2026-03-20T08:00+01:00/16:00/1h"), "house/cellar", error));
    EXPECT_EQ(error, "there is no node 'house/cellar' to count the hours of sun on");
    EXPECT_TRUE(map.GetPieces().empty());
    ASSERT_TRUE(map.Show(Times("2026-03-20T08:00+01:00/16:00/1h"), "house/right", error)) << error;
    bool hasNorthFace = false;
    for (const Host::SunHoursMap::Piece& piece : map.GetPieces())
    {
        const double length = piece.middle.normal.length();
        ASSERT_NEAR(length, 1.0, 1e-9);
        if (piece.middle.normal.z < -0.99)
        {
            hasNorthFace = true;
            ASSERT_EQ(piece.hours, 0.0f) << "north has no sun in March";
        }
    }
    EXPECT_TRUE(hasNorthFace);
}

} // namespace OV::Test
