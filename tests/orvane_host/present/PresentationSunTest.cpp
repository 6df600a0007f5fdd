#include "tests/orvane_host/present/PresentationModels.h"

#include <cmath>
#include <utility>

namespace OV::Test
{

namespace
{

using Host::PresentationSettings;

constexpr Host::GeoPlace kBerlin{52.52f, 13.4f};
constexpr Host::GeoPlace kLongyearbyen{78.22f, 15.64f};

Host::SunSettings SunAt(const char* time, const std::optional<Host::GeoPlace>& place, std::optional<float> north = {})
{
    Host::SunSettings sun;
    sun.time = time;
    sun.place = place;
    sun.north = north;
    return sun;
}

class PresentationSun : public PresentationFixture
{
protected:
    PresentationSun() : PresentationFixture(160, 120), presentation(PresentBoxes()) {}

    const Host::SunState& SunOf(const std::optional<Host::SunSettings>& sun)
    {
        PresentationSettings wanted = presentation->GetSettings();
        wanted.sun = sun;
        Apply(*presentation, wanted);
        return presentation->GetSun();
    }

    /// The sheet alone, with an arrow.
    Picture Arrow(const std::optional<Host::SunSettings>& sun, float north, const Vector& eye, const Vector& up)
    {
        PresentationSettings wanted = presentation->GetSettings();
        wanted.sun = sun;
        wanted.sheet.north = north;
        wanted.view.eye = eye;
        wanted.view.target = Vector(0, 0, 0);
        wanted.view.up = up;
        Apply(*presentation, wanted);
        EXPECT_TRUE(presentation->Hide("house"));
        return Draw(*presentation);
    }

    std::unique_ptr<Host::Presentation> presentation;
};

} // namespace

TEST_F(PresentationSun, IsNoneWithoutSettings)
{
    const Host::SunState& sun = presentation->GetSun();
    EXPECT_FALSE(sun.direction);
    EXPECT_FALSE(sun.position);
    EXPECT_EQ(sun.note, "");
}

TEST_F(PresentationSun, ByDirectionIsThatDirectionOfLengthOne)
{
    Host::SunSettings settings;
    settings.direction = Vector(0.0f, 3.0f, 4.0f);
    settings.time = "whenever";
    EXPECT_EQ(SunOf(settings).direction, Vector(0.0f, 0.6f, 0.8f));
    EXPECT_FALSE(presentation->GetSun().position);
    EXPECT_FALSE(presentation->GetSun().north);
    settings.direction = Vector(2e38f, 2e38f, 0.0f);
    EXPECT_EQ(SunOf(settings).direction, Vector(std::sqrt(0.5f), std::sqrt(0.5f), 0.0f));
    settings.direction = Vector(0.0f, 0.0f, -1e-44f);
    EXPECT_EQ(SunOf(settings).direction, Vector(0.0f, 0.0f, -1.0f));
    EXPECT_FALSE(SunOf(std::nullopt).direction);
}

TEST_F(PresentationSun, ByTimeAndPlaceFollowsTheNorthOfTheModel)
{
    const Vector plain = SunOf(SunAt("2026-06-21T15:00+02:00", kBerlin)).direction.value();
    EXPECT_NEAR(plain.Magnitude(), 1.0f, 1e-6f);
    EXPECT_LT(plain.x, 0.0f) << "in the west";
    EXPECT_GT(plain.z, 0.0f) << "and the south";
    EXPECT_NEAR(presentation->GetSun().position.value().trueElevation, 53.98, 0.02);
    EXPECT_EQ(presentation->GetSun().north, 0.0f);
    EXPECT_EQ(presentation->GetSun().note, "");
    const Vector turned = SunOf(SunAt("2026-06-21T15:00+02:00", kBerlin, 90.0f)).direction.value();
    EXPECT_NEAR(turned.x, -plain.z, 1e-6f) << "north is where +X is";
    EXPECT_NEAR(turned.z, plain.x, 1e-6f);
    PresentationSettings standing = presentation->GetSettings();
    standing.sun->north.reset();
    standing.view.upAxis = Host::UpAxis::Z;
    Apply(*presentation, standing);
    const Vector up = presentation->GetSun().direction.value();
    EXPECT_EQ(up, Vector(plain.x, -plain.z, plain.y));
}

TEST_F(PresentationSun, BelowTheHorizonGivesNoLightAndALineThatSaysSo)
{
    const Host::SunState& night = SunOf(SunAt("2026-12-21T12:00+01:00", kLongyearbyen));
    EXPECT_FALSE(night.direction);
    EXPECT_EQ(night.note, "the sun is 11.7 degrees below the horizon at 2026-12-21T12:00+01:00: there is no direct "
                          "light");
    EXPECT_TRUE(SunOf(SunAt("2026-06-21T00:00+02:00", kLongyearbyen)).direction);
    EXPECT_EQ(presentation->GetSun().note, "");
}

TEST_F(PresentationSun, NeedsAPlaceFromSomewhere)
{
    SunOf(SunAt("2026-06-21T15:00+02:00", kBerlin));
    const Vector before = presentation->GetSun().direction.value();
    PresentationSettings wanted = presentation->GetSettings();
    wanted.sun->place.reset();
    std::string error;
    EXPECT_FALSE(presentation->Apply(wanted, error));
    EXPECT_EQ(error, "sun.place is missing, and the model's file tells none; it has to be a latitude and a longitude");
    EXPECT_EQ(presentation->GetSun().direction, before);
    EXPECT_TRUE(presentation->GetSettings().sun->place);
}

TEST_F(PresentationSun, TakesPlaceAndNorthFromTheFileWhereTheSettingsTellNone)
{
    NamedScene boxes = MakeBoxes();
    Host::ImportResult model;
    model.status = Host::ImportStatus::Done;
    model.scene = std::move(boxes.scene);
    model.nodes = std::move(boxes.nodes);
    model.report.place = Host::ImportedPlace{52.52, 13.4};
    model.report.north = 90.0;
    const Vector expected = SunOf(SunAt("2026-06-21T15:00+02:00", kBerlin, 90.0f)).direction.value();
    const Vector other = SunOf(SunAt("2026-06-21T15:00+02:00", kLongyearbyen, 10.0f)).direction.value();
    presentation = std::make_unique<Host::Presentation>(std::move(model));
    EXPECT_EQ(SunOf(SunAt("2026-06-21T15:00+02:00", std::nullopt)).direction, expected);
    EXPECT_EQ(presentation->GetSun().north, 90.0f);
    EXPECT_EQ(SunOf(SunAt("2026-06-21T15:00+02:00", kLongyearbyen, 10.0f)).direction, other);
}

TEST_F(PresentationSun, TurnsTheNorthArrowOfTheSheetToItsNorthInEveryView)
{
    const Vector above(0, 9, 0);
    const Vector away(0, 0, -1);
    const Picture forty = Arrow(std::nullopt, 40.0f, above, away);
    const Picture ten = Arrow(std::nullopt, 10.0f, above, away);
    EXPECT_NE(forty, ten);
    const auto sun = SunAt("2026-06-21T15:00+02:00", kBerlin, 40.0f);
    ExpectSame(Arrow(sun, 40.0f, above, away), forty, "from above it is the same");
    ExpectSame(Arrow(sun, 10.0f, above, away), forty, "the sun's north counts");
    // From the left, which looks to +X: what lies 40 degrees clockwise from -Z is 50 degrees to the left.
    const Picture left = Arrow(std::nullopt, -50.0f, Vector(-9, 3, 0), Vector(0, 1, 0));
    ExpectSame(Arrow(sun, 40.0f, Vector(-9, 3, 0), Vector(0, 1, 0)), left, "from the left");
    ExpectSame(Arrow(sun, 40.0f, Vector(-9, 0, 0), Vector(0, 1, 0)), left, "from the left, level");
    ExpectSame(Arrow(sun, 40.0f, above, Vector(1, 0, 0)), left, "from above, with +X up");
    Host::SunSettings direct;
    direct.direction = Vector(1, 1, 1);
    direct.north = 40.0f;
    ExpectSame(Arrow(direct, 10.0f, above, away), ten, "a sun by direction knows no north");
}

} // namespace OV::Test
