// The presentation behind a model: settings, nodes by their paths, the view, pictures and picking.
#include "python/native/Model.h"

#include "python/native/Engine.h"
#include "python/native/Refused.h"
#include "orvane_host/import/NodePath.h"
#include "orvane_host/present/SunHoursMap.h"
#include "orvane/math/Transform.h"
#include "orvane/overlay/Text.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <utility>

namespace OV::Python
{

namespace
{

/// All that have a presentation, on the thread of the engine.
std::set<Model*>& OpenModels()
{
    static auto* const models = []
    {
        auto* const made = new std::set<Model*>;
        Engine::Get().AtStop(
            [made]
            {
                while (!made->empty())
                {
                    (*made->begin())->Close();
                }
            });
        return made;
    }();
    return *models;
}

} // namespace

void DropAlpha(std::vector<unsigned char>& pixels)
{
    std::size_t to = 0;
    for (std::size_t from = 0; from + 3 < pixels.size(); from += 4, to += 3)
    {
        pixels[to] = pixels[from];
        pixels[to + 1] = pixels[from + 1];
        pixels[to + 2] = pixels[from + 2];
    }
    pixels.resize(to);
}

void NeedSize(PictureSize size)
{
    if (size.width < 1 || size.height < 1)
    {
        throw Refused(Trouble::Value, "a picture of " + std::to_string(size.width) + "x"
                                          + std::to_string(size.height) + " has no pixels; give 1x1 or more");
    }
}

Model::Model(Host::ImportResult model) : m_presentation(std::make_unique<Host::Presentation>(std::move(model)))
{
    OpenModels().insert(this);
    TakeNames();
}

Model::Model() : m_presentation(std::make_unique<Host::Presentation>(std::make_unique<Scene>()))
{
    OpenModels().insert(this);
}

Model::~Model()
{
    if (m_presentation)
    {
        Close();
    }
}

void Model::Close()
{
    OpenModels().erase(this);
    m_texts.clear();
    m_map.reset();
    m_presentation.reset();
    m_meshes.clear();
}

Host::Presentation& Model::Opened()
{
    if (!m_presentation)
    {
        throw Refused(Trouble::Closed, "the model is closed; open it again");
    }
    return *m_presentation;
}

Host::Presentation& Model::Fresh()
{
    Host::Presentation& presentation = Opened();
    if (std::exchange(m_isStale, false))
    {
        presentation.Refresh();
        if (RemoveOrphans())
        {
            presentation.Refresh(); // which counts what there is
        }
    }
    return presentation;
}

void Model::NeedNode(bool isFound, const std::string& path)
{
    if (isFound)
    {
        return;
    }
    const std::string names = Host::SomeNodeNames(m_presentation->GetNodes());
    throw Refused(Trouble::Node, "there is no node '" + path + "'"
                                     + (names.empty() ? "; no node has a name" : "; some that there are: " + names));
}

std::string Model::Settings()
{
    return Opened().GetSettings().ToJSON();
}

void Model::Apply(const std::string& json)
{
    Host::Presentation& presentation = Fresh();
    std::string error;
    const std::optional<Host::PresentationSettings> settings = Host::PresentationSettings::FromJSON(json, error);
    if (!settings || !presentation.Apply(*settings, error))
    {
        throw Refused(Trouble::Settings, error);
    }
}

std::vector<std::string> Model::ListNodes()
{
    return Fresh().ListNodes();
}

void Model::Hide(const std::string& path)
{
    NeedNode(Fresh().Hide(path), path);
}

void Model::Show(const std::string& path)
{
    NeedNode(Fresh().Show(path), path);
}

void Model::Isolate(const std::string& path)
{
    NeedNode(Fresh().Isolate(path), path);
}

void Model::ShowAll()
{
    Fresh().ShowAll();
}

void Model::Highlight(const std::string& path, const Color& color)
{
    NeedNode(Fresh().Highlight(path, color), path);
}

void Model::ClearHighlight(const std::optional<std::string>& path)
{
    if (path)
    {
        NeedNode(Fresh().ClearHighlight(*path), *path);
    }
    else
    {
        Fresh().ClearHighlights();
    }
}

std::optional<Host::Presentation::Box> Model::ModelBox()
{
    return Fresh().GetModelBox();
}

std::optional<Host::Presentation::Box> Model::ShownBox()
{
    return Fresh().GetShownBox();
}

bool Model::FrameAll()
{
    return Fresh().FrameAll();
}

bool Model::FrameShown()
{
    return Fresh().FrameShown();
}

bool Model::FrameNode(const std::string& path)
{
    NeedNode(Fresh().FindNode(path) != nullptr, path);
    return m_presentation->FrameNode(path);
}

void Model::SetCamera(const Vector& eye, const Vector& target, const std::optional<Vector>& up)
{
    Host::Presentation& presentation = Fresh();
    if (!(up ? presentation.SetCamera(eye, target, *up) : presentation.SetCamera(eye, target)))
    {
        throw Refused(Trouble::Value, "the eye is where it looks at, or a coordinate is no number from -1e15 to 1e15; "
                                      "move the eye or the target");
    }
}

CameraPlace Model::Camera()
{
    const CameraNode& camera = Fresh().GetCamera();
    const auto& m = camera.GetGlobal().GetTransf3d().m;
    const double distance = static_cast<double>(camera.GetDistanceToTarget());
    CameraPlace place;
    place.eye = camera.GetGlobal().GetPosition();
    place.target = Vector(static_cast<float>(m[0][3] - m[0][2] * distance),
                          static_cast<float>(m[1][3] - m[1][2] * distance),
                          static_cast<float>(m[2][3] - m[2][2] * distance));
    place.up = Vector(static_cast<float>(m[0][1]), static_cast<float>(m[1][1]), static_cast<float>(m[2][1]));
    return place;
}

Host::Presentation& Model::ReadyFor(const Host::PictureOptions& options)
{
    Host::Presentation& presentation = Fresh();
    if (options.transparent && presentation.GetSettings().sky)
    {
        throw Refused(Trouble::Value, "the sky covers the background, which is to be transparent; leave one of them out");
    }
    Engine::Get().NeedContext();
    LayOut({options.width, options.height});
    return presentation;
}

std::vector<unsigned char> Model::TakePicture(const Host::PictureOptions& options)
{
    std::vector<unsigned char> pixels;
    std::string error;
    if (!ReadyFor(options).TakePicture(pixels, options, error))
    {
        throw Refused(Trouble::Value, error);
    }
    if (!options.transparent)
    {
        DropAlpha(pixels);
    }
    return pixels;
}

void Model::SavePicture(const std::string& path, const Host::PictureOptions& options)
{
    std::string error;
    if (!ReadyFor(options).SavePicture(path, options, error))
    {
        throw Refused(Trouble::File, path + ": " + error);
    }
}

std::vector<Hit> Model::Told(const std::vector<Host::PickHit>& hits)
{
    std::vector<Hit> told;
    for (const Host::PickHit& hit : hits)
    {
        Hit& made = told.emplace_back();
        made.node = IdOf(*hit.node);
        made.path = m_presentation->PathOf(*hit.node);
        for (const Host::ImportedMesh& mesh : m_presentation->GetMeshes())
        {
            if (mesh.mesh == hit.mesh)
            {
                made.mesh = mesh.name;
                break;
            }
        }
        made.depth = hit.depth;
        made.position = hit.position;
        made.x = hit.x;
        made.y = hit.y;
    }
    return told;
}

std::vector<Hit> Model::Pick(const Host::PickArea& area, PictureSize size)
{
    Host::Presentation& presentation = Fresh();
    NeedSize(size);
    Engine::Get().NeedContext();
    presentation.Resize(size.width, size.height);
    return Told(presentation.Pick(area));
}

std::vector<Hit> Model::PickThrough(int x, int y, int most, PictureSize size)
{
    Host::Presentation& presentation = Fresh();
    NeedSize(size);
    Engine::Get().NeedContext();
    presentation.Resize(size.width, size.height);
    return Told(presentation.PickThrough(x, y, most));
}

Host::ImportReport Model::Report()
{
    return Fresh().GetReport();
}

Host::PresentationStatistics Model::Statistics()
{
    Host::Presentation& presentation = Fresh();
    Engine::Get().NeedContext();
    return presentation.GetStatistics();
}

} // namespace OV::Python
