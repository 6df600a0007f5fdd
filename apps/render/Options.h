#pragma once

#include "orvane_host/geometry/FeatureEdges.h"
#include "orvane_host/present/PresentationRenderer.h"
#include "orvane_host/view/ViewFit.h"
#include "orvane/math/Color.h"
#include "orvane/math/Vector.h"

#include <optional>
#include <string>
#include <vector>

namespace OV::RenderApp
{

/// Distances from the eye, in the units of the model.
struct FogRange
{
    float start = 0.0f;
    float end = 0.0f;
};

/// How the edges of the model are drawn.
struct LineLook
{
    /// What bends less is round, in degrees.
    float crease = Host::FeatureEdges::UsualCrease;
    /// Of a line in all, in pixels.
    float width = 1.0f;
    Color color{0.0f, 0.0f, 0.0f};
    /// Pixels of a dash and of the gap after it; none for a line without gaps.
    std::optional<float> dash;
    float offset = 0.0f;
};

/// A plane that cuts away what lies on the side of its normal, in the units of the model.
struct ClipPlane
{
    Vector normal;
    Vector position;
};

/// How surfaces are drawn, cut and picked out.
struct SurfaceLook
{
    Host::Look look = Host::Look::Advanced;
    std::vector<ClipPlane> clips;
    /// Colour of the section; none leaves cut solids open.
    std::optional<Color> poche = Color(0.2f, 0.2f, 0.2f);
    /// Width of the outline along a cut; none suits the size of the model.
    std::optional<float> outline;
    Color outlineColor{0.0f, 0.0f, 0.0f};
    /// Names from a node down, with slashes between them; none edits nothing.
    std::string edit;
};

/// How rims are smoothed.
enum class Antialiasing
{
    None,
    Multisampling,  ///< several samples a pixel
    Filter,         ///< a filter over the finished picture
    Supersampling   ///< a picture of twice the size, reduced
};

/// A pixel of the picture, from its upper left corner.
struct PickedPixel
{
    int x = 0;
    int y = 0;
};

/// What the command line asks for.
struct Options
{
    std::string model;
    /// May be empty where there is a pixel to pick.
    std::string output;
    int width = 1280;
    int height = 720;
    Antialiasing antialiasing = Antialiasing::Multisampling;
    /// Samples a pixel with multisampling; none means as many as suit the size.
    std::optional<int> samples;

    Host::NamedView view = Host::NamedView::Iso;
    std::optional<Vector> eye;
    /// Only with an eye; none means the middle of the model.
    std::optional<Vector> target;
    Vector up{0.0f, 1.0f, 0.0f};
    /// Full vertical angle in degrees.
    float fov = 35.0f;
    bool orthographic = false;

    Color background{1.0f, 1.0f, 1.0f};
    bool sky = false;
    std::optional<FogRange> fog;
    bool noCull = false;
    bool occlusion = false;
    std::optional<Host::EdgeLook> edges;
    std::optional<LineLook> lines;
    SurfaceLook surfaces;

    /// None for an empty one.
    std::string title;
    bool scaleBar = false;
    /// In degrees clockwise from the top of the picture.
    std::optional<float> north;
    /// None for an empty one.
    std::string watermark;

    std::optional<PickedPixel> pick;
    bool stats = false;
    int frames = 1;
};

/// What to do after the command line was read.
enum class Action
{
    Render,
    ListFormats,
    Leave ///< help or version was shown, or the usage was wrong
};

struct Command
{
    Action action = Action::Leave;
    int exitCode = 0; ///< for Action::Leave
    Options options;
};

/// Reads the command line. Help and version go to standard output, one line on wrong usage to
/// standard error.
Command ParseCommandLine(int argc, const char* const* argv);

/// The long names of all options, with their dashes, in the order of the help.
std::vector<std::string> ListOptions();

} // namespace OV::RenderApp
