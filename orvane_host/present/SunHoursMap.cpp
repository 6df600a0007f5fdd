#include "orvane_host/present/SunHoursMap.h"

#include "orvane_host/geometry/RayCaster.h"
#include "orvane_host/present/PresentationRenderer.h"
#include "orvane_host/present/detail/SectionPlanes.h"
#include "orvane_host/present/detail/SunHoursMesh.h"
#include "orvane_host/present/detail/SunMapStage.h"
#include "orvane_host/sheet/ColorScale.h"
#include "orvane_host/view/SceneFit.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace OV::Host
{

namespace
{

using QGM::Point3d;
using QGM::Vector3d;

/// Squares of a map of the ground, along its longer side.
constexpr int kSquaresAcross = 128;
/// Pieces that the faces of a node are to come to before those on rims are made smaller, and that a map
/// may come to at most.
constexpr double kWantedPieces = 30000.0;
constexpr std::size_t kMostPieces = 300000;
/// Of the scene's size: how far a map lies off what it is about, so that it is seen.
constexpr double kOffShare = 5e-4;

Vector3d Between(const Point3d& from, const Point3d& to)
{
    return {to.x - from.x, to.y - from.y, to.z - from.z};
}

Vector3d Cross(const Vector3d& a, const Vector3d& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

bool AreSame(const Point3d& left, const Point3d& right)
{
    return left.x == right.x && left.y == right.y && left.z == right.z;
}

/// Twice that of a triangle.
double AreaOf(const Point3d (&corners)[3])
{
    return Cross(Between(corners[0], corners[1]), Between(corners[0], corners[2])).length();
}

double SizeOf(const Presentation::Box& box)
{
    return std::hypot(double(box.high.x) - box.low.x, double(box.high.y) - box.low.y,
                      double(box.high.z) - box.low.z);
}

} // namespace

/// A triangle of a surface.
struct SunHoursMap::Face : Detail::SunHoursMesh::Face
{
    Face(const Point3d& a, const Point3d& b, const Point3d& c) : Detail::SunHoursMesh::Face{{a, b, c}} {}
};

SunHoursMap::SunHoursMap(Presentation& presentation) : m_presentation(presentation)
{
}

SunHoursMap::~SunHoursMap()
{
    Hide();
}

std::vector<SunHoursMap::Face> SunHoursMap::FacesOfGround() const
{
    const std::optional<Presentation::Box> box = m_presentation.GetModelBox();
    if (!box)
    {
        return {};
    }
    const bool isUpY = m_presentation.GetSettings().view.upAxis == UpAxis::Y;
    const double width = double(box->high.x) - box->low.x;
    const double depth = isUpY ? double(box->high.z) - box->low.z : double(box->high.y) - box->low.y;
    const double height = isUpY ? double(box->high.y) - box->low.y : double(box->high.z) - box->low.z;
    // A tower's shadow is longer than its plan.
    const double beyond = 0.5 * std::max({width, depth, height});
    const double across = width + 2.0 * beyond;
    const double along = depth + 2.0 * beyond;
    const double piece = std::max(across, along) / kSquaresAcross;
    const auto pieces = [&](double length) { return std::max(1, static_cast<int>(std::lround(length / piece))); };
    const int columns = pieces(across);
    const int rows = pieces(along);
    const auto at = [&](int column, int row)
    {
        const double a = box->low.x - beyond + across * column / columns;
        const double b = along * row / rows - beyond;
        return isUpY ? Point3d(a, box->low.y, box->high.z - b) : Point3d(a, box->low.y + b, box->low.z);
    };
    std::vector<Face> faces;
    for (int row = 0; row < rows; ++row)
    {
        for (int column = 0; column < columns; ++column)
        {
            faces.emplace_back(at(column, row), at(column + 1, row), at(column + 1, row + 1));
            faces.emplace_back(at(column, row), at(column + 1, row + 1), at(column, row + 1));
        }
    }
    return faces;
}

/// Halves triangles across their longest sides, which keeps them in shape, until none is longer than
/// it takes for so many as are wanted. Sides that they share stay shared, since each that is too long is halved
/// on both of its sides.
std::vector<SunHoursMap::Face> SunHoursMap::Divide(const std::vector<Face>& faces)
{
    double area = 0.0;
    for (const Face& face : faces)
    {
        area += AreaOf(face.corners) / 2.0;
    }
    const std::size_t most = std::max(kMostPieces / 2, faces.size());
    std::vector<Face> pieces;
    // Coarser, until there are few enough.
    for (double longest = std::sqrt(4.0 * area / kWantedPieces);; longest *= 1.5)
    {
        pieces.clear();
        std::vector<Face> pending = faces;
        while (!pending.empty() && pieces.size() <= most)
        {
            const Face face = pending.back();
            pending.pop_back();
            const auto length = [&](int side)
            { return Between(face.corners[side], face.corners[(side + 1) % 3]).length(); };
            int side = length(1) > length(0) ? 1 : 0;
            side = length(2) > length(side) ? 2 : side;
            const Point3d& a = face.corners[side];
            const Point3d& b = face.corners[(side + 1) % 3];
            const Point3d& opposite = face.corners[(side + 2) % 3];
            const Point3d middle(0.5 * (a.x + b.x), 0.5 * (a.y + b.y), 0.5 * (a.z + b.z));
            // Far from the origin there may be no number in the middle.
            if (!(length(side) > longest) || AreSame(middle, a) || AreSame(middle, b))
            {
                pieces.push_back(face);
                continue;
            }
            pending.emplace_back(middle, b, opposite);
            pending.emplace_back(a, middle, opposite);
        }
        if (pending.empty())
        {
            return pieces;
        }
    }
}

std::vector<SunHoursMap::Face> SunHoursMap::FacesBelow(Node& node) const
{
    std::vector<Face> faces;
    std::vector<Node*> pending{&node};
    while (!pending.empty())
    {
        Node* const place = pending.back();
        pending.pop_back();
        pending.insert(pending.end(), place->EachChild().rbegin(), place->EachChild().rend());
        const auto* const meshNode = dynamic_cast<MeshNode*>(place);
        for (const Mesh* mesh : meshNode ? meshNode->EachMesh() : PointerSpan<Mesh>())
        {
            const bool isPoints = mesh->GetMaterial() && (mesh->GetMaterial()->GetFlags() & MaterialFlagPoints) != 0;
            if (!isPoints && RayCaster::ShownFaces(*meshNode, *mesh) != RayCaster::Faces::None)
            {
                AddFaces(*mesh, meshNode->GetGlobal().GetTransf3d(), faces);
            }
        }
    }
    return faces;
}

void SunHoursMap::AddFaces(const Mesh& mesh, const QGM::Transf3d& global, std::vector<Face>& faces)
{
    const std::vector<Vector>& positions = mesh.GetPositionBuffer();
    const std::vector<unsigned short>& indices = mesh.GetIndices();
    for (std::size_t i = 0; i + 2 < indices.size(); i += 3)
    {
        const std::size_t triangle[] = {indices[i], indices[i + 1], indices[i + 2]};
        if (*std::max_element(std::begin(triangle), std::end(triangle)) >= positions.size())
        {
            continue;
        }
        Point3d corners[3];
        for (std::size_t k = 0; k < 3; ++k)
        {
            // What a mirror turns round shows its front as before.
            const Vector& p = positions[triangle[global.isMirror() ? 2 - k : k]];
            corners[k] = Point3d(p.x, p.y, p.z);
            corners[k] *= global;
        }
        const Face face(corners[0], corners[1], corners[2]);
        const double twice = AreaOf(face.corners);
        if (twice > 0.0 && std::isfinite(twice))
        {
            faces.push_back(face);
        }
    }
}

bool SunHoursMap::Show(const SunStudyTimes& times, const std::string& surface, std::string& error)
{
    const std::optional<std::vector<SunMoment>> moments = SunStudy::MomentsOf(m_presentation, times, error);
    if (!moments)
    {
        return false;
    }
    // Where nodes are counts, before anything was drawn too.
    m_presentation.GetScene().GetRoot()->UpdateGraph();
    const bool isGround = surface == "ground";
    Node* const node = isGround ? nullptr : m_presentation.FindNode(surface);
    if (!isGround && !node)
    {
        error = "there is no node '" + surface + "' to count the hours of sun on";
        return false;
    }
    const std::vector<Face> faces = isGround ? FacesOfGround() : Divide(FacesBelow(*node));
    const std::optional<Presentation::Box> modelBox = m_presentation.GetModelBox();
    if (faces.empty() || !modelBox)
    {
        error = isGround ? "the model is empty; there is no ground to count the hours of sun on"
                         : "'" + surface + "' shows no faces to count the hours of sun on";
        return false;
    }
    const SunHours hours(m_presentation.GetScene(), *moments,
                         Detail::SectionPlanesOf(m_presentation.GetSettings().section));
    const Detail::SunHoursMesh map({faces.begin(), faces.end()}, hours, times.stepSeconds / 3600.0, kMostPieces);
    Hide();
    m_most = times.Hours();
    for (const Detail::SunHoursMesh::Triangle& triangle : map.GetTriangles())
    {
        m_pieces.push_back({map.MiddleOf(triangle), triangle.hours});
    }
    const std::vector<Detail::SunMapCell> cells = map.Cells(kOffShare * SizeOf(*modelBox), m_most);
    m_box = {cells.front().corners[0], cells.front().corners[0]};
    for (const Detail::SunMapCell& cell : cells)
    {
        for (int corner = 0; corner < cell.count; ++corner)
        {
            const Vector& p = cell.corners[corner];
            m_box.low = Vector(std::min(m_box.low.x, p.x), std::min(m_box.low.y, p.y), std::min(m_box.low.z, p.z));
            m_box.high = Vector(std::max(m_box.high.x, p.x), std::max(m_box.high.y, p.y), std::max(m_box.high.z, p.z));
        }
    }
    m_stage = m_presentation.GetRenderer().AddStage(std::make_unique<Detail::SunMapStage>(cells),
                                                    StageSlot::AfterSurfaces);
    ColorScaleOptions scale;
    scale.title = "Hours of sun, " + times.first.Date() + " " + times.first.Clock() + " to "
        + (times.last.Date() == times.first.Date() ? "" : times.last.Date() + " ") + times.last.Clock();
    scale.most = m_most;
    scale.unit = "h";
    m_scale = std::make_unique<ColorScale>(m_presentation.GetForeground(), scale);
    m_presentation.GetScene().MarkDirty();
    return true;
}

void SunHoursMap::Hide()
{
    m_scale.reset();
    m_pieces.clear();
    if (m_stage)
    {
        m_presentation.GetRenderer().RemoveStage(std::exchange(m_stage, nullptr));
        m_presentation.GetScene().MarkDirty();
    }
}

void SunHoursMap::Layout(int width, int height)
{
    if (m_scale)
    {
        m_scale->Layout(width, height);
    }
}

bool SunHoursMap::Frame(float aspect)
{
    const std::optional<Presentation::Box> modelBox = m_presentation.GetModelBox();
    if (!m_stage || !modelBox)
    {
        return false;
    }
    // A scene of the corners alone.
    std::vector<Vector> corners;
    for (const Presentation::Box& box : {*modelBox, m_box})
    {
        for (int i = 0; i < 8; ++i)
        {
            corners.emplace_back((i & 1) != 0 ? box.high.x : box.low.x, (i & 2) != 0 ? box.high.y : box.low.y,
                                 (i & 4) != 0 ? box.high.z : box.low.z);
        }
    }
    Scene measured;
    auto raw = std::make_shared<RawMesh>();
    raw->StartDescription();
    raw->SetPositionBuffer(std::move(corners));
    raw->SetIndices({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 15, 15});
    raw->EndDescription(true);
    auto* const mesh = new Mesh(raw, &measured);
    auto* const node = new MeshNode(&measured);
    measured.GetRoot()->AddChild(node, false);
    mesh->AddNode(node);
    CameraNode& camera = *measured.GetCameraNode();
    const CameraNode& shown = m_presentation.GetCamera();
    camera.SetGlobal(shown.GetGlobal());
    camera.SetProjection(shown.GetProjection());
    camera.SetFOV(shown.GetFOV());
    if (!SceneFit::Frame(camera, measured, aspect, ViewFitOptions().margin))
    {
        return false;
    }
    double distance = camera.GetDistanceToTarget();
    Transform place = camera.GetGlobal();
    if (m_presentation.GetSettings().view.orthographic)
    {
        // Settings have the height of the picture by way of the distance.
        constexpr double halfDegree = 3.14159265358979323846 / 360.0;
        const double wanted = distance * std::tan(double(camera.GetFOV()))
            / std::tan(m_presentation.GetSettings().view.fov * halfDegree);
        const QGM::Vector3d back = place.GetTransf3d().zDir();
        const Vector eye = place.GetPosition();
        const double further = wanted - distance;
        place.SetPosition(Vector(static_cast<float>(eye.x + back.x * further), static_cast<float>(eye.y + back.y * further),
                                 static_cast<float>(eye.z + back.z * further)));
        distance = wanted;
    }
    return m_presentation.SetCamera(place, static_cast<float>(distance));
}

} // namespace OV::Host
