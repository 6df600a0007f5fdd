#pragma once

#include "orvane_host/present/PresentationSettings.h"

#include <limits>
#include <string>

/// Every field of the settings, named once: comparing, checking, writing and reading all go by
/// this list.
namespace OV::Host::Detail
{

/// What a number may be.
struct Limits
{
    float least = std::numeric_limits<float>::lowest();
    float most = std::numeric_limits<float>::max();
    bool isAboveLeast = false;
};

constexpr Limits kFinite{};
constexpr Limits kNotNegative{0.0f};
constexpr Limits kAboveZero{0.0f, std::numeric_limits<float>::max(), true};
constexpr Limits kShare{0.0f, 1.0f};
constexpr Limits kCrease{0.0f, 180.0f};
constexpr Limits kLineWidth{0.0f, 100.0f, true};
constexpr Limits kOcclusionStrength{0.0f, 2.0f};
constexpr Limits kSunWidth{0.0f, 20.0f, true};
constexpr Limits kFov{1.0f, 170.0f};
constexpr Limits kLayers{1.0f, static_cast<float>(GlassSettings::MostLayers)};
constexpr Limits kSamples{0.0f, static_cast<float>(PresentationSettings::MostSamples)};
/// Beyond it ViewFit takes no eye.
constexpr Limits kPlace{-1e15f, 1e15f};
constexpr Limits kLatitude{-90.0f, 90.0f};
constexpr Limits kLongitude{-180.0f, 180.0f};

/// Calls a visitor with the name, the member pointer and the limits of each field of a struct. For
/// colours the limits are always those of a share.
template <typename Settings>
struct Fields;

template <>
struct Fields<FogRange>
{
    template <typename Visitor>
    static void Visit(Visitor&& visit)
    {
        visit("start", &FogRange::start, kNotNegative);
        visit("end", &FogRange::end, kFinite);
    }
};

template <>
struct Fields<ClipPlane>
{
    template <typename Visitor>
    static void Visit(Visitor&& visit)
    {
        visit("normal", &ClipPlane::normal, kFinite);
        visit("position", &ClipPlane::position, kFinite);
    }
};

template <>
struct Fields<SectionSettings>
{
    template <typename Visitor>
    static void Visit(Visitor&& visit)
    {
        visit("planes", &SectionSettings::planes, kFinite);
        visit("fill", &SectionSettings::fill, kShare);
        visit("outlineWidth", &SectionSettings::outlineWidth, kNotNegative);
        visit("outlineColor", &SectionSettings::outlineColor, kShare);
    }
};

template <>
struct Fields<LineSettings>
{
    template <typename Visitor>
    static void Visit(Visitor&& visit)
    {
        visit("crease", &LineSettings::crease, kCrease);
        visit("width", &LineSettings::width, kLineWidth);
        visit("color", &LineSettings::color, kShare);
        visit("dash", &LineSettings::dash, kAboveZero);
        visit("offset", &LineSettings::offset, kFinite);
        visit("hidden", &LineSettings::hidden, kFinite);
    }
};

template <>
struct Fields<EdgeLook>
{
    template <typename Visitor>
    static void Visit(Visitor&& visit)
    {
        visit("weight", &EdgeLook::weight, kShare);
        visit("color", &EdgeLook::color, kShare);
        visit("identity", &EdgeLook::identity, kFinite);
    }
};

template <>
struct Fields<OcclusionLook>
{
    template <typename Visitor>
    static void Visit(Visitor&& visit)
    {
        visit("kind", &OcclusionLook::kind, kFinite);
        visit("radius", &OcclusionLook::radius, kAboveZero);
        visit("strength", &OcclusionLook::strength, kOcclusionStrength);
    }
};

template <>
struct Fields<GroundSettings>
{
    template <typename Visitor>
    static void Visit(Visitor&& visit)
    {
        visit("kind", &GroundSettings::kind, kFinite);
        visit("color", &GroundSettings::color, kShare);
        visit("height", &GroundSettings::height, kPlace);
    }
};

template <>
struct Fields<GeoPlace>
{
    template <typename Visitor>
    static void Visit(Visitor&& visit)
    {
        visit("latitude", &GeoPlace::latitude, kLatitude);
        visit("longitude", &GeoPlace::longitude, kLongitude);
    }
};

template <>
struct Fields<SunSettings>
{
    template <typename Visitor>
    static void Visit(Visitor&& visit)
    {
        visit("direction", &SunSettings::direction, kFinite);
        visit("time", &SunSettings::time, kFinite);
        visit("place", &SunSettings::place, kFinite);
        visit("north", &SunSettings::north, kFinite);
    }
};

template <>
struct Fields<ShadowSettings>
{
    template <typename Visitor>
    static void Visit(Visitor&& visit)
    {
        visit("soft", &ShadowSettings::soft, kFinite);
        visit("sunWidth", &ShadowSettings::sunWidth, kSunWidth);
        visit("darkness", &ShadowSettings::darkness, kShare);
        visit("clippedCasts", &ShadowSettings::clippedCasts, kFinite);
    }
};

template <>
struct Fields<ViewSettings>
{
    template <typename Visitor>
    static void Visit(Visitor&& visit)
    {
        visit("named", &ViewSettings::named, kFinite);
        visit("eye", &ViewSettings::eye, kPlace);
        visit("target", &ViewSettings::target, kPlace);
        visit("up", &ViewSettings::up, kFinite);
        visit("fov", &ViewSettings::fov, kFov);
        visit("orthographic", &ViewSettings::orthographic, kFinite);
        visit("upAxis", &ViewSettings::upAxis, kFinite);
    }
};

template <>
struct Fields<SheetSettings>
{
    template <typename Visitor>
    static void Visit(Visitor&& visit)
    {
        visit("title", &SheetSettings::title, kFinite);
        visit("scaleBar", &SheetSettings::scaleBar, kFinite);
        visit("north", &SheetSettings::north, kFinite);
        visit("watermark", &SheetSettings::watermark, kFinite);
    }
};

template <>
struct Fields<BatchSettings>
{
    template <typename Visitor>
    static void Visit(Visitor&& visit)
    {
        visit("use", &BatchSettings::use, kFinite);
        visit("smallestPixels", &BatchSettings::smallestPixels, kNotNegative);
    }
};

template <>
struct Fields<GlassSettings>
{
    template <typename Visitor>
    static void Visit(Visitor&& visit)
    {
        visit("order", &GlassSettings::order, kFinite);
        visit("layers", &GlassSettings::layers, kLayers);
    }
};

template <>
struct Fields<PresentationSettings>
{
    template <typename Visitor>
    static void Visit(Visitor&& visit)
    {
        visit("look", &PresentationSettings::look, kFinite);
        visit("cullBacks", &PresentationSettings::cullBacks, kFinite);
        visit("glass", &PresentationSettings::glass, kFinite);
        visit("section", &PresentationSettings::section, kFinite);
        visit("editPath", &PresentationSettings::editPath, kFinite);
        visit("background", &PresentationSettings::background, kShare);
        visit("sky", &PresentationSettings::sky, kFinite);
        visit("fog", &PresentationSettings::fog, kFinite);
        visit("surroundings", &PresentationSettings::surroundings, kFinite);
        visit("ground", &PresentationSettings::ground, kFinite);
        visit("lines", &PresentationSettings::lines, kFinite);
        visit("edges", &PresentationSettings::edges, kFinite);
        visit("occlusion", &PresentationSettings::occlusion, kFinite);
        visit("occlusionLook", &PresentationSettings::occlusionLook, kFinite);
        visit("sun", &PresentationSettings::sun, kFinite);
        visit("shadows", &PresentationSettings::shadows, kFinite);
        visit("antialiasing", &PresentationSettings::antialiasing, kFinite);
        visit("samples", &PresentationSettings::samples, kSamples);
        visit("sheet", &PresentationSettings::sheet, kFinite);
        visit("view", &PresentationSettings::view, kFinite);
        visit("batches", &PresentationSettings::batches, kFinite);
    }
};

/// The name of an enumerator in JSON, as on a command line; null for what is none.
inline const char* NameOf(Look look)
{
    return NameOfLook(look);
}

inline const char* NameOf(NamedView view)
{
    return ViewFit::NameOf(view);
}

const char* NameOf(Identity identity);
const char* NameOf(Antialiasing antialiasing);
const char* NameOf(UpAxis axis);
const char* NameOf(BatchUse use);
const char* NameOf(GlassOrder order);
const char* NameOf(GroundKind kind);
const char* NameOf(OcclusionKind kind);
const char* NameOf(HiddenLines hidden);

/// The names of an enumeration, with commas between them.
template <typename Enum>
std::string ListNames()
{
    std::string list;
    for (int i = 0; NameOf(static_cast<Enum>(i)); ++i)
    {
        list += (i ? ", " : "") + std::string(NameOf(static_cast<Enum>(i)));
    }
    return list;
}

} // namespace OV::Host::Detail
