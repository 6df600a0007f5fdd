// Several files in one model, what stands on its picture, and what its sun does.
#include "python/native/Model.h"

#include "python/native/Engine.h"
#include "python/native/Refused.h"
#include "orvane_host/present/SunHoursMap.h"
#include "orvane_host/present/SunStudy.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace OV::Python
{

namespace
{

bool IsBelow(const Node* node, const Node& top)
{
    while (node && node != &top)
    {
        node = node->GetParent();
    }
    return node != nullptr;
}

} // namespace

std::vector<std::string> Model::Files()
{
    std::vector<std::string> paths;
    for (const Host::PresentedFile& file : Opened().GetFiles())
    {
        paths.push_back(file.path);
    }
    return paths;
}

void Model::AddFile(Host::ImportResult file)
{
    Host::Presentation& presentation = Fresh();
    std::string error;
    if (!presentation.Add(std::move(file), error))
    {
        throw Refused(Trouble::File, error);
    }
    TakeNames();
}

void Model::ReplaceFile(std::size_t place, Host::ImportResult file)
{
    Host::Presentation& presentation = Fresh();
    const std::vector<Mesh*> gone = MeshesOf(FileAt(place));
    std::string error;
    if (!presentation.Replace(place, std::move(file), error))
    {
        throw Refused(Trouble::File, error);
    }
    Forget(gone);
    TakeNames();
}

void Model::RemoveFile(std::size_t place)
{
    Host::Presentation& presentation = Fresh();
    const std::vector<Mesh*> gone = MeshesOf(FileAt(place));
    presentation.Remove(place);
    Forget(gone);
}

Node* Model::FileAt(std::size_t place)
{
    const std::vector<Host::PresentedFile>& files = Opened().GetFiles();
    if (place >= files.size())
    {
        throw Refused(Trouble::Value, "the model has " + std::to_string(files.size()) + " files and none at "
                                          + std::to_string(place));
    }
    return files[place].top;
}

std::vector<Mesh*> Model::MeshesOf(const Node* top) const
{
    std::vector<Mesh*> found;
    std::copy_if(m_meshes.begin(), m_meshes.end(), std::back_inserter(found),
                 [top](const Mesh* mesh)
                 {
                     const PointerSpan<MeshNode> nodes = mesh->EachNode();
                     return top && !nodes.empty()
                         && std::all_of(nodes.begin(), nodes.end(),
                                        [top](const MeshNode* node) { return IsBelow(node, *top); });
                 });
    return found;
}

void Model::Forget(const std::vector<Mesh*>& meshes)
{
    for (Mesh* const mesh : meshes)
    {
        m_meshes.erase(mesh);
    }
}

void Model::TakeNames()
{
    for (const Host::ImportedNode& node : m_presentation->GetNodes())
    {
        m_names.insert(node.name);
    }
    m_nextNumber = std::max(m_nextNumber, static_cast<int>(m_names.size()));
}

void Model::SetDimensions(std::vector<Host::Dimension> dimensions)
{
    if (!Fresh().SetDimensions(std::move(dimensions)))
    {
        throw Refused(Trouble::Value, "a dimension goes from one place to another, or is an angle of three; every "
                                      "coordinate has to be finite");
    }
}

std::vector<std::pair<Host::Dimension, std::string>> Model::Dimensions()
{
    const Host::Presentation& presentation = Opened();
    std::vector<std::pair<Host::Dimension, std::string>> told;
    for (const Host::Dimension& dimension : presentation.GetDimensions())
    {
        told.emplace_back(dimension, dimension.Text(presentation.GetUnit()));
    }
    return told;
}

void Model::Label(const std::string& path, const std::string& text)
{
    NeedNode(Fresh().AddLabel(path, text), path);
}

void Model::ClearLabel(const std::optional<std::string>& path)
{
    if (path)
    {
        NeedNode(Fresh().RemoveLabel(*path), *path);
    }
    else
    {
        Fresh().ClearLabels();
    }
}

Host::SunState Model::Sun()
{
    return Fresh().GetSun();
}

Host::SunStudyTimes Model::TimesOf(const std::string& text)
{
    const Host::Presentation& presentation = Opened();
    const std::optional<Host::SunSettings>& sun = presentation.GetSettings().sun;
    double longitude = 0.0;
    if (sun && sun->place)
    {
        longitude = sun->place->longitude;
    }
    else if (const auto& own = presentation.GetReport().place)
    {
        longitude = own->longitude;
    }
    std::string reason;
    const auto times = Host::SunStudyTimes::Parse(text, reason, Host::SunStudy::NominalOffset(longitude));
    if (!times)
    {
        throw Refused(Trouble::Value, "times is '" + text + "'; " + reason);
    }
    return *times;
}

std::vector<unsigned char> Model::SunStudy(const std::string& times, PictureSize size)
{
    Host::Presentation& presentation = Fresh();
    NeedSize(size);
    const Host::SunStudyTimes moments = TimesOf(times);
    Engine::Get().NeedContext();
    LayOut(size);
    std::vector<unsigned char> pixels;
    std::string error;
    if (!Host::SunStudy::DrawSheet(presentation, moments, size.width, size.height, pixels, error))
    {
        throw Refused(Trouble::Value, error);
    }
    DropAlpha(pixels);
    return pixels;
}

SunHours Model::ShowSunHours(const std::string& times, const std::string& surface)
{
    Host::Presentation& presentation = Fresh();
    const Host::SunStudyTimes moments = TimesOf(times);
    Engine::Get().NeedContext();
    auto map = std::make_unique<Host::SunHoursMap>(presentation);
    std::string error;
    if (!map->Show(moments, surface, error))
    {
        throw Refused(Trouble::Value, error);
    }
    m_map = std::move(map);
    SunHours told;
    told.most = m_map->GetMostHours();
    for (const Host::SunHoursMap::Piece& piece : m_map->GetPieces())
    {
        told.places.push_back(piece.middle.place);
        told.hours.push_back(piece.hours);
    }
    return told;
}

void Model::ClearSunHours()
{
    Opened();
    m_map.reset();
}

} // namespace OV::Python
