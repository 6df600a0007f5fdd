#pragma once

#include "orvane_host/geometry/FeatureEdges.h"
#include "orvane_host/present/BatchSettings.h"
#include "orvane_host/present/EdgeLook.h"
#include "orvane_host/present/GlassSettings.h"
#include "orvane_host/present/GroundSettings.h"
#include "orvane_host/present/Look.h"
#include "orvane_host/present/OcclusionLook.h"
#include "orvane_host/present/ShadowSettings.h"
#include "orvane_host/present/SunSettings.h"
#include "orvane_host/view/ViewFit.h"
#include "orvane/math/Color.h"
#include "orvane/math/Vector.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace OV::Host
{

/// Distances from the eye, in the units of the model.
struct FogRange
{
    float start = 0.0f; ///< 0 or more
    float end = 0.0f;   ///< above start
};

/// A plane that cuts away what lies on the side of its normal, in the units of the model.
struct ClipPlane
{
    Vector normal{0.0f, 1.0f, 0.0f}; ///< of any length above 0
    Vector position;
};

/// What planes cut away, and how the cut looks.
struct SectionSettings
{
    /// At most as many as PresentationSettings::MostClipPlanes; none cuts nothing.
    std::vector<ClipPlane> planes;
    /// Colour of the section; none leaves cut solids open.
    std::optional<Color> fill = Color(0.2f, 0.2f, 0.2f);
    /// Width of the outline along a cut, in the units of the model, 0 for no outline; none suits the
    /// model's size.
    std::optional<float> outlineWidth;
    Color outlineColor{0.0f, 0.0f, 0.0f};
};

/// What is drawn of lines where surfaces hide them.
enum class HiddenLines
{
    None,
    Dashed, ///< thinner, with dashes, as in a technical drawing
};

/// How the edges of the model are drawn as lines.
struct LineSettings
{
    /// What bends less is round, in degrees, 0 to 180.
    float crease = FeatureEdges::UsualCrease;
    /// Of a line in all, in pixels, above 0 and at most 100.
    float width = 1.0f;
    Color color{0.0f, 0.0f, 0.0f};
    /// Pixels of a dash and of the gap after it, above 0; none for a line without gaps.
    std::optional<float> dash;
    /// As LineStyle::offset.
    float offset = 0.0f;
    /// Of all lines of the scene.
    HiddenLines hidden = HiddenLines::None;
};

/// How rims are smoothed.
enum class Antialiasing
{
    None,
    Multisampling, ///< several samples a pixel, where the framebuffer has them
    Filter,        ///< a filter over the finished picture
    Supersampling, ///< a picture of twice the size, reduced
};

/// Where the model is looked at from.
struct ViewSettings
{
    /// Without an eye: the direction, from as far as it takes to see all that is shown.
    NamedView named = NamedView::Iso;
    /// World space, each coordinate -1e15 to 1e15.
    std::optional<Vector> eye;
    /// As eye, and elsewhere. Only counts with an eye; none means the middle of the model.
    std::optional<Vector> target;
    /// What points upwards in the picture, of any length above 0; none for the axis that is up. Only
    /// counts with an eye.
    std::optional<Vector> up;
    /// Full vertical angle in degrees, 1 to 170.
    float fov = 35.0f;
    bool orthographic = false;
    /// Of the model, which named views, ground, sky and sun go by too.
    UpAxis upAxis = UpAxis::Y;
};

/// What stands over and under the picture.
struct SheetSettings
{
    /// UTF-8; none for an empty one.
    std::string title;
    bool scaleBar = false;
    /// In degrees clockwise from the top of the picture. With a sun by time and place the arrow shows
    /// where the sun's north lies instead, which is the same in a plan.
    std::optional<float> north;
    /// A PNG or JPEG file behind the model; none for an empty name. Not with a sky, which would
    /// hide it.
    std::string watermark;
};

/// Everything about a presented model that a person can choose.
///
/// A plain value: copy it, compare it, keep it as JSON. Presentation::Apply takes it over at any
/// time, and takes back whatever earlier settings had done. Numbers are finite and the channels of
/// colours 0 to 1; texts are UTF-8. What counts only beside another field may stay set without it,
/// so that a person can switch to and fro.
struct PresentationSettings
{
    static constexpr std::size_t MostClipPlanes = 6;
    static constexpr int MostSamples = 64;
    /// Of each text, without a zero among them.
    static constexpr std::size_t MostTextBytes = 4096;

    Look look = Look::Advanced;
    /// Leaves the backs of faces out, as materials want it; false shows all of them.
    bool cullBacks = true;
    /// How see-through surfaces lie over each other.
    GlassSettings glass;
    /// Without planes in the look Crosshatch, which is not cut.
    SectionSettings section;
    /// Names from a node down, with slashes between them: everything else is grey in the looks
    /// Advanced and Phong. Empty edits nothing.
    std::string editPath;

    Color background{1.0f, 1.0f, 1.0f};
    bool sky = false;
    std::optional<FogRange> fog;
    /// What smooth surfaces reflect in the looks Advanced and Phong: "sky" for the engine's own;
    /// else a picture, see Surroundings::Read. None for an empty name.
    std::string surroundings;
    std::optional<GroundSettings> ground;

    std::optional<LineSettings> lines;
    std::optional<EdgeLook> edges;
    /// Darkens corners.
    bool occlusion = false;
    OcclusionLook occlusionLook;
    std::optional<SunSettings> sun;
    /// Of the sun, in every look; without a sun there are none.
    std::optional<ShadowSettings> shadows;
    Antialiasing antialiasing = Antialiasing::Multisampling;
    /// Samples a pixel of pictures with multisampling, 0 to MostSamples; none means 4, or as
    /// many as GL has. A framebuffer of the host's has those that it has.
    std::optional<int> samples;

    SheetSettings sheet;
    ViewSettings view;
    BatchSettings batches;

    /// Tells the first field that is out of range, in one sentence that names the field, as in
    /// JSON, and the bound; empty where all are in range.
    std::string Trouble() const;

    /// All fields as JSON text of several lines, defaults included, that FromJSON gives the same
    /// settings for, bit for bit. Settings in Trouble may not come back.
    ///
    /// Enumerators are the names of the command line, colours "#RRGGBB" or "#RRGGBBAA" where bytes
    /// tell them exactly and arrays of numbers else, vectors arrays; what is none is null.
    std::string ToJSON() const;

    /// Reads JSON text of at most 1 MiB. Fields that are left out keep their defaults.
    /// @param error on failure one sentence: what is no JSON, unknown, given twice, of the wrong
    ///        kind or out of range, by name. Untouched otherwise.
    /// @return none on failure.
    static std::optional<PresentationSettings> FromJSON(const std::string& text, std::string& error);
};

/// Numbers are compared exactly, unlike those of Vector alone.
bool operator==(const FogRange& left, const FogRange& right);
bool operator==(const ClipPlane& left, const ClipPlane& right);
bool operator==(const SectionSettings& left, const SectionSettings& right);
bool operator==(const LineSettings& left, const LineSettings& right);
bool operator==(const EdgeLook& left, const EdgeLook& right);
bool operator==(const GroundSettings& left, const GroundSettings& right);
bool operator==(const ViewSettings& left, const ViewSettings& right);
bool operator==(const SheetSettings& left, const SheetSettings& right);
bool operator==(const BatchSettings& left, const BatchSettings& right);
bool operator==(const PresentationSettings& left, const PresentationSettings& right);

inline bool operator!=(const FogRange& left, const FogRange& right)
{
    return !(left == right);
}
inline bool operator!=(const ClipPlane& left, const ClipPlane& right)
{
    return !(left == right);
}
inline bool operator!=(const SectionSettings& left, const SectionSettings& right)
{
    return !(left == right);
}
inline bool operator!=(const LineSettings& left, const LineSettings& right)
{
    return !(left == right);
}
inline bool operator!=(const EdgeLook& left, const EdgeLook& right)
{
    return !(left == right);
}
inline bool operator!=(const GroundSettings& left, const GroundSettings& right)
{
    return !(left == right);
}
inline bool operator!=(const ViewSettings& left, const ViewSettings& right)
{
    return !(left == right);
}
inline bool operator!=(const SheetSettings& left, const SheetSettings& right)
{
    return !(left == right);
}
inline bool operator!=(const BatchSettings& left, const BatchSettings& right)
{
    return !(left == right);
}
inline bool operator!=(const PresentationSettings& left, const PresentationSettings& right)
{
    return !(left == right);
}

} // namespace OV::Host
