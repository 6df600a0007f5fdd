#include "orvane_host/import/ModelImporter.h"
#include "orvane_host/import/NodePath.h"
#include "orvane_host/present/detail/PresentationImpl.h"
#include "orvane_host/present/detail/SceneBase.h"
#include "orvane_host/present/detail/SectionPlanes.h"
#include "orvane_host/present/detail/ShownPoints.h"
#include "orvane_host/present/detail/SunState.h"
#include "orvane_host/present/detail/TreeWalk.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace OV::Host
{

namespace
{

constexpr float UsualOutlineShare = 1.0f / 500.0f;

/// How deep below a cut its section lies, as a part of the outline and of the model. What stands in the cut, such as a
/// wall that meets another, shows so much of its side.
struct SectionInset
{
    float outline;
    float extent;

    bool operator==(const SectionInset& other) const { return outline == other.outline && extent == other.extent; }
};

SectionInset SectionInsetFor(const PresentationSettings& settings)
{
    // A driver that shades samples may look a little beside them; elsewhere there is rounding alone.
    const bool shadesSamples = settings.antialiasing == Antialiasing::Multisampling;
    // The outline is a band along the cut, which the basic look has not.
    const bool isOutlined = settings.look != Look::Basic;
    return {isOutlined ? (shadesSamples ? 1.25f : 1.002f) : 0.0f, shadesSamples ? 2e-4f : 2e-5f};
}

/// What a face in the dark keeps of its colour in the looks that shade every pixel. They take the
/// luminance of the ambient colour for it, where the basic look adds the colour itself.
constexpr float ShadeLevel = 0.5f;

bool ShadesEveryPixel(Look look)
{
    return look == Look::Advanced || look == Look::Phong;
}

/// Of light that the default light leaves room for. The looks that shade every pixel fade from the
/// whole colour to a share of it and add nothing, so that it needs to leave none.
float AmbientLevelFor(Look look)
{
    return ShadesEveryPixel(look) ? 0.0f : ImportOptions().ambientLevel;
}

std::uint64_t CountNodes(const Node& top)
{
    // Without recursion: a tree may be deeper than the stack.
    std::uint64_t count = 0;
    std::vector<const Node*> pending{&top};
    while (!pending.empty())
    {
        const Node* const node = pending.back();
        pending.pop_back();
        ++count;
        const NodeChildren children = node->EachChild();
        pending.insert(pending.end(), children.begin(), children.end());
    }
    return count;
}

/// Whether a field of settings differs.
template <typename Field>
bool Differs(const PresentationSettings& left, const PresentationSettings& right, Field field)
{
    PresentationSettings mixed = left;
    mixed.*field = right.*field;
    return mixed != left;
}

std::unique_ptr<Scene> SceneOf(ImportResult& model)
{
    return model.scene ? std::move(model.scene) : std::make_unique<Scene>();
}

/// Whether a node that was named to a presentation is there at all.
bool IsOf(const Scene& scene, const ImportedNode& node)
{
    return node.node && node.node->GetScene() == &scene;
}

bool IsSamePlace(const Vector& a, const Vector& b)
{
    return a.x == b.x && a.y == b.y && a.z == b.z;
}

} // namespace

Presentation::Impl::Impl(ImportResult model, bool numbersNodes) :
    report(std::move(model.report)),
    nodes(model.scene ? std::move(model.nodes) : std::vector<ImportedNode>()), meshes(std::move(model.meshes)),
    renderer(std::make_unique<Detail::HighlightRenderer>(&textures, app.GetContext()->GetRenderCapabilities()))
{
    app.GetContext()->SetScene(SceneOf(model));
    StandOn(World());
    if (!Detail::HasBase(World()))
    {
        Detail::GiveBase(World());
    }
    nodes.erase(std::remove_if(nodes.begin(), nodes.end(), [&](const ImportedNode& node) { return !IsOf(World(), node); }),
                nodes.end());
    // Titles and bars are laid out in pixels of the picture, however fine it is drawn.
    renderer->SetLayerRatio(1.0f);
    picking = std::make_unique<Picking>(*renderer);
    UpdateGlobals();
    if (numbersNodes)
    {
        TakeFirstFile(model.error.file);
    }
    else
    {
        m_isHostsScene = true;
        CountModel();
    }
    MakeLight();
    app.GetContext()->SetBackgroundColor(settings.background);
    Changes all;
    all.materials = all.view = true;
    UpdateScene(all);
}

Presentation::Impl::~Impl()
{
    // While the renderer is there, whose GL objects they have.
    m_lines->Hide();
    m_style.Reset();
    m_section->Forget();
}

void Presentation::Impl::StandOn(Scene& scene)
{
    m_style.Reset();
    m_lightWatch.Stop();
    visibility.emplace(scene);
    m_lostNodes.emplace(scene, nodes, *visibility);
    m_section.emplace(scene);
    m_lines.emplace(scene);
    m_materials.emplace(scene);
}

void Presentation::Impl::CountModel()
{
    report.nodes = CountNodes(*World().GetRoot());
    report.meshes = World().EachMesh().size();
    report.triangles = 0;
    for (const Mesh* mesh : World().EachMesh())
    {
        const bool isPoints = mesh->GetMaterial() && (mesh->GetMaterial()->GetFlags() & MaterialFlagPoints) != 0;
        report.triangles += isPoints ? 0 : mesh->GetNumIndices() / 3;
    }
    const std::optional<Box> box = BoxOf(AllPoints());
    report.hasBox = box.has_value();
    report.boxMin = box ? box->low : Vector();
    report.boxMax = box ? box->high : Vector();
}

void Presentation::Impl::MakeLight()
{
    if (OwnLight())
    {
        return;
    }
    m_light = ModelImporter::AddDefaultLights(World(), AmbientLevelFor(settings.look));
    if (m_light)
    {
        m_lightWatch.Watch(m_light->GetLifetime());
    }
}

float Presentation::Impl::Extent() const
{
    const Vector& a = report.boxMin;
    const Vector& b = report.boxMax;
    return report.hasBox ? std::hypot(b.x - a.x, b.y - a.y, b.z - a.z) : 1.0f;
}

float Presentation::Impl::OutlineWidth() const
{
    return settings.section.outlineWidth.value_or(Extent() * UsualOutlineShare);
}

void Presentation::Impl::UpdateGlobals()
{
    World().GetRoot()->UpdateGraph();
    // Nodes of the host's may do anything meanwhile.
    FollowScene();
}

Node* Presentation::Impl::FindNode(const std::string& path) const
{
    return path.empty() ? nullptr : Paths().Find(path);
}

const Node* Presentation::Impl::OwnNode(const Node& node)
{
    if (node.GetScene() != &World())
    {
        // Nobody would tell when it is gone.
        return nullptr;
    }
    m_lostNodes->Watch(node);
    return &node;
}

const NodePaths& Presentation::Impl::Paths() const
{
    if (!m_paths)
    {
        m_paths = std::make_unique<NodePaths>(nodes);
    }
    return *m_paths;
}

bool Presentation::Impl::Check(const PresentationSettings& wanted, Brought& brought, std::string& error) const
{
    if (wanted.view.eye && IsSamePlace(*wanted.view.eye, wanted.view.target.value_or(MiddleOfModel())))
    {
        error = "view.eye: the eye is where it looks at; move it or view.target";
        return false;
    }
    const std::string trouble = wanted.Trouble();
    if (!trouble.empty())
    {
        error = trouble;
        return false;
    }
    if (!wanted.editPath.empty() && !FindNode(wanted.editPath))
    {
        const std::string names = SomeNodeNames(nodes);
        error = "editPath: there is no node '" + wanted.editPath + "'"
            + (names.empty() ? "; no node has a name" : "; some that there are: " + names);
        return false;
    }
    if (wanted.sun)
    {
        std::optional<SunState> found = Detail::FindSun(*wanted.sun, report, wanted.view.upAxis, error);
        if (!found)
        {
            return false;
        }
        brought.sun = std::move(*found);
    }
    const std::string& file = wanted.sheet.watermark;
    if (!file.empty() && file != settings.sheet.watermark)
    {
        std::string reason;
        brought.watermark = Watermark::Read(file, reason);
        if (!brought.watermark)
        {
            error = file + ": " + reason;
            return false;
        }
    }
    return ReadSurroundings(wanted, brought, error);
}

Presentation::Impl::Changes Presentation::Impl::ChangesTo(const PresentationSettings& wanted) const
{
    using S = PresentationSettings;
    const auto differs = [&](auto field) { return Differs(settings, wanted, field); };
    Changes changes;
    changes.section = differs(&S::section)
        || (!wanted.section.planes.empty() && !(SectionInsetFor(wanted) == SectionInsetFor(settings)));
    changes.lines = settings.lines.has_value() != wanted.lines.has_value()
        || (settings.lines && settings.lines->crease != wanted.lines->crease);
    changes.materials = differs(&S::look) || differs(&S::cullBacks) || differs(&S::lines) || differs(&S::antialiasing)
        || differs(&S::surroundings);
    changes.view = differs(&S::view) || differs(&S::sun) || differs(&S::shadows) || differs(&S::ground);
    changes.sheet = differs(&S::sheet);
    S behind = wanted;
    behind.sheet = settings.sheet;
    behind.sheet.watermark = wanted.sheet.watermark;
    changes.picture = behind != settings;
    return changes;
}

bool Presentation::Impl::Apply(const PresentationSettings& wanted, std::string& error)
{
    Brought brought;
    if (!Check(wanted, brought, error))
    {
        return false;
    }
    const Changes changes = ChangesTo(wanted);
    if (wanted.ground.has_value() != settings.ground.has_value() || wanted.view.upAxis != settings.view.upAxis
        || (wanted.ground && wanted.ground->height != settings.ground->height))
    {
        m_contactShadow.reset();
    }
    if (wanted.sheet.watermark != settings.sheet.watermark)
    {
        m_watermark = std::move(brought.watermark);
        m_isWatermarkLaid = false;
    }
    m_surroundings = std::move(brought.surroundings);
    settings = wanted;
    sun = std::move(brought.sun);
    app.GetContext()->SetBackgroundColor(settings.background);
    UpdateScene(changes);
    if (changes.sheet)
    {
        m_sheet.reset();
        m_isForegroundChanged = true;
    }
    m_isPictureChanged = m_isPictureChanged || changes.picture;
    return true;
}

void Presentation::Impl::UpdateScene(const Changes& changes)
{
    // Lines go round the section, so that they follow it.
    const bool movesLines = changes.lines || (changes.section && settings.lines);
    if (movesLines)
    {
        m_lines->Hide();
        World().RemoveLineStyle(m_style.Get());
    }
    if (changes.section)
    {
        CutSection();
        m_areNotesStale = true;
        m_isContactShadowStale = true;
    }
    m_sunLight.GiveBack(World());
    if (changes.section || changes.materials)
    {
        UpdateLight();
        UpdateMaterials();
    }
    if (sun.direction)
    {
        m_sunLight.Take(World(), *sun.direction, 1.0f - AmbientLevelFor(settings.look));
    }
    UpdateStyle();
    if (movesLines && settings.lines)
    {
        World().AddLineStyle(&Style());
        m_lines->Show(Style(), settings.lines->crease);
    }
    UpdateEdit();
    if (changes.view)
    {
        PlaceCamera();
    }
}

void Presentation::Impl::CutSection()
{
    UpdateGlobals();
    std::optional<SectionFaces::Fill> fill;
    if (settings.section.fill)
    {
        const SectionInset inset = SectionInsetFor(settings);
        fill = {inset.outline * OutlineWidth() + inset.extent * Extent(), *settings.section.fill};
    }
    m_section->Cut(Detail::SectionPlanesOf(settings.section), fill);
}

float Presentation::Impl::LineScale() const
{
    return settings.antialiasing == Antialiasing::Supersampling ? 2.0f : 1.0f;
}

LineStyle& Presentation::Impl::Style()
{
    if (!m_style.Get())
    {
        auto style = std::make_unique<LineStyle>("edges");
        style->secondColor = Color(0.0f, 0.0f, 0.0f, 0.0f); // it is added, and starts white
        // The samples of the picture smooth the rims; a line that fades to its rims would be blurred
        // besides, and would hide what is behind where it is all but transparent.
        style->antialias = false;
        m_style.Reset(std::move(style));
    }
    return *m_style.Get();
}

void Presentation::Impl::UpdateStyle()
{
    const LineSettings look = settings.lines.value_or(LineSettings());
    LineStyle& style = Style();
    style.color = look.color;
    style.width = look.width * m_ratio / 2.0f;
    style.SetDashed(look.dash.has_value());
    // Dashes are measured in pixels of what is drawn.
    style.SetDashFrequency(look.dash.value_or(1.0f) * m_ratio * LineScale());
    style.offset = look.offset;
}

void Presentation::Impl::UpdateMaterials()
{
    Detail::MaterialSettings::Wanted wanted;
    wanted.showsBacks = !settings.cullBacks;
    if (ShadesEveryPixel(settings.look))
    {
        wanted.ambient = Color(ShadeLevel, ShadeLevel, ShadeLevel);
        wanted.reflects = !settings.surroundings.empty();
    }
    else
    {
        wanted.shareWithoutLight = AmbientLevelFor(settings.look);
    }
    wanted.cutsUnlit = settings.look == Look::Basic && !settings.section.planes.empty();
    if (settings.lines)
    {
        wanted.room = FeatureEdges::RoomFor(settings.lines->width * m_ratio, LineScale());
    }
    m_materials->Apply(wanted, *m_section);
}

void Presentation::Impl::UpdateLight()
{
    if (LightNode* const light = OwnLight())
    {
        const float strength = 1.0f - AmbientLevelFor(settings.look);
        light->SetColor(strength, strength, strength);
    }
}

Vector Presentation::Impl::Up() const
{
    return UpDirection(settings.view.upAxis);
}

std::optional<PresentationRenderer::ShadowGround> Presentation::Impl::ShadowGroundOfModel() const
{
    if (!settings.ground || !report.hasBox)
    {
        return std::nullopt;
    }
    PresentationRenderer::ShadowGround ground;
    ground.darkness = settings.shadows ? settings.shadows->darkness : 0.0f;
    ground.up = Up();
    const float lowest = settings.view.upAxis == UpAxis::Z ? report.boxMin.z : report.boxMin.y;
    ground.position.Scale(settings.ground->height.value_or(lowest), ground.up);
    return ground;
}

void Presentation::Impl::UpdateEdit()
{
    if (const Node* const node = FindNode(settings.editPath))
    {
        renderer->EditInContext(node->GetPath());
    }
    else
    {
        renderer->LeaveEdit();
    }
}

void Presentation::Impl::SetVisibility(bool hasChanged)
{
    if (!hasChanged)
    {
        return;
    }
    m_areNotesStale = true;
    m_contactShadow.reset();
    // What is hidden is not cut.
    Changes changes;
    changes.section = !settings.section.planes.empty();
    UpdateScene(changes);
    m_isPictureChanged = true;
}

void Presentation::Impl::SetHighlight(const Node& node, const std::optional<Color>& color)
{
    if (color)
    {
        m_highlights[&node] = *color;
    }
    else
    {
        m_highlights.erase(&node);
    }
    UpdateHighlights();
}

void Presentation::Impl::ClearHighlights()
{
    m_highlights.clear();
    UpdateHighlights();
}

void Presentation::Impl::UpdateHighlights()
{
    Detail::HighlightRenderer::Colors colors;
    if (!m_highlights.empty())
    {
        const Color* const none = nullptr;
        Detail::WalkTree(*World().GetRoot(), none, [&](Node& node, const Color* color) {
            const auto own = m_highlights.find(&node);
            color = own == m_highlights.end() ? color : &own->second;
            auto* const meshNode = dynamic_cast<MeshNode*>(&node);
            if (color && meshNode)
            {
                colors.emplace_back(meshNode, *color);
            }
            return color;
        });
    }
    renderer->SetHighlights(std::move(colors));
    m_isPictureChanged = true;
}

bool Presentation::Impl::IsOfModel(const Mesh& mesh) const
{
    if (mesh.Type() == NodeTypeLine)
    {
        // Of the host's, but not of the edges, which follow the model.
        const LineStyle* const style = static_cast<const Line&>(mesh).GetStyle();
        return style && style != m_style.Get();
    }
    return mesh.GetMaterial() && mesh.GetMaterial() != m_section->GetMaterial();
}

} // namespace OV::Host
