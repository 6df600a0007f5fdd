#include "orvane_host/present/Presentation.h"

#include "orvane_host/import/ModelImporter.h"
#include "orvane_host/import/NodePath.h"
#include "orvane_host/present/detail/PresentationImpl.h"
#include "orvane_host/present/detail/SheetText.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <utility>

namespace OV::Host
{

namespace
{

ImportResult AsModel(std::unique_ptr<Scene> scene, std::vector<ImportedNode> nodes)
{
    ImportResult model;
    model.status = ImportStatus::Done;
    model.scene = std::move(scene);
    model.nodes = std::move(nodes);
    return model;
}

} // namespace

std::unique_ptr<Presentation> Presentation::Open(const std::string& path, std::string& error,
                                                 const ImportOptions& options)
{
    ImportResult model = ModelImporter::Import(path, options);
    if (!model)
    {
        error = model.error.Line();
        return nullptr;
    }
    return std::make_unique<Presentation>(std::move(model));
}

Presentation::Presentation(ImportResult model) : m_impl(std::make_unique<Impl>(std::move(model), true))
{
}

Presentation::Presentation(std::unique_ptr<Scene> scene, std::vector<ImportedNode> nodes) :
    m_impl(std::make_unique<Impl>(AsModel(std::move(scene), std::move(nodes)), false))
{
}

Presentation::~Presentation() = default;

bool Presentation::Apply(const PresentationSettings& settings, std::string& error)
{
    return m_impl->Followed().Apply(settings, error);
}

const PresentationSettings& Presentation::GetSettings() const
{
    return m_impl->settings;
}

const SunState& Presentation::GetSun() const
{
    return m_impl->sun;
}

void Presentation::Refresh()
{
    m_impl->Refresh();
}

void Presentation::AddName(Node& node, const std::string& name)
{
    std::vector<ImportedNode>& nodes = m_impl->Followed().nodes;
    if (node.GetScene() != &m_impl->World())
    {
        // Nobody would tell when it is gone.
        return;
    }
    const auto known = std::find_if(nodes.begin(), nodes.end(),
                                    [&](const ImportedNode& entry) { return entry.node == &node; });
    if (known == nodes.end())
    {
        nodes.push_back({name, &node});
    }
    else
    {
        known->name = name;
    }
    m_impl->ForgetPaths();
}

bool Presentation::Add(ImportResult model, std::string& error)
{
    return m_impl->Followed().Add(std::move(model), error);
}

bool Presentation::Replace(std::size_t file, ImportResult model, std::string& error)
{
    return m_impl->Followed().Replace(file, std::move(model), error);
}

bool Presentation::Remove(std::size_t file)
{
    return m_impl->Followed().Remove(file);
}

const std::vector<PresentedFile>& Presentation::GetFiles() const
{
    return m_impl->Followed().files;
}

std::vector<std::string> Presentation::ListNodes() const
{
    return ListNodePaths(m_impl->Followed().nodes);
}

Node* Presentation::FindNode(const std::string& path) const
{
    return m_impl->Followed().FindNode(path);
}

std::string Presentation::PathOf(const Node& node) const
{
    return m_impl->Followed().Paths().PathTo(node);
}

const std::vector<ImportedNode>& Presentation::GetNodes() const
{
    return m_impl->Followed().nodes;
}

const std::vector<ImportedMesh>& Presentation::GetMeshes() const
{
    return m_impl->meshes;
}

const ImportReport& Presentation::GetReport() const
{
    return m_impl->report;
}

bool Presentation::Hide(const std::string& path)
{
    const Node* const node = FindNode(path);
    return node && Hide(*node);
}

bool Presentation::Hide(const Node& node)
{
    const Node* const own = m_impl->Followed().OwnNode(node);
    m_impl->SetVisibility(own && m_impl->visibility->Hide(*own));
    return own != nullptr;
}

bool Presentation::Show(const std::string& path)
{
    const Node* const node = FindNode(path);
    return node && Show(*node);
}

bool Presentation::Show(const Node& node)
{
    const Node* const own = m_impl->Followed().OwnNode(node);
    m_impl->SetVisibility(own && m_impl->visibility->Show(*own));
    return own != nullptr;
}

bool Presentation::Isolate(const std::string& path)
{
    const Node* const node = FindNode(path);
    return node && Isolate(*node);
}

bool Presentation::Isolate(const Node& node)
{
    const Node* const own = m_impl->Followed().OwnNode(node);
    m_impl->SetVisibility(own && m_impl->visibility->Isolate(*own));
    return own != nullptr;
}

void Presentation::ShowAll()
{
    m_impl->SetVisibility(m_impl->Followed().visibility->ShowAll());
}

bool Presentation::Highlight(const std::string& path, const Color& color)
{
    const Node* const node = FindNode(path);
    return node && Highlight(*node, color);
}

bool Presentation::Highlight(const Node& node, const Color& color)
{
    const Node* const own = m_impl->Followed().OwnNode(node);
    if (own)
    {
        m_impl->SetHighlight(*own, color);
    }
    return own != nullptr;
}

bool Presentation::ClearHighlight(const std::string& path)
{
    const Node* const node = FindNode(path);
    return node && ClearHighlight(*node);
}

bool Presentation::ClearHighlight(const Node& node)
{
    const Node* const own = m_impl->Followed().OwnNode(node);
    if (own)
    {
        m_impl->SetHighlight(*own, std::nullopt);
    }
    return own != nullptr;
}

void Presentation::ClearHighlights()
{
    m_impl->Followed().ClearHighlights();
}

bool Presentation::SetDimensions(std::vector<Dimension> dimensions)
{
    return m_impl->SetDimensions(std::move(dimensions));
}

const std::vector<Dimension>& Presentation::GetDimensions() const
{
    return m_impl->dimensions;
}

bool Presentation::AddLabel(const std::string& path, const std::string& text)
{
    return m_impl->SetLabel(m_impl->Followed().FindNode(path), &text);
}

bool Presentation::AddLabel(const Node& node, const std::string& text)
{
    return m_impl->SetLabel(m_impl->Followed().OwnNode(node), &text);
}

bool Presentation::RemoveLabel(const std::string& path)
{
    return m_impl->SetLabel(m_impl->Followed().FindNode(path), nullptr);
}

bool Presentation::RemoveLabel(const Node& node)
{
    return m_impl->SetLabel(m_impl->Followed().OwnNode(node), nullptr);
}

void Presentation::ClearLabels()
{
    m_impl->Followed().ClearLabels();
}

std::string Presentation::GetUnit() const
{
    return Detail::UnitSign(m_impl->report.metresPerUnit);
}

bool Presentation::SetUnit(double metres)
{
    return m_impl->Followed().SetUnit(metres);
}

std::optional<Presentation::Box> Presentation::GetModelBox() const
{
    if (!m_impl->report.hasBox)
    {
        return std::nullopt;
    }
    return Box{m_impl->report.boxMin, m_impl->report.boxMax};
}

std::optional<Presentation::Box> Presentation::GetShownBox() const
{
    Impl& impl = m_impl->Followed();
    return impl.BoxOf(impl.ShownPointsBelow(*impl.World().GetRoot()));
}

bool Presentation::FrameAll()
{
    Impl& impl = m_impl->Followed();
    return impl.Frame(impl.AllPoints());
}

bool Presentation::FrameNode(const std::string& path)
{
    const Node* const node = FindNode(path);
    return node && FrameNode(*node);
}

bool Presentation::FrameNode(const Node& node)
{
    const Node* const own = m_impl->Followed().OwnNode(node);
    return own && m_impl->Frame(m_impl->ShownPointsBelow(*own));
}

bool Presentation::FrameShown()
{
    Impl& impl = m_impl->Followed();
    return impl.Frame(impl.ShownPointsBelow(*impl.World().GetRoot()));
}

bool Presentation::SetCamera(const Vector& eye, const Vector& target)
{
    return m_impl->Followed().LookFrom(eye, target, std::nullopt);
}

bool Presentation::SetCamera(const Vector& eye, const Vector& target, const Vector& up)
{
    return m_impl->Followed().LookFrom(eye, target, up);
}

bool Presentation::SetCamera(const Transform& place, float distance)
{
    const auto& m = place.GetTransf3d().m;
    const Vector eye = place.GetPosition();
    Vector back(static_cast<float>(m[0][2]), static_cast<float>(m[1][2]), static_cast<float>(m[2][2]));
    const float length = back.Magnitude();
    if (!(length > 0.0f) || !(distance > 0.0f))
    {
        return false;
    }
    const float reach = distance / length;
    return m_impl->Followed().LookFrom(eye, Vector(eye.x - back.x * reach, eye.y - back.y * reach, eye.z - back.z * reach),
                        Vector(static_cast<float>(m[0][1]), static_cast<float>(m[1][1]), static_cast<float>(m[2][1])));
}

bool Presentation::SetViewHeight(double height)
{
    return m_impl->Followed().SetViewHeight(height);
}

double Presentation::GetViewHeight() const
{
    return m_impl->Followed().ViewHeight();
}

void Presentation::Resize(int width, int height, float pixelRatio)
{
    m_impl->Followed().Resize(width, height, pixelRatio);
}

void Presentation::Prepare()
{
    m_impl->Prepare();
}

void Presentation::Draw(int width, int height, float pixelRatio)
{
    m_impl->Draw(width, height, pixelRatio);
}

void Presentation::Hurry(bool hurry)
{
    m_impl->Followed().Hurry(hurry);
}

bool Presentation::NeedsDraw() const
{
    return m_impl->Followed().NeedsDraw();
}

void Presentation::Suspend()
{
    m_impl->Suspend();
}

void Presentation::Resume()
{
    m_impl->Resume();
}

bool Presentation::TakePicture(std::vector<unsigned char>& rgba, int width, int height, std::string& error,
                               float pixelRatio)
{
    PictureOptions options;
    options.width = width;
    options.height = height;
    options.pixelRatio = pixelRatio;
    return TakePicture(rgba, options, error);
}

bool Presentation::TakePicture(std::vector<unsigned char>& rgba, const PictureOptions& options, std::string& error)
{
    PictureOptions bytes = options;
    bytes.bits = 8;
    return m_impl->Followed().TakePicture(rgba, bytes, error);
}

bool Presentation::SavePicture(const std::string& path, int width, int height, std::string& error, float pixelRatio)
{
    PictureOptions options;
    options.width = width;
    options.height = height;
    options.pixelRatio = pixelRatio;
    return SavePicture(path, options, error);
}

bool Presentation::SavePicture(const std::string& path, const PictureOptions& options, std::string& error,
                               PictureFacts* facts)
{
    PictureFacts unasked;
    return m_impl->Followed().SavePicture(path, options, facts ? *facts : unasked, error);
}

bool Presentation::WritePicture(PictureFile& file, const PictureOptions& options, std::string& error,
                                PictureFacts* facts)
{
    PictureFacts unasked;
    return m_impl->Followed().WritePicture(file, options, facts ? *facts : unasked, error);
}

std::optional<PickHit> Presentation::Pick(int x, int y)
{
    const std::vector<PickHit> hits = m_impl->Pick({x, y, 1, 1});
    return hits.empty() ? std::nullopt : std::optional<PickHit>(hits.front());
}

std::vector<PickHit> Presentation::Pick(const PickArea& area)
{
    return m_impl->Pick(area);
}

std::vector<PickHit> Presentation::PickThrough(int x, int y, int most)
{
    return m_impl->PickThrough(x, y, most);
}

PresentationStatistics Presentation::GetStatistics() const
{
    const CoreContext& context = *m_impl->Followed().app.GetContext();
    std::vector<const Scene*> scenes = {context.GetScene(), context.GetBackground2D(), context.GetForeground2D()};
    if (const Scene* const sky = m_impl->renderer->GetSkyScene())
    {
        scenes.push_back(sky);
    }
    PresentationStatistics statistics{m_impl->report.nodes, m_impl->report.meshes, m_impl->report.triangles,
                                      m_impl->report.coplanarPairs, CountDraws(scenes), m_impl->renderer->CountBatches()};
    // Of what is in a batch only the batch is drawn.
    DrawCounts& drawn = statistics.drawn;
    const BatchCounts& batches = statistics.batches;
    drawn.draws += batches.batches;
    drawn.drawnTriangles += batches.triangles;
    drawn.buffers += 2 * batches.batches;
    drawn.bytes += batches.bytes;
    return statistics;
}

Scene& Presentation::GetScene() const
{
    return m_impl->Followed().World();
}

CameraNode& Presentation::GetCamera() const
{
    return m_impl->Followed().Camera();
}

AppContext& Presentation::GetContext() const
{
    return m_impl->app;
}

PresentationRenderer& Presentation::GetRenderer() const
{
    return *m_impl->renderer;
}

Scene2D& Presentation::GetBackground() const
{
    return *m_impl->app.GetContext()->GetBackground2D();
}

Scene2D& Presentation::GetForeground() const
{
    return *m_impl->app.GetContext()->GetForeground2D();
}

} // namespace OV::Host
