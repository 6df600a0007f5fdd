#include "orvane_host/present/BlankPicture.h"

#include "orvane_host/import/NodePath.h"
#include "orvane_host/output/PictureFile.h"
#include "orvane_host/present/detail/PresentationImpl.h"
#include "orvane_host/present/detail/ShownPoints.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <cmath>

namespace OV::Host
{

namespace
{

/// Longest side of the picture that is looked at.
constexpr int LongestSide = 512;

/// Largest difference from the background that nobody sees, of 0 to 1.
constexpr float UnseenDifference = 2.5f / 255.0f;

/// Takes rows and keeps none.
class NoFile : public PictureFile
{
public:
    explicit NoFile(const PictureFormat& format) : PictureFile(format) {}

    bool WriteRow(const void*, std::string&) override { return true; }
    bool Finish(std::string&) override { return true; }
};

PixelSize Reduced(int width, int height)
{
    const double scale = std::min(1.0, static_cast<double>(LongestSide) / std::max({width, height, 1}));
    const auto side = [&](int pixels) { return std::max(static_cast<int>(std::lround(pixels * scale)), 1); };
    return {side(width), side(height)};
}

bool IsNear(float left, float right)
{
    return std::abs(left - right) <= UnseenDifference;
}

bool IsInside(const Vector& point, const Presentation::Box& box)
{
    return point.x > box.low.x && point.x < box.high.x && point.y > box.low.y && point.y < box.high.y
        && point.z > box.low.z && point.z < box.high.z;
}

} // namespace

std::string BlankPicture::Line() const
{
    switch (reason)
    {
    case BlankReason::EmptyModel: return "the model has nothing that can be drawn";
    case BlankReason::AllHidden: return "all of the model is hidden";
    case BlankReason::AllCutAway: return "the clip planes cut all of the model away";
    case BlankReason::OutOfView: return "the eye looks past the model";
    case BlankReason::EyeInside:
        return "the eye is inside " + (node.empty() ? "the model" : "'" + node + "'") + " and sees only backs of faces, which are not drawn";
    case BlankReason::OnlyBacks: return "only backs of faces are in the view, and they are not drawn";
    case BlankReason::TooSmall: return "the model covers no pixel of the view";
    case BlankReason::TooTiny: return "the model is too small for any camera";
    case BlankReason::TooFarAway: return "the model is so far from the origin that its points come together";
    case BlankReason::FarApart: return "parts of the model are so far apart that none covers a pixel";
    case BlankReason::NotFinite: return "the places of the model are no numbers that can be drawn";
    case BlankReason::InFog: return "the fog hides all that is in the view";
    case BlankReason::BackgroundColor: return "what is in the view has the colour of the background";
    case BlankReason::NotBlank: break;
    }
    return {};
}

bool Presentation::Impl::IsBlank(const PictureOptions& options, const PictureFacts& facts) const
{
    const Color& behind = settings.background;
    return facts.isOneColor
        && (options.transparent ? facts.color.a <= UnseenDifference
                                : IsNear(facts.color.r, behind.r) && IsNear(facts.color.g, behind.g)
                    && IsNear(facts.color.b, behind.b));
}

BlankPicture Presentation::Impl::FindBlank(const PictureOptions& options)
{
    const PixelSize small = Reduced(options.width, options.height);
    const PresentationSettings own = settings;
    PresentationSettings bare = own;
    // What stands behind and above the model says nothing of it.
    bare.sky = false;
    bare.ground.reset();
    bare.sheet = SheetSettings();
    BlankPicture found;
    std::string error;
    if (!Apply(bare, error))
    {
        return found;
    }
    PictureOptions reduced = options;
    reduced.width = small.width;
    reduced.height = small.height;
    reduced.bits = 8;
    reduced.progress = nullptr;
    PictureFacts facts;
    if (WriteUnkept(reduced, facts) && IsBlank(options, facts))
    {
        found = ExplainBlank(small);
        const bool isUnexplained = found.reason == BlankReason::TooSmall || found.reason == BlankReason::FarApart
            || found.reason == BlankReason::OutOfView;
        if (isUnexplained && StandsOut(reduced))
        {
            found.reason = BlankReason::BackgroundColor;
        }
    }
    Apply(own, error);
    return found;
}

bool Presentation::Impl::WriteUnkept(const PictureOptions& options, PictureFacts& facts)
{
    NoFile file(FormatOf(options));
    std::string error;
    return WritePicture(file, options, facts, error);
}

bool Presentation::Impl::StandsOut(const PictureOptions& options)
{
    // Picking finds surfaces alone; lines and points may have the colour of the background too.
    const auto opposite = [](float channel) { return channel < 0.5f ? 1.0f : 0.0f; };
    PresentationSettings wanted = settings;
    wanted.background = Color(opposite(wanted.background.r), opposite(wanted.background.g), opposite(wanted.background.b));
    const PresentationSettings own = settings;
    std::string error;
    PictureFacts facts;
    const bool standsOut = Apply(wanted, error) && WriteUnkept(options, facts) && !IsBlank(options, facts);
    Apply(own, error);
    return standsOut;
}

BlankPicture Presentation::Impl::ExplainBlank(const PixelSize& size)
{
    UpdateGlobals();
    const Node& root = *World().GetRoot();
    const auto isOfModel = [this](const MeshNode&, const Mesh& mesh) { return IsOfModel(mesh); };
    if (Detail::ShownPoints(root, isOfModel, {}).empty())
    {
        bool hasAny = false;
        Detail::VisitShown(root, isOfModel, {}, [&hasAny](const auto&) { hasAny = true; });
        return {hasAny ? BlankReason::NotFinite : BlankReason::EmptyModel, {}};
    }
    const auto isShown = [this](const MeshNode& place, const Mesh& mesh)
    { return IsOfModel(mesh) && (place.GetFlags() & NodeFlagHidden) == 0; };
    if (Detail::ShownPoints(root, isShown, {}).empty())
    {
        return {BlankReason::AllHidden, {}};
    }
    const std::vector<Vector> points = ShownPointsBelow(root);
    if (points.empty())
    {
        return {BlankReason::AllCutAway, {}};
    }
    const std::vector<PickHit> hits = PickReduced(size);
    if (!hits.empty())
    {
        return {IsInFog(hits) ? BlankReason::InFog : BlankReason::BackgroundColor, {}};
    }
    const std::vector<PickHit> backs = PickBacks(size);
    if (!backs.empty())
    {
        return ExplainBacks(backs);
    }
    const CameraNode& camera = Camera();
    const Vector eye = camera.GetGlobal().GetPosition();
    const auto& m = camera.GetGlobal().GetTransf3d().m;
    const bool isInView = std::any_of(points.begin(), points.end(), [&](const Vector& point)
    {
        const double ahead = -(m[0][2] * (point.x - eye.x) + m[1][2] * (point.y - eye.y) + m[2][2] * (point.z - eye.z));
        return (ahead > 0.0 || camera.GetProjection() != CameraNode::Perspective) && !camera.IsOutside(point, 0.0f);
    });
    return {ExplainSize(*BoxOf(points), isInView), {}};
}

BlankReason Presentation::Impl::ExplainSize(const Box& box, bool isInView) const
{
    double size = 0.0;
    double farthest = 0.0;
    for (const auto axis : {&Vector::x, &Vector::y, &Vector::z})
    {
        size = std::hypot(size, static_cast<double>(box.high.*axis) - static_cast<double>(box.low.*axis));
        farthest = std::max({farthest, std::abs(static_cast<double>(box.low.*axis)),
                             std::abs(static_cast<double>(box.high.*axis))});
    }
    // Below these the view stands off from a point in place of fitting a model: see SceneFit.
    constexpr double tiny = 1e-4;
    constexpr double part = 1e-6;
    if (size <= std::max(tiny, part * farthest))
    {
        return part * farthest > tiny ? BlankReason::TooFarAway : BlankReason::TooTiny;
    }
    // Where the eye is not one that somebody chose, all of the model is in the view.
    const bool isWhole = !settings.view.eye && isInView;
    return isWhole ? BlankReason::FarApart : isInView ? BlankReason::TooSmall : BlankReason::OutOfView;
}

BlankPicture Presentation::Impl::ExplainBacks(const std::vector<PickHit>& backs)
{
    const Vector eye = Camera().GetGlobal().GetPosition();
    const MeshNode& nearest = *backs.front().node;
    const auto isNearest = [&](const MeshNode& place, const Mesh&) { return &place == &nearest; };
    const std::optional<Box> box = BoxOf(Detail::ShownPoints(nearest, isNearest, {}));
    if (Camera().GetProjection() == CameraNode::Perspective && box && IsInside(eye, *box))
    {
        return {BlankReason::EyeInside, Paths().PathTo(nearest)};
    }
    return {BlankReason::OnlyBacks, {}};
}

std::vector<PickHit> Presentation::Impl::PickReduced(const PixelSize& size)
{
    renderer->ShowPart(PicturePart{size, size, 0, 0});
    std::vector<PickHit> hits = Pick({0, 0, size.width, size.height});
    renderer->ShowPart(std::nullopt);
    if (m_width > 0 && m_height > 0)
    {
        renderer->Resize(m_width, m_height);
    }
    return hits;
}

std::vector<PickHit> Presentation::Impl::PickBacks(const PixelSize& size)
{
    PresentationSettings wanted = settings;
    wanted.cullBacks = false;
    const PresentationSettings own = settings;
    std::string error;
    if (!own.cullBacks || !Apply(wanted, error))
    {
        return {};
    }
    std::vector<PickHit> hits = PickReduced(size);
    Apply(own, error);
    return hits;
}

bool Presentation::Impl::IsInFog(const std::vector<PickHit>& hits) const
{
    const Vector eye = Camera().GetGlobal().GetPosition();
    return settings.fog && std::all_of(hits.begin(), hits.end(), [&](const PickHit& hit)
    {
        const Vector& at = hit.position;
        return std::hypot(at.x - eye.x, at.y - eye.y, at.z - eye.z) >= settings.fog->end;
    });
}

BlankPicture Presentation::FindBlank(const PictureOptions& options)
{
    return m_impl->Followed().FindBlank(options);
}

} // namespace OV::Host
