#pragma once

#include "orvane_host/present/PictureOptions.h"
#include "orvane_host/present/Presentation.h"
#include "orvane_host/present/SunSettings.h"
#include "orvane_host/present/SunStudy.h"
#include "orvane_host/sheet/Notes.h"
#include "orvane/base/WatchedPtr.h"
#include "orvane/math/Color.h"
#include "orvane/math/Vector.h"

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace OV
{

class Material;
class Mesh;
class MeshNode;
class Node;
class RawMesh;
class Text;
class Transform;

} // namespace OV

namespace OV::Host
{

class SunHoursMap;

} // namespace OV::Host

namespace OV::Python
{

class Model;

/// Triangles of a RawMesh that arrays of Python look into. At most one model shows them at a time, since
/// a RawMesh has one place for what a renderer makes of it.
struct Geometry
{
    std::shared_ptr<RawMesh> raw;
    std::weak_ptr<Model> owner; ///< of the engine's thread alone
};

/// Pixels for a texture: R, G, B, A, the bottom row first.
struct Pixels
{
    std::vector<unsigned char> rgba;
    int width = 0;
    int height = 0;
};

/// What of a material is to be set; what is none stays.
struct MaterialValues
{
    std::optional<Color> diffuse;
    std::optional<Color> ambient;
    std::optional<Color> specular;
    std::optional<Color> emissive;
    std::optional<float> shininess;
    std::optional<bool> isTwoSided;
    std::optional<bool> isUnlit;
    std::optional<Pixels> texture; ///< without pixels it takes the texture away
};

struct MaterialLook
{
    std::string name;
    Color diffuse;
    Color specular;
    Color emissive;
    float shininess = 0.0f;
    bool isTwoSided = false;
    bool isUnlit = false;
    bool hasTexture = false;
};

struct LineValues
{
    std::vector<Vector> points;
    bool isClosed = false;
    Color color;
    float width = 1.0f; ///< of all of the line, in pixels
    std::optional<float> dash;
    bool isOnTop = false;
};

struct TextValues
{
    std::string text;
    std::string font;
    int size = 16;
    Color color;
    /// Of the upper left corner of the text from that of the picture, or where below 0 of its lower
    /// right corners from each other; of the middle from the place that is followed.
    int x = 0;
    int y = 0;
    std::optional<std::uint64_t> node; ///< that it follows
    std::optional<Vector> place;       ///< in the world that it follows
};

/// What is seen at a pixel.
struct Hit
{
    std::uint64_t node = 0;
    std::string path;
    std::string mesh; ///< its name in the file, where it has one
    float depth = 1.0f;
    Vector position;
    int x = 0;
    int y = 0;
};

struct CameraPlace
{
    Vector eye;
    Vector target;
    Vector up;
};

/// Where and how the model is looked at, of a picture's size in pixels.
struct PictureSize
{
    int width = 0;
    int height = 0;
};

/// How long the sun shines on pieces of a surface.
struct SunHours
{
    std::vector<QGM::Point3d> places; ///< the middle of each piece, in the world
    std::vector<float> hours;
    double most = 0.0; ///< of the whole time
};

/// Refuses a picture without pixels.
void NeedSize(PictureSize size);

/// Closes the gaps that the fourth channel leaves.
void DropAlpha(std::vector<unsigned char>& pixels);

using NodeId = std::uint64_t;
using MaterialId = std::uint64_t;
using TextId = std::uint64_t;

/// A presentation, and what Python has put into it, by numbers that outlive what they stand for.
///
/// All of it belongs to the thread of the engine. What cannot be done is thrown as Refused.
class Model : public std::enable_shared_from_this<Model>
{
public:
    explicit Model(Host::ImportResult model);
    Model();
    ~Model();

    Model(const Model&) = delete;
    Model& operator=(const Model&) = delete;

    /// Lets go of everything; all that is asked afterwards is refused.
    void Close();
    bool IsClosed() const { return !m_presentation; }

    std::string Settings();
    void Apply(const std::string& json);

    std::vector<std::string> ListNodes();
    void Hide(const std::string& path);
    void Show(const std::string& path);
    void Isolate(const std::string& path);
    void ShowAll();
    void Highlight(const std::string& path, const Color& color);
    void ClearHighlight(const std::optional<std::string>& path);

    std::optional<Host::Presentation::Box> ModelBox();
    std::optional<Host::Presentation::Box> ShownBox();
    /// @return false where there is nothing to see.
    bool FrameAll();
    bool FrameShown();
    bool FrameNode(const std::string& path);
    void SetCamera(const Vector& eye, const Vector& target, const std::optional<Vector>& up);
    CameraPlace Camera();

    /// R, G, B, and straight alpha where it is to be transparent, the top row first.
    std::vector<unsigned char> TakePicture(const Host::PictureOptions& options);
    void SavePicture(const std::string& path, const Host::PictureOptions& options);
    std::vector<Hit> Pick(const Host::PickArea& area, PictureSize size);
    std::vector<Hit> PickThrough(int x, int y, int most, PictureSize size);
    Host::ImportReport Report();
    Host::PresentationStatistics Statistics();

    /// Where the files were read, in their order.
    std::vector<std::string> Files();
    void AddFile(Host::ImportResult file);
    void ReplaceFile(std::size_t place, Host::ImportResult file);
    void RemoveFile(std::size_t place);

    void SetDimensions(std::vector<Host::Dimension> dimensions);
    /// Each with its value as people read it.
    std::vector<std::pair<Host::Dimension, std::string>> Dimensions();
    void Label(const std::string& path, const std::string& text);
    void ClearLabel(const std::optional<std::string>& path);

    Host::SunState Sun();
    /// R, G, B, the top row first.
    /// @param times as Host::SunStudyTimes reads them.
    std::vector<unsigned char> SunStudy(const std::string& times, PictureSize size);
    /// Shows the map until ClearSunHours.
    SunHours ShowSunHours(const std::string& times, const std::string& surface);
    void ClearSunHours();

    MaterialId AddMaterial(const std::string& name, MaterialValues values);
    MaterialId FindMaterial(const std::string& name);
    void SetMaterial(MaterialId id, MaterialValues values);
    MaterialLook Look(MaterialId id);

    NodeId FindNode(const std::string& path);
    std::string PathOf(NodeId id);
    NodeId AddGroup(const std::string& name, std::optional<NodeId> parent, const Transform& place);
    NodeId AddMesh(const std::vector<std::shared_ptr<Geometry>>& parts, MaterialId material, const std::string& name,
                   std::optional<NodeId> parent, const Transform& place);
    /// Shows the meshes and lines that were put at a node at another place too.
    NodeId AddCopy(NodeId of, const std::string& name, std::optional<NodeId> parent, const Transform& place);
    NodeId AddLine(const LineValues& values, const std::string& name, std::optional<NodeId> parent,
                   const Transform& place);
    Transform PlaceOf(NodeId id);
    void SetPlace(NodeId id, const Transform& place);
    /// With all that is below it, and the meshes and lines that no other node shows.
    void Remove(NodeId id);
    /// Tells that the arrays of a geometry have changed.
    void Update(Geometry& geometry);

    TextId AddText(const TextValues& values);
    void SetText(TextId id, const std::string& text);
    void RemoveText(TextId id);

private:
    struct PlacedText
    {
        std::unique_ptr<Text> text;
        TextValues values;
        Node* anchor = nullptr; ///< made for a place in the world; in the scene's tree
    };

    /// The presentation as the changes made it.
    Host::Presentation& Fresh();
    Host::Presentation& Opened();
    /// @throw Refused where there is no such node.
    void NeedNode(bool isFound, const std::string& path);
    /// @throw Refused for geometry that another model shows.
    void NeedOwn(const Geometry& geometry);
    Node& NodeOf(NodeId id);
    Material& MaterialOf(MaterialId id);
    PlacedText& TextOf(TextId id);
    NodeId IdOf(Node& node);
    /// Takes a new node into the tree, with a name that no other node has.
    NodeId Take(MeshNode* node, const std::string& name, std::optional<NodeId> parent, const Transform& place);
    void Show(MeshNode& node, Mesh& mesh);
    /// Deletes what was made here and is at no node any more, once nobody goes by it.
    /// @return whether there was something.
    bool RemoveOrphans();
    std::string FreeName(const std::string& wanted);
    /// The presentation with all in its place for a picture, and a context.
    Host::Presentation& ReadyFor(const Host::PictureOptions& options);
    /// Puts what has its place in the picture there.
    void LayOut(PictureSize size);
    Node* FileAt(std::size_t place);
    /// Those that were put below a file's node alone, which go with it.
    std::vector<Mesh*> MeshesOf(const Node* top) const;
    void Forget(const std::vector<Mesh*>& meshes);
    /// Takes the names of a file that has come.
    void TakeNames();
    Host::SunStudyTimes TimesOf(const std::string& text);
    std::vector<Hit> Told(const std::vector<Host::PickHit>& hits);
    void Give(Material& material, MaterialValues& values);

    std::unique_ptr<Host::Presentation> m_presentation;
    std::unique_ptr<Host::SunHoursMap> m_map;
    bool m_isStale = false; ///< the presentation does not know of all changes
    std::uint64_t m_lastId = 0;
    int m_nextNumber = 0; ///< by which edges part the nodes that are added
    std::unordered_map<NodeId, WatchedPtr<Node>> m_nodes;
    std::unordered_map<const Node*, NodeId> m_idsOfNodes; ///< perhaps of nodes that are gone
    std::unordered_map<MaterialId, WatchedPtr<Material>> m_materials;
    std::map<TextId, PlacedText> m_texts;
    std::set<Mesh*> m_meshes; ///< made here; in the scene
    bool m_hasOrphans = false; ///< perhaps some of them are at no node any more
    std::set<std::string> m_names;
};

} // namespace OV::Python
