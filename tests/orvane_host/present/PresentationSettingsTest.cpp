#include "orvane_host/present/PresentationSettings.h"

#include "orvane_host/present/detail/SettingsFields.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <random>
#include <set>
#include <string>
#include <vector>

using namespace OV;
using namespace OV::Host;
using ::testing::HasSubstr;

namespace
{

using Json = nlohmann::json;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

float Above(float number)
{
    return std::nextafter(number, kInfinity);
}

float Below(float number)
{
    return std::nextafter(number, -kInfinity);
}

/// Settings in which everything that may be none is there, so that JSON names every field.
PresentationSettings Whole()
{
    PresentationSettings settings;
    settings.section.planes.resize(1);
    settings.section.outlineWidth = 0.5f;
    settings.fog = FogRange{1.0f, 10.0f};
    settings.ground.emplace().height = 1.0f;
    settings.lines.emplace().dash = 4.0f;
    settings.edges.emplace();
    settings.sun.emplace().direction = Vector(0.0f, 1.0f, 0.0f);
    settings.sun->place.emplace();
    settings.sun->north = 0.0f;
    settings.occlusionLook.radius = 0.5f;
    settings.shadows.emplace();
    settings.samples = 4;
    settings.sheet.north = 0.0f;
    settings.view.eye = Vector(1.0f, 2.0f, 3.0f);
    settings.view.target = Vector(0.0f, 0.0f, 0.0f);
    return settings;
}

/// A change of one field of Whole() and what JSON then holds there.
struct Change
{
    const char* field;
    void (*make)(PresentationSettings& settings);
    const char* json;
};

const Change kChanges[] = {
    {"look", [](auto& s) { s.look = Look::VertexColor; }, "\"vertex-color\""},
    {"cullBacks", [](auto& s) { s.cullBacks = false; }, "false"},
    {"section.planes[0].normal", [](auto& s) { s.section.planes[0].normal = Vector(1, 0, -2.5f); },
     "[1.0, 0.0, -2.5]"},
    {"section.planes[0].position", [](auto& s) { s.section.planes[0].position.y = 0.1f; }, "[0.0, 0.1, 0.0]"},
    {"section.fill", [](auto& s) { s.section.fill = Color(1, 0, 0); }, "\"#FF0000\""},
    {"section.outlineWidth", [](auto& s) { s.section.outlineWidth = 0.0f; }, "0.0"},
    {"section.outlineColor", [](auto& s) { s.section.outlineColor = Color(0, 0, 1, 0); }, "\"#0000FF00\""},
    {"editPath",
     [](auto& s)
     {
         s.editPath = "house/d\xC3\xA4"
                      "ch";
     },
     "\"house/d\xC3\xA4"
     "ch\""},
    {"background", [](auto& s) { s.background = Color(0.3f, 0, 0); }, "[0.3, 0.0, 0.0, 1.0]"},
    {"sky", [](auto& s) { s.sky = true; }, "true"},
    {"fog.start", [](auto& s) { s.fog->start = 2.0f; }, "2.0"},
    {"fog.end", [](auto& s) { s.fog->end = 1e7f; }, "1e+07"},
    {"surroundings", [](auto& s) { s.surroundings = "sky"; }, "\"sky\""},
    {"ground.kind", [](auto& s) { s.ground->kind = GroundKind::ShadowCatcher; }, "\"shadow\""},
    {"ground.color", [](auto& s) { s.ground->color = Color(0, 1, 0); }, "\"#00FF00\""},
    {"ground.height", [](auto& s) { s.ground->height = -0.5f; }, "-0.5"},
    {"lines.crease", [](auto& s) { s.lines->crease = 12.5f; }, "12.5"},
    {"lines.width", [](auto& s) { s.lines->width = 2.0f; }, "2.0"},
    {"lines.color", [](auto& s) { s.lines->color = Color(0, 1, 0); }, "\"#00FF00\""},
    {"lines.dash", [](auto& s) { s.lines->dash = 3.0f; }, "3.0"},
    {"lines.offset", [](auto& s) { s.lines->offset = -1.0f; }, "-1.0"},
    {"lines.hidden", [](auto& s) { s.lines->hidden = HiddenLines::Dashed; }, "\"dashed\""},
    {"edges.weight", [](auto& s) { s.edges->weight = 0.25f; }, "0.25"},
    {"edges.color", [](auto& s) { s.edges->color = Color(0, 1, 1); }, "\"#00FFFF\""},
    {"edges.identity", [](auto& s) { s.edges->identity = Identity::Object; }, "\"object\""},
    {"occlusion", [](auto& s) { s.occlusion = true; }, "true"},
    {"occlusionLook.kind", [](auto& s) { s.occlusionLook.kind = OcclusionKind::Spiral; }, "\"spiral\""},
    {"occlusionLook.radius", [](auto& s) { s.occlusionLook.radius = 2.0f; }, "2.0"},
    {"occlusionLook.strength", [](auto& s) { s.occlusionLook.strength = 1.5f; }, "1.5"},
    {"sun.direction", [](auto& s) { s.sun->direction->x = -2.5f; }, "[-2.5, 1.0, 0.0]"},
    {"sun.time", [](auto& s) { s.sun->time = "2026-06-21T15:00+02:00"; }, "\"2026-06-21T15:00+02:00\""},
    {"sun.place.latitude", [](auto& s) { s.sun->place->latitude = 52.52f; }, "52.52"},
    {"sun.place.longitude", [](auto& s) { s.sun->place->longitude = -180.0f; }, "-180.0"},
    {"sun.north", [](auto& s) { s.sun->north = 30.0f; }, "30.0"},
    {"shadows.soft", [](auto& s) { s.shadows->soft = true; }, "true"},
    {"shadows.sunWidth", [](auto& s) { s.shadows->sunWidth = 20.0f; }, "20.0"},
    {"shadows.darkness", [](auto& s) { s.shadows->darkness = 1.0f; }, "1.0"},
    {"shadows.clippedCasts", [](auto& s) { s.shadows->clippedCasts = true; }, "true"},
    {"antialiasing", [](auto& s) { s.antialiasing = Antialiasing::Supersampling; }, "\"ssaa\""},
    {"samples", [](auto& s) { s.samples = 16; }, "16"},
    {"sheet.title", [](auto& s) { s.sheet.title = "\"A\"\n"; }, "\"\\\"A\\\"\\n\""},
    {"sheet.scaleBar", [](auto& s) { s.sheet.scaleBar = true; }, "true"},
    {"sheet.north", [](auto& s) { s.sheet.north = -450.0f; }, "-450.0"},
    {"sheet.watermark", [](auto& s) { s.sheet.watermark = "logo.png"; }, "\"logo.png\""},
    {"view.named", [](auto& s) { s.view.named = NamedView::Top; }, "\"top\""},
    {"view.eye", [](auto& s) { s.view.eye->z = 1e-20f; }, "[1.0, 2.0, 1e-20]"},
    {"view.target", [](auto& s) { s.view.target->x = -1e15f; }, "[-1e+15, 0.0, 0.0]"},
    {"view.up", [](auto& s) { s.view.up = Vector(0, 0, 1); }, "[0.0, 0.0, 1.0]"},
    {"view.fov", [](auto& s) { s.view.fov = 60.0f; }, "60.0"},
    {"view.orthographic", [](auto& s) { s.view.orthographic = true; }, "true"},
    {"view.upAxis", [](auto& s) { s.view.upAxis = UpAxis::Z; }, "\"z\""},
    {"glass.order", [](auto& s) { s.glass.order = GlassOrder::Weighted; }, "\"weighted\""},
    {"glass.layers", [](auto& s) { s.glass.layers = 64; }, "64"},
    {"batches.use", [](auto& s) { s.batches.use = BatchUse::Off; }, "\"off\""},
    {"batches.smallestPixels", [](auto& s) { s.batches.smallestPixels = 1.5f; }, "1.5"},
};

/// What may be none, from Whole().
const Change kRemovals[] = {
    {"section.planes", [](auto& s) { s.section.planes.clear(); }, "[]"},
    {"section.fill", [](auto& s) { s.section.fill.reset(); }, "null"},
    {"section.outlineWidth", [](auto& s) { s.section.outlineWidth.reset(); }, "null"},
    {"fog", [](auto& s) { s.fog.reset(); }, "null"},
    {"ground", [](auto& s) { s.ground.reset(); }, "null"},
    {"ground.height", [](auto& s) { s.ground->height.reset(); }, "null"},
    {"lines", [](auto& s) { s.lines.reset(); }, "null"},
    {"lines.dash", [](auto& s) { s.lines->dash.reset(); }, "null"},
    {"edges", [](auto& s) { s.edges.reset(); }, "null"},
    {"sun", [](auto& s) { s.sun.reset(); }, "null"},
    {"sun.direction",
     [](auto& s)
     {
         s.sun->direction.reset();
         s.sun->time = "2026-06-21T15:00Z";
     },
     "null"},
    {"shadows", [](auto& s) { s.shadows.reset(); }, "null"},
    {"sun.place", [](auto& s) { s.sun->place.reset(); }, "null"},
    {"sun.north", [](auto& s) { s.sun->north.reset(); }, "null"},
    {"samples", [](auto& s) { s.samples.reset(); }, "null"},
    {"sheet.north", [](auto& s) { s.sheet.north.reset(); }, "null"},
    {"view.eye", [](auto& s) { s.view.eye.reset(); }, "null"},
    {"view.target", [](auto& s) { s.view.target.reset(); }, "null"},
};

/// The fields of a document by path; vectors and colours are one field.
void Flatten(const Json& json, const std::string& path, std::vector<std::pair<std::string, Json>>& fields)
{
    const bool isList = json.is_array() && !json.empty() && json[0].is_object();
    if (!json.is_object() && !isList)
    {
        fields.emplace_back(path, json);
        return;
    }
    for (const auto& item : json.items())
    {
        const std::string name = isList ? "[" + item.key() + "]" : (path.empty() ? "" : ".") + item.key();
        Flatten(item.value(), path + name, fields);
    }
}

std::vector<std::pair<std::string, Json>> FieldsOf(const PresentationSettings& settings)
{
    std::vector<std::pair<std::string, Json>> fields;
    Flatten(Json::parse(settings.ToJSON()), "", fields);
    return fields;
}

Json FieldOf(const PresentationSettings& settings, const std::string& path)
{
    for (const auto& [name, value] : FieldsOf(settings))
    {
        if (name == path)
        {
            return value;
        }
    }
    return Json("there is none");
}

PresentationSettings Read(const std::string& text)
{
    std::string error = "untouched";
    const auto settings = PresentationSettings::FromJSON(text, error);
    EXPECT_EQ(error, "untouched");
    EXPECT_TRUE(settings.has_value()) << text;
    return settings.value_or(PresentationSettings());
}

/// The sentence that a text is refused with, checked to be one line of printable characters.
std::string Refusal(const std::string& text)
{
    std::string error;
    EXPECT_FALSE(PresentationSettings::FromJSON(text, error).has_value()) << text.substr(0, 200);
    EXPECT_FALSE(error.empty());
    EXPECT_LT(error.size(), 400u) << error;
    for (const char c : error)
    {
        EXPECT_TRUE(c >= ' ' && c <= '~') << error;
    }
    return error;
}

template <typename Settings>
int CountNamed()
{
    int count = 0;
    Detail::Fields<Settings>::Visit([&](const char*, auto, const Detail::Limits&) { ++count; });
    return count;
}

} // namespace

// A field that is added to one of the structs does not compile here until it is counted, and then
// has to be named in JSON and stand in the tables above.
TEST(PresentationSettings, EveryFieldIsNamed)
{
    [[maybe_unused]] const auto& [start, end] = FogRange();
    [[maybe_unused]] const auto& [normal, position] = ClipPlane();
    [[maybe_unused]] const auto& [planes, fill, outlineWidth, outlineColor] = SectionSettings();
    [[maybe_unused]] const auto& [crease, width, color, dash, offset, hidden] = LineSettings();
    [[maybe_unused]] const auto& [weight, edgeColor, identity] = EdgeLook();
    [[maybe_unused]] const auto& [kind, groundColor, height] = GroundSettings();
    [[maybe_unused]] const auto& [occlusionKind, radius, strength] = OcclusionLook();
    [[maybe_unused]] const auto& [latitude, longitude] = GeoPlace();
    [[maybe_unused]] const auto& [direction, time, place, sunNorth] = SunSettings();
    [[maybe_unused]] const auto& [soft, sunWidth, darkness, clippedCasts] = ShadowSettings();
    [[maybe_unused]] const auto& [named, eye, target, up, fov, orthographic, upAxis] = ViewSettings();
    [[maybe_unused]] const auto& [title, scaleBar, north, watermark] = SheetSettings();
    [[maybe_unused]] const auto& [order, layers] = GlassSettings();
    [[maybe_unused]] const auto& [look, cullBacks, glass, section, editPath, background, sky, fog, surroundings, ground,
                                  lines, edges, occlusion, occlusionLook, sun, shadows, antialiasing, samples, sheet,
                                  view, batches] = PresentationSettings();
    [[maybe_unused]] const auto& [use, smallestPixels] = BatchSettings();
    EXPECT_EQ(CountNamed<FogRange>(), 2);
    EXPECT_EQ(CountNamed<ClipPlane>(), 2);
    EXPECT_EQ(CountNamed<SectionSettings>(), 4);
    EXPECT_EQ(CountNamed<LineSettings>(), 6);
    EXPECT_EQ(CountNamed<EdgeLook>(), 3);
    EXPECT_EQ(CountNamed<GroundSettings>(), 3);
    EXPECT_EQ(CountNamed<OcclusionLook>(), 3);
    EXPECT_EQ(CountNamed<GeoPlace>(), 2);
    EXPECT_EQ(CountNamed<SunSettings>(), 4);
    EXPECT_EQ(CountNamed<ShadowSettings>(), 4);
    EXPECT_EQ(CountNamed<ViewSettings>(), 7);
    EXPECT_EQ(CountNamed<SheetSettings>(), 4);
    EXPECT_EQ(CountNamed<BatchSettings>(), 2);
    EXPECT_EQ(CountNamed<GlassSettings>(), 2);
    EXPECT_EQ(CountNamed<PresentationSettings>(), 21);
}

TEST(PresentationSettings, JSONNamesTheFieldsOfTheTable)
{
    std::multiset<std::string> expected = {"version"};
    for (const Change& change : kChanges)
    {
        expected.insert(change.field);
    }
    std::multiset<std::string> named;
    for (const auto& field : FieldsOf(Whole()))
    {
        named.insert(field.first);
    }
    EXPECT_EQ(named, expected);
}

TEST(PresentationSettings, EveryFieldComesBack)
{
    const PresentationSettings whole = Whole();
    ASSERT_EQ(whole.Trouble(), "");
    ASSERT_EQ(Read(whole.ToJSON()), whole);
    for (const Change& change : kChanges)
    {
        SCOPED_TRACE(change.field);
        PresentationSettings changed = whole;
        change.make(changed);
        EXPECT_EQ(changed.Trouble(), "");
        EXPECT_NE(changed, whole);
        EXPECT_EQ(FieldOf(changed, change.field), Json::parse(change.json));
        EXPECT_THAT(changed.ToJSON(), HasSubstr(std::string(": ") + change.json));
        EXPECT_EQ(Read(changed.ToJSON()), changed);
        const auto before = FieldsOf(whole);
        const auto after = FieldsOf(changed);
        ASSERT_EQ(before.size(), after.size());
        for (std::size_t i = 0; i < before.size(); ++i)
        {
            EXPECT_EQ(before[i] == after[i], before[i].first != change.field) << before[i].first;
        }
    }
}

TEST(PresentationSettings, WhatIsNoneComesBackAsNone)
{
    const PresentationSettings whole = Whole();
    for (const Change& removal : kRemovals)
    {
        SCOPED_TRACE(removal.field);
        PresentationSettings removed = whole;
        removal.make(removed);
        EXPECT_NE(removed, whole);
        EXPECT_EQ(FieldOf(removed, removal.field), Json::parse(removal.json));
        EXPECT_EQ(Read(removed.ToJSON()), removed);
    }
}

TEST(PresentationSettings, EveryEnumeratorComesBackByItsName)
{
    PresentationSettings settings = Whole();
    settings.section.planes.clear();
    std::set<std::string> texts;
    for (int i = 0; i < 7; ++i)
    {
        settings.look = static_cast<Look>(i % 6);
        settings.view.named = static_cast<NamedView>(i);
        settings.antialiasing = static_cast<Antialiasing>(i % 4);
        settings.edges->identity = static_cast<Identity>(i % 2);
        settings.view.upAxis = static_cast<UpAxis>(i % 2);
        settings.batches.use = static_cast<BatchUse>(i % 3);
        settings.ground->kind = static_cast<GroundKind>(i % 2);
        settings.lines->hidden = static_cast<HiddenLines>(i % 2);
        EXPECT_EQ(settings.Trouble(), "");
        EXPECT_EQ(Read(settings.ToJSON()), settings) << i;
        texts.insert(settings.ToJSON());
    }
    EXPECT_EQ(texts.size(), 7u);
}

TEST(PresentationSettings, FloatsComeBackBitForBit)
{
    std::mt19937 random(7);
    PresentationSettings settings;
    settings.lines.emplace();
    for (int i = 0; i < 20000; ++i)
    {
        const std::uint32_t bits = random();
        float number = 0.0f;
        std::memcpy(&number, &bits, sizeof number);
        if (!std::isfinite(number))
        {
            continue;
        }
        settings.lines->offset = number;
        settings.background.r = std::fabs(number) <= 1.0f ? std::fabs(number) : 0.5f;
        const PresentationSettings back = Read(settings.ToJSON());
        ASSERT_EQ(std::memcmp(&back.lines->offset, &number, sizeof number), 0) << number;
        ASSERT_EQ(back.background.r, settings.background.r);
    }
}

TEST(PresentationSettings, EveryByteOfAColourIsWrittenAsHexadecimal)
{
    PresentationSettings settings;
    for (int byte = 0; byte < 256; ++byte)
    {
        const auto channel = static_cast<unsigned char>(byte);
        settings.background = Color::GetRGBA(channel, static_cast<unsigned char>(255 - byte), 0, channel);
        const std::string text = FieldOf(settings, "background").get<std::string>();
        EXPECT_EQ(text.size(), byte == 255 ? 7u : 9u) << text;
        EXPECT_EQ(Read(settings.ToJSON()), settings) << text;
    }
}

TEST(PresentationSettings, NearVectorsDiffer)
{
    PresentationSettings left = Whole();
    PresentationSettings right = left;
    right.view.eye->x = Above(right.view.eye->x);
    EXPECT_NE(left, right);
    left = right;
    left.section.planes[0].position.x = 1e-7f;
    EXPECT_NE(left, right);
}

TEST(PresentationSettings, DefaultsAreRight)
{
    EXPECT_EQ(PresentationSettings().Trouble(), "");
    EXPECT_EQ(Read("{}"), PresentationSettings());
    EXPECT_EQ(Read("{\"version\": 1}"), PresentationSettings());
    PresentationSettings lines;
    lines.lines.emplace();
    EXPECT_EQ(Read("{\"lines\": {}}"), lines);
    EXPECT_EQ(Read("\xEF\xBB\xBF{}"), PresentationSettings());
}

namespace
{

/// A number, what it may be at least and at most, and what it may not be.
struct Bound
{
    const char* field;
    void (*set)(PresentationSettings& settings, float number);
    std::vector<float> inside;
    std::vector<float> outside;
    const char* told;
};

const float kLeast = std::numeric_limits<float>::denorm_min();
const float kMost = std::numeric_limits<float>::max();

std::vector<Bound> Bounds()
{
    const auto share = [](const char* field, void (*set)(PresentationSettings&, float)) {
        return Bound{field, set, {0.0f, -0.0f, 1.0f}, {-kLeast, Above(1.0f)}, "0 to 1"};
    };
    const auto place = [](const char* field, void (*set)(PresentationSettings&, float)) {
        return Bound{field, set, {-1e15f, 1e15f}, {Below(-1e15f), Above(1e15f)}, "-1e+15 to 1e+15"};
    };
    const auto finite = [](const char* field, void (*set)(PresentationSettings&, float)) {
        return Bound{field, set, {-kMost, kMost}, {}, "a finite number"};
    };
    return {
        share("section.fill", [](auto& s, float n) { s.section.fill->r = n; }),
        share("section.outlineColor", [](auto& s, float n) { s.section.outlineColor.g = n; }),
        share("background", [](auto& s, float n) { s.background.b = n; }),
        share("background", [](auto& s, float n) { s.background.a = n; }),
        share("lines.color", [](auto& s, float n) { s.lines->color.r = n; }),
        share("edges.color", [](auto& s, float n) { s.edges->color.g = n; }),
        share("edges.weight", [](auto& s, float n) { s.edges->weight = n; }),
        share("shadows.darkness", [](auto& s, float n) { s.shadows->darkness = n; }),
        {"shadows.sunWidth",
         [](auto& s, float n) { s.shadows->sunWidth = n; },
         {kLeast, 20.0f},
         {0.0f, -0.0f, Above(20.0f)},
         "above 0 and at most 20"},
        place("view.eye", [](auto& s, float n) { s.view.eye->x = n; }),
        place("view.target", [](auto& s, float n) { s.view.target->z = n; }),
        place("ground.height", [](auto& s, float n) { s.ground->height = n; }),
        share("ground.color", [](auto& s, float n) { s.ground->color.g = n; }),
        finite("section.planes[0].position", [](auto& s, float n) { s.section.planes[0].position.y = n; }),
        finite("lines.offset", [](auto& s, float n) { s.lines->offset = n; }),
        finite("sheet.north", [](auto& s, float n) { s.sheet.north = n; }),
        finite("sun.north", [](auto& s, float n) { s.sun->north = n; }),
        {"sun.direction",
         [](auto& s, float n) { s.sun->direction = Vector(0, 0, n); },
         {kLeast, -kMost},
         {0.0f},
         ""},
        {"sun.place.latitude",
         [](auto& s, float n) { s.sun->place->latitude = n; },
         {-90.0f, 90.0f},
         {Below(-90.0f), Above(90.0f)},
         "-90 to 90"},
        {"sun.place.longitude",
         [](auto& s, float n) { s.sun->place->longitude = n; },
         {-180.0f, 180.0f},
         {Below(-180.0f), Above(180.0f)},
         "-180 to 180"},
        {"section.planes[0].normal",
         [](auto& s, float n) { s.section.planes[0].normal = Vector(n, 0, 0); },
         {kLeast, -kLeast, kMost},
         {0.0f},
         ""},
        {"view.up", [](auto& s, float n) { s.view.up = Vector(0, n, 0); }, {kLeast, kMost}, {0.0f}, ""},
        {"section.outlineWidth",
         [](auto& s, float n) { s.section.outlineWidth = n; },
         {0.0f, kMost},
         {-kLeast},
         "0 or more"},
        {"fog.start", [](auto& s, float n) { s.fog->start = n; }, {0.0f}, {-kLeast}, "0 or more"},
        {"fog.end", [](auto& s, float n) { s.fog->end = n; }, {Above(1.0f), kMost}, {1.0f, 0.0f}, ""},
        {"lines.crease",
         [](auto& s, float n) { s.lines->crease = n; },
         {0.0f, 180.0f},
         {-kLeast, Above(180.0f)},
         "0 to 180"},
        {"lines.width",
         [](auto& s, float n) { s.lines->width = n; },
         {kLeast, 100.0f},
         {0.0f, Above(100.0f)},
         "above 0 and at most 100"},
        {"lines.dash", [](auto& s, float n) { s.lines->dash = n; }, {kLeast, kMost}, {0.0f}, "above 0"},
        {"view.fov",
         [](auto& s, float n) { s.view.fov = n; },
         {1.0f, 170.0f},
         {Below(1.0f), Above(170.0f)},
         "1 to 170"},
    };
}

/// @param field "" for settings without trouble.
void ExpectTrouble(const PresentationSettings& settings, const std::string& field,
                   const std::string& told = "")
{
    const std::string trouble = settings.Trouble();
    if (field.empty())
    {
        EXPECT_EQ(trouble, "");
        return;
    }
    EXPECT_EQ(trouble.rfind(field + " ", 0), 0u) << trouble;
    EXPECT_THAT(trouble, HasSubstr("has to be " + told));
    EXPECT_EQ(trouble.find('\n'), std::string::npos);
}

} // namespace

TEST(PresentationSettings, NumbersEndAtTheirBounds)
{
    for (const Bound& bound : Bounds())
    {
        SCOPED_TRACE(bound.field);
        PresentationSettings settings = Whole();
        for (const float number : bound.inside)
        {
            SCOPED_TRACE(number);
            bound.set(settings, number);
            ExpectTrouble(settings, "");
            EXPECT_EQ(Read(settings.ToJSON()), settings);
        }
        for (const float number : bound.outside)
        {
            SCOPED_TRACE(number);
            bound.set(settings, number);
            ExpectTrouble(settings, bound.field, bound.told);
            EXPECT_EQ(Refusal(settings.ToJSON()), settings.Trouble());
        }
        for (const float number : {kNaN, kInfinity, -kInfinity})
        {
            SCOPED_TRACE(number);
            bound.set(settings, number);
            ExpectTrouble(settings, bound.field);
            Refusal(settings.ToJSON());
        }
    }
}

TEST(PresentationSettings, SamplesAreAsManyAsTheToolTakes)
{
    PresentationSettings settings;
    for (const int samples : {0, 64})
    {
        settings.samples = samples;
        ExpectTrouble(settings, "");
    }
    for (const int samples : {-1, 65, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
    {
        settings.samples = samples;
        ExpectTrouble(settings, "samples", "0 to 64");
    }
    for (const char* number : {"-1", "65", "4294967300", "18446744073709551615", "-9223372036854775808"})
    {
        EXPECT_THAT(Refusal(std::string("{\"samples\": ") + number + "}"), HasSubstr("samples is "))
            << number;
    }
}

TEST(PresentationSettings, EnumeratorsAreOfTheirEnumeration)
{
    const std::pair<const char*, void (*)(PresentationSettings&, int)> enumerations[] = {
        {"look", [](auto& s, int n) { s.look = static_cast<Look>(n); }},
        {"edges.identity", [](auto& s, int n) { s.edges->identity = static_cast<Identity>(n); }},
        {"antialiasing", [](auto& s, int n) { s.antialiasing = static_cast<Antialiasing>(n); }},
        {"view.named", [](auto& s, int n) { s.view.named = static_cast<NamedView>(n); }},
        {"view.upAxis", [](auto& s, int n) { s.view.upAxis = static_cast<UpAxis>(n); }},
        {"ground.kind", [](auto& s, int n) { s.ground->kind = static_cast<GroundKind>(n); }},
        {"lines.hidden", [](auto& s, int n) { s.lines->hidden = static_cast<HiddenLines>(n); }},
    };
    for (const auto& [field, set] : enumerations)
    {
        for (const int number : {-1, 7, 1000000})
        {
            PresentationSettings settings = Whole();
            set(settings, number);
            ExpectTrouble(settings, field, "one of ");
            Refusal(settings.ToJSON());
        }
    }
}

TEST(PresentationSettings, TextsAreUtf8OfAnEnd)
{
    const std::pair<const char*, std::string& (*)(PresentationSettings&)> texts[] = {
        {"editPath", [](auto& s) -> std::string& { return s.editPath; }},
        {"sheet.title", [](auto& s) -> std::string& { return s.sheet.title; }},
        {"sun.time",
         [](auto& s) -> std::string&
         {
             // With a direction any text may stay set.
             s.sun = SunSettings{Vector(0, 1, 0), s.sun ? s.sun->time : std::string(), {}, {}};
             return s.sun->time;
         }},
        {"sheet.watermark", [](auto& s) -> std::string& { return s.sheet.watermark; }},
    };
    for (const auto& [field, of] : texts)
    {
        SCOPED_TRACE(field);
        PresentationSettings settings;
        of(settings) = std::string(PresentationSettings::MostTextBytes, 'x');
        ExpectTrouble(settings, "");
        of(settings) += 'x';
        ExpectTrouble(settings, field, "at most 4096");
        EXPECT_EQ(Refusal(settings.ToJSON()), settings.Trouble());
        for (const char* wrong : {"\xC3", "\xFF", "\xC0\x80", "\xED\xA0\x80", "\xF5\x80\x80\x80"})
        {
            of(settings) = wrong;
            ExpectTrouble(settings, field, "UTF-8");
            EXPECT_FALSE(settings.ToJSON().empty());
        }
        of(settings) = std::string("a\0b", 3);
        ExpectTrouble(settings, field, "without");
        EXPECT_EQ(Refusal(settings.ToJSON()), settings.Trouble());
    }
}

TEST(PresentationSettings, FieldsThatContradictEachOtherAreTrouble)
{
    PresentationSettings settings = Whole();
    settings.section.planes.resize(PresentationSettings::MostClipPlanes);
    ExpectTrouble(settings, "");
    settings.section.planes.resize(PresentationSettings::MostClipPlanes + 1);
    EXPECT_EQ(settings.Trouble(), "section.planes holds 7; there are at most 6");

    settings = Whole();
    settings.look = Look::Crosshatch;
    ExpectTrouble(settings, "section.planes", "empty");
    settings.section.planes.clear();
    ExpectTrouble(settings, "");

    settings = Whole();
    settings.view.target = settings.view.eye;
    ExpectTrouble(settings, "view.eye", "elsewhere");
    settings.view.target->y = Above(settings.view.target->y);
    ExpectTrouble(settings, "");
    settings.view.eye.reset();
    ExpectTrouble(settings, "");

    settings.sky = true;
    ExpectTrouble(settings, "");
    settings.sheet.watermark = "logo.png";
    ExpectTrouble(settings, "sheet.watermark", "empty");
    settings.sky = false;
    ExpectTrouble(settings, "");
}

TEST(PresentationSettings, ASunNeedsADirectionOrATime)
{
    PresentationSettings settings;
    settings.sun.emplace();
    EXPECT_EQ(settings.Trouble(), "sun.time is \"\"; it has to be a date and time with an offset, such as "
                                  "2026-06-21T15:00+02:00, unless there is sun.direction");
    settings.sun->time = "2026-02-29T12:00Z";
    EXPECT_EQ(settings.Trouble(), "sun.time is \"2026-02-29T12:00Z\"; the day has to be 01 to 28 in that month");
    settings.sun->direction = Vector(0.0f, 1.0f, 0.0f);
    EXPECT_EQ(settings.Trouble(), "");
    settings.sun->direction.reset();
    settings.sun->time = "2026-02-28T12:00Z";
    EXPECT_EQ(settings.Trouble(), "");
    EXPECT_EQ(Refusal("{\"sun\": {\"time\": \"noon\"}}"),
              "sun.time is \"noon\"; it has to be a date and time with an offset, such as 2026-06-21T15:00+02:00");
    EXPECT_EQ(Refusal("{\"sun\": {\"place\": [1, 2]}}"), "sun.place is a list; it has to be an object");
}

TEST(PresentationSettings, UnknownFieldsAreNamedWithTheirPath)
{
    const std::pair<const char*, const char*> cases[] = {
        {"{\"colour\": 1}", "\"colour\""},
        {"{\"Look\": \"basic\"}", "\"Look\""},
        {"{\"section\": {\"plane\": []}}", "\"section.plane\""},
        {"{\"section\": {\"planes\": [{}, {\"normals\": 1}]}}", "\"section.planes[1].normals\""},
        {"{\"fog\": {\"end\": 1, \"far\": 2}}", "\"fog.far\""},
        {"{\"lines\": {\"fog\": {}}}", "\"lines.fog\""},
        {"{\"edges\": {\"\": 1}}", "\"edges.\""},
        {"{\"sheet\": {\"version\": 1}}", "\"sheet.version\""},
        {"{\"view\": {\"a\\nb\": 1}}", "\"view.a\\nb\""},
        {"{\"\\u00e4\": 1}", "\"\\u00e4\""},
    };
    for (const auto& [text, path] : cases)
    {
        EXPECT_EQ(Refusal(text), std::string("there is no field ") + path);
    }
}

TEST(PresentationSettings, WrongKindsAreNamedWithTheirPath)
{
    const std::pair<const char*, const char*> cases[] = {
        {"[]", "the whole of the settings is a list; it has to be an object"},
        {"3", "the whole of the settings is a number; it has to be an object"},
        {"null", "the whole of the settings is null; it has to be an object"},
        {"{\"version\": \"1\"}", "version is a text; it has to be a whole number"},
        {"{\"version\": 2, \"colour\": 1}", "version is 2; only 1 can be read"},
        {"{\"version\": 0}", "version is 0; only 1 can be read"},
        {"{\"look\": 1}",
         "look is a number; it has to be one of basic, advanced, phong, crosshatch, monotone, vertex-color"},
        {"{\"look\": \"Basic\"}",
         "look is \"Basic\"; it has to be one of basic, advanced, phong, crosshatch, monotone, vertex-color"},
        {"{\"antialiasing\": \"\"}", "antialiasing is \"\"; it has to be one of none, msaa, fxaa, ssaa"},
        {"{\"edges\": {\"identity\": null}}", "edges.identity is null; it has to be one of object, group"},
        {"{\"view\": {\"upAxis\": \"x\"}}", "view.upAxis is \"x\"; it has to be one of y, z"},
        {"{\"view\": {\"named\": true}}",
         "view.named is a truth value; it has to be one of iso, front, back, left, right, top, bottom"},
        {"{\"sky\": 1}", "sky is a number; it has to be true or false"},
        {"{\"sky\": null}", "sky is null; it has to be true or false"},
        {"{\"view\": {\"fov\": \"35\"}}", "view.fov is a text; it has to be a number"},
        {"{\"samples\": 4.5}", "samples is a number; it has to be a whole number"},
        {"{\"editPath\": null}", "editPath is null; it has to be a text"},
        {"{\"section\": []}", "section is a list; it has to be an object"},
        {"{\"section\": {\"planes\": {}}}", "section.planes is an object; it has to be a list"},
        {"{\"section\": {\"planes\": [1]}}", "section.planes[0] is a number; it has to be an object"},
        {"{\"section\": {\"planes\": [{\"normal\": [1, 2]}]}}",
         "section.planes[0].normal is a list; it has to be a list of three numbers"},
        {"{\"view\": {\"eye\": [1, 2, \"3\"]}}", "view.eye is a list; it has to be a list of three numbers"},
        {"{\"fog\": true}", "fog is a truth value; it has to be an object"},
    };
    for (const auto& [text, sentence] : cases)
    {
        EXPECT_EQ(Refusal(text), sentence);
    }
    for (const char* color :
         {"\"red\"", "\"FFFFFF\"", "\"#FFFFF\"", "\"#FFFFFFF\"", "\"#GGGGGG\"", "\"#-1-1-1\"", "\"#+1+1+1\"",
          "[1, 1]", "[1, 1, 1, 1, 1]", "[1, 1, null]", "{}", "null", "1"})
    {
        const std::string text = std::string("{\"background\": ") + color + "}";
        EXPECT_THAT(Refusal(text), HasSubstr("it has to be a colour \"#RRGGBB\"")) << color;
    }
}

TEST(PresentationSettings, ColoursMayBeListsOfWholeNumbers)
{
    EXPECT_EQ(Read("{\"background\": [1, 0, 0]}").background.g, 0.0f);
    EXPECT_EQ(Read("{\"background\": [1, 0, 0, 0]}").background.a, 0.0f);
    EXPECT_EQ(Read("{\"background\": \"#a0B0c0\"}").background.r, 160.0f / 255.0f);
}

TEST(PresentationSettings, RangesOfJSONAreNamed)
{
    EXPECT_EQ(Refusal("{\"view\": {\"fov\": 200}}"), "view.fov is 200; it has to be 1 to 170");
    EXPECT_EQ(Refusal("{\"view\": {\"fov\": 0.5}}"), "view.fov is 0.5; it has to be 1 to 170");
    EXPECT_EQ(Refusal("{\"background\": [0, 1.5, 0]}"), "background is 1.5 in green; it has to be 0 to 1");
    EXPECT_EQ(Refusal("{\"fog\": {\"start\": 5}}"), "fog.end is 0; it has to be above the start, 5");
    EXPECT_EQ(Refusal("{\"section\": {\"planes\": [{}, {\"normal\": [0, 0, 0]}]}}"),
              "section.planes[1].normal has no direction; its length has to be above 0 and finite");
}

TEST(PresentationSettings, DamageIsRefusedWithASentence)
{
    EXPECT_EQ(Refusal(""), "the settings: not JSON: line 1, column 1 ends too soon");
    EXPECT_EQ(Refusal("{\n  \"sky\": tru\n}"), "the settings: not JSON: line 2, column 13 cannot be read");
    EXPECT_EQ(Refusal("{\"sky\": true} x"), "the settings: not JSON: line 1, column 15 cannot be read");
    EXPECT_THAT(Refusal("{\"lines\": {\"offset\": 1e39}}"), HasSubstr("holds a number that is too large"));
    EXPECT_THAT(Refusal("{\"lines\": {\"offset\": -1" + std::string(400, '0') + "}}"),
                HasSubstr("too large"));
    EXPECT_EQ(Refusal("{\"sky\": true, \"sky\": true}"),
              "the settings: the name \"sky\" stands twice in one object");
    EXPECT_EQ(Refusal("{\"view\": {\"fov\": 3, \"up\": [0, 1, 0], \"fov\": 3}}"),
              "the settings: the name \"fov\" stands twice in one object");
    EXPECT_EQ(Refusal(std::string(1 << 20, ' ') + "{}"), "the settings: is larger than 1 MiB");
    EXPECT_EQ(Refusal(std::string(100000, '[')), "the settings: nests deeper than 16 levels");
    std::string deep;
    for (int i = 0; i < 100000; ++i)
    {
        deep += "{\"a\":";
    }
    EXPECT_EQ(Refusal(deep), "the settings: nests deeper than 16 levels");

    for (const char* text :
         {"NaN", "{\"view\": {\"fov\": NaN}}", "{\"view\": {\"fov\": Infinity}}",
          "{\"view\": {\"fov\": 0x20}}", "{\"view\": {\"fov\": 035}}", "{\"sky\": true,}", "{sky: true}",
          "{'sky': true}", "// none\n{}", "{\"sky\" true}", "{\"sheet\": {\"title\": \"\xFF\"}}",
          "{\"sheet\": {\"title\": \"\xC3\"}}", "{\"sheet\": {\"title\": \"\\ud800\"}}",
          "{\"sheet\": {\"title\": \"a\nb\"}}", "\xFF\xFE{", "\xEF\xBB{}"})
    {
        EXPECT_THAT(Refusal(text), HasSubstr("not JSON: line ")) << text;
    }
    EXPECT_THAT(Refusal(std::string("{\0}\0", 4)), HasSubstr("not JSON"));
    EXPECT_THAT(Refusal(std::string("{}\0", 3)), HasSubstr("not JSON"));
}

TEST(PresentationSettings, EveryTruncationIsRefused)
{
    const std::string text = Whole().ToJSON();
    const std::size_t length = text.find_last_of('}');
    for (std::size_t i = 0; i < length; ++i)
    {
        std::string error;
        EXPECT_FALSE(PresentationSettings::FromJSON(text.substr(0, i), error).has_value()) << i;
        EXPECT_THAT(error, HasSubstr("ends too soon")) << i;
    }
}

TEST(PresentationSettings, ManyNamesTakeNoTimeToTellApart)
{
    std::string text = "{";
    for (int i = 0; text.size() < 1000000; ++i)
    {
        text += "\"" + std::to_string(i) + "\":0,";
    }
    EXPECT_EQ(Refusal(text + "\"0\":0}"), "the settings: the name \"0\" stands twice in one object");
    EXPECT_THAT(Refusal(text + "\"x\":0}"), HasSubstr("there is no field"));
}

TEST(PresentationSettings, AFileOfVersion1IsStillRead)
{
    std::ifstream file(ORVANE_SETTINGS_FILE, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    ASSERT_FALSE(text.empty()) << ORVANE_SETTINGS_FILE;

    PresentationSettings expected;
    expected.look = Look::Phong;
    expected.cullBacks = false;
    expected.section.planes = {{Vector(0.0f, 1.0f, 0.0f), Vector(0.0f, 2.4f, 0.0f)},
                               {Vector(0.0f, 0.6f, 0.8f), Vector(-1.5f, 0.0f, 1e-3f)}};
    expected.section.fill = Color::GetRGB(0xAA, 0x33, 0x11);
    expected.section.outlineWidth = 0.05f;
    expected.section.outlineColor = Color::GetRGBA(1, 2, 3, 0x80);
    expected.editPath = "Haus/D\xC3\xA4"
                        "cher";
    expected.background = Color(0.95f, 0.333f, 0.1f);
    expected.sky = true;
    expected.fog = FogRange{10.5f, 250.0f};
    expected.surroundings = "Himmel.jpg";
    expected.glass = GlassSettings{GlassOrder::Weighted, 3};
    expected.ground = GroundSettings{GroundKind::ShadowCatcher, Color::GetRGB(0xC8, 0xBE, 0xAA), -0.25f};
    expected.lines = LineSettings{25.0f, 1.5f, Color::GetRGB(0x20, 0x20, 0x20), 6.0f, 0.25f, HiddenLines::Dashed};
    expected.edges = EdgeLook{0.75f, Color::GetRGB(0, 0, 0x80), Identity::Object};
    expected.occlusion = true;
    expected.occlusionLook = OcclusionLook{OcclusionKind::Spiral, 0.75f, 1.5f};
    expected.sun.emplace().time = "2026-06-21T15:00+02:00";
    expected.sun->place = GeoPlace{52.52f, 13.4f};
    expected.sun->north = 30.0f;
    expected.shadows = ShadowSettings{true, 2.5f, 0.5f, true};
    expected.antialiasing = Antialiasing::Filter;
    expected.samples = 8;
    expected.sheet.title = "Schnitt A\xE2\x80\x93"
                           "B";
    expected.sheet.scaleBar = true;
    expected.sheet.north = -12.5f;
    expected.view.named = NamedView::Left;
    expected.view.eye = Vector(12.0f, 7.25f, -3.0f);
    expected.view.target = Vector(0.1f, 0.2f, 0.3f);
    expected.view.up = Vector(0.0f, 0.0f, 2.0f);
    expected.view.fov = 50.0f;
    expected.batches = {BatchUse::Off, 1.5f};
    expected.view.orthographic = true;
    expected.view.upAxis = UpAxis::Z;

    EXPECT_EQ(Read(text), expected);
    EXPECT_EQ(expected.ToJSON(), text);
}

TEST(Look, NamesAreThoseThatAreRead)
{
    for (int i = 0; i < 6; ++i)
    {
        Look look = i == 0 ? Look::Phong : Look::Basic;
        EXPECT_TRUE(ParseLook(NameOfLook(static_cast<Look>(i)), look));
        EXPECT_EQ(look, static_cast<Look>(i));
    }
    Look look = Look::Phong;
    EXPECT_FALSE(ParseLook("glass", look));
    EXPECT_EQ(look, Look::Phong);
    EXPECT_EQ(NameOfLook(static_cast<Look>(6)), nullptr);
    EXPECT_EQ(NameOfLook(static_cast<Look>(-1)), nullptr);
}
