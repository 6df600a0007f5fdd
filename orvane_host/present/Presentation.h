#pragma once

#include "orvane_host/import/ImportOptions.h"
#include "orvane_host/import/ImportResult.h"
#include "orvane_host/present/BlankPicture.h"
#include "orvane_host/present/DrawCounts.h"
#include "orvane_host/present/Picking.h"
#include "orvane_host/present/PictureOptions.h"
#include "orvane_host/present/PresentationSettings.h"
#include "orvane_host/present/SunSettings.h"
#include "orvane_host/sheet/Notes.h"
#include "orvane/math/Color.h"
#include "orvane/math/Vector.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace OV
{

class AppContext;
class CameraNode;
class CoreContext;
class Node;
class Scene;
class Scene2D;
class Transform;

} // namespace OV

namespace OV::Host
{

class PictureFile;
class PresentationRenderer;

/// How much a presentation holds and draws.
struct PresentationStatistics
{
    /// Of the model, without what settings add.
    std::uint64_t nodes = 0;
    std::uint64_t meshes = 0;
    std::uint64_t triangles = 0;
    /// As ImportReport::coplanarPairs.
    std::uint64_t coplanarPairs = 0;
    /// Of the last frame.
    DrawCounts drawn;
    BatchCounts batches;
};

/// A file that is presented.
struct PresentedFile
{
    std::string path; ///< as it was imported from
    Node* top = nullptr; ///< the node that all of it is below; null once a host has deleted it
};

/// One model of one file or several, presented as settings say: scene, textures, renderer and sheet,
/// drawn into the framebuffer that is bound.
///
/// Any setting can change at any time, and none leaves anything behind: a picture follows from the
/// model, the settings, what is hidden or highlighted, and the size alone. Settings of the process
/// (sky, fog, clip planes) are this presentation's while it draws and what they were before
/// afterwards, so that several can draw in turns.
///
/// One thread, the one of the GL context. A context must be current where "GL" stands; for what
/// changes the scene only once something was drawn, and for the destructor likewise.
class Presentation
{
public:
    /// A box about something in world space.
    struct Box
    {
        Vector low;
        Vector high;
    };

    /// Reads a model file, see ModelImporter::Import. ModelLoading does so on another thread. Not
    /// GL.
    /// @param error on failure file, reason and remedy in one line. Untouched otherwise.
    /// @return null on failure.
    static std::unique_ptr<Presentation> Open(const std::string& path, std::string& error,
                                              const ImportOptions& options = ImportOptions());

    /// Presents what was imported, in the settings that are the default. Not GL. Its nodes are
    /// numbered anew (Node::SetUserData), so that edges part them.
    /// @param model one without a scene counts as an empty model.
    explicit Presentation(ImportResult model);

    /// Presents a scene that the host built. Not GL. A scene without lights gets one that follows
    /// the view; the numbers of the nodes stay the host's. A lit material whose ambient colour was
    /// never set shows a share of its own colour without light, where the engine would add white.
    /// @param scene null counts as an empty one.
    /// @param nodes the names by which nodes are found; may be empty.
    explicit Presentation(std::unique_ptr<Scene> scene, std::vector<ImportedNode> nodes = {});

    ~Presentation();

    Presentation(const Presentation&) = delete;
    Presentation& operator=(const Presentation&) = delete;

    /// Takes settings over and does only what they change.
    /// @param error on failure one sentence: the field that is out of range with its bound, the node
    ///        that there isn't with some that there are, or the file that can't be read. Untouched
    ///        otherwise.
    /// @return false, with the old settings in force, on failure.
    bool Apply(const PresentationSettings& settings, std::string& error);

    /// As applied last, with the view as it was moved since.
    const PresentationSettings& GetSettings() const;

    /// What the settings of the sun come to; without any, nothing.
    const SunState& GetSun() const;

    /// To be called after the host has changed the tree, places, the geometry or the materials of the
    /// scene, before the next frame: works out anew what the settings make of them, and how deep it is.
    /// Nodes with names that the host has deleted are noticed without it.
    void Refresh();

    // Files beside each other. Settings, what is hidden and what is highlighted stay, as far as the nodes
    // that they name do; a view without an eye is fitted to all files.

    /// Presents another file beside what is there. Where the units of both are known it is brought to
    /// the size that it has beside the first one; else it comes as it is. It has Y up, as every file: in a
    /// scene with Z up the host turns the node at its top. That node keeps its name, or takes that of the
    /// file where there is a node of that name or none. Files come in the order of their adding. GL if
    /// something was drawn.
    /// @param error on failure one line. Untouched otherwise.
    /// @return false, with nothing changed, for a model without a scene.
    bool Add(ImportResult model, std::string& error);

    /// Puts a file in the place of another one, such as itself after a change.
    /// @param file a place in GetFiles.
    /// @return false, with nothing changed, also where there is no such place.
    bool Replace(std::size_t file, ImportResult model, std::string& error);

    /// Takes a file out.
    /// @return false, with nothing changed, where there is no such place.
    bool Remove(std::size_t file);

    /// In their order. Of a host's scene none but what was added to it.
    const std::vector<PresentedFile>& GetFiles() const;

    // Nodes have paths: the names from the file's root down, with slashes between them. A path may
    // begin at any node; of several the one that comes first in the file counts. What takes a path
    // answers false, with nothing changed, where there is no such node; what takes a node, which needs
    // no name, where it is one of another scene.

    /// Gives a node of the scene a name to be found by, in place of the one that it has. What comes
    /// later counts as later in the file. Nothing for a node of another scene.
    void AddName(Node& node, const std::string& name);

    /// The paths of all nodes that have names, in the order of the file.
    std::vector<std::string> ListNodes() const;

    /// @return null if there is none.
    Node* FindNode(const std::string& path) const;

    /// Empty for a node without a name.
    std::string PathOf(const Node& node) const;

    /// Names of the model's nodes and meshes, as the file has them.
    const std::vector<ImportedNode>& GetNodes() const;
    const std::vector<ImportedMesh>& GetMeshes() const;

    /// What was imported, all files together; of a host's scene only the box and the counts.
    const ImportReport& GetReport() const;

    /// Hides a node with all that is below it. What is hidden isn't drawn, picked or cut.
    bool Hide(const std::string& path);
    bool Hide(const Node& node);

    /// Takes Hide back for this node; it stays hidden where a node above it is.
    bool Show(const std::string& path);
    bool Show(const Node& node);

    /// Hides all but a node with what is below it, in place of an earlier isolated node. Nodes that
    /// Hide hid stay so.
    bool Isolate(const std::string& path);
    bool Isolate(const Node& node);

    /// Takes every Hide and Isolate back.
    void ShowAll();

    /// Lays a colour over a node with what is below it, in every look; a second one replaces the
    /// first.
    /// @param color its alpha is how much of it is seen, 0 to 1.
    bool Highlight(const std::string& path, const Color& color);
    bool Highlight(const Node& node, const Color& color);

    /// Takes Highlight back for this node.
    bool ClearHighlight(const std::string& path);
    bool ClearHighlight(const Node& node);
    void ClearHighlights();

    // Notes stand on the picture where the model is, in the layer above it, and in saved pictures too.

    /// Draws distances and angles as dimension lines, in place of the earlier ones. Distances have the
    /// unit of the model where that is known.
    /// @return false, with nothing changed, for others than of two or three finite points.
    bool SetDimensions(std::vector<Dimension> dimensions);
    const std::vector<Dimension>& GetDimensions() const;

    /// Writes a text at the middle of what is at a node and below it, which follows the node; not
    /// while all of that is hidden or cut away. A second one replaces the first.
    /// @param text UTF-8; empty for what the node is called, as DivideName tells it.
    /// @return false, with nothing changed, where there is no text either.
    bool AddLabel(const std::string& path, const std::string& text = std::string());
    bool AddLabel(const Node& node, const std::string& text = std::string());

    /// Takes AddLabel back for this node.
    bool RemoveLabel(const std::string& path);
    bool RemoveLabel(const Node& node);
    void ClearLabels();

    /// Sign of the unit of the model, such as "m"; empty where it is not known.
    std::string GetUnit() const;

    /// Says what a unit of the model is, for a scene of the host's or a file that does not tell. Dimensions
    /// and the scale bar have its sign from the next frame on, and files that are added from now on are
    /// brought to their size in it; what is there stays as it is.
    /// @param metres such as 0.001 where the model is in millimetres; 0 where nobody knows.
    /// @return false, with nothing changed, for less than 0 and for what is not finite.
    bool SetUnit(double metres);

    /// The box of all that the model draws, lines of the host's too, when nothing is hidden or cut
    /// away; none for an empty model.
    std::optional<Box> GetModelBox() const;

    /// The box of what is neither hidden nor cut away; none where nothing is left.
    std::optional<Box> GetShownBox() const;

    // What frames keeps the direction of the view, and writes eye, target and up to the settings.

    /// Brings the whole model into the view, cut or not.
    /// @return false, with nothing changed, where there is nothing to see.
    bool FrameAll();

    /// Brings a node with what is below it into the view, as far as it isn't hidden or cut away.
    bool FrameNode(const std::string& path);
    bool FrameNode(const Node& node);

    /// Brings what is neither hidden nor cut away into the view.
    bool FrameShown();

    /// Looks from an eye to a target; GetSettings tells it from then on. Without a direction upwards the
    /// axis that is up (ViewSettings::upAxis) is so in the picture.
    /// @return false, with nothing changed, where they coincide or are not finite.
    bool SetCamera(const Vector& eye, const Vector& target);
    bool SetCamera(const Vector& eye, const Vector& target, const Vector& up);

    /// Looks down the -Z of a place in the world, with its Y up.
    /// @param distance to what is looked at, above 0; an orthographic view takes its height from it.
    bool SetCamera(const Transform& place, float distance);

    /// Moves the eye along its line of sight until a view without perspective is so many units of the model
    /// high; GetSettings tells it from then on. A view with perspective sees so much where it looks at.
    /// @return false, with nothing changed, where the height is not finite or not above 0.
    bool SetViewHeight(double height);

    /// How high a view is where it looks at, in units of the model.
    double GetViewHeight() const;

    /// Tells the size in pixels, which Draw does too: what pictures are framed for and picked in.
    /// GL.
    /// @param pixelRatio pixels of the framebuffer for each that settings count, such as those of
    ///        a line's width.
    void Resize(int width, int height, float pixelRatio = 1.0f);

    /// Uploads what the next frame draws, so that it only draws. GL.
    void Prepare();

    /// Draws a frame over all of the framebuffer that is bound, from its lower left corner. One of several
    /// views in a window goes into a framebuffer of its own, and from there to its place. Without a context
    /// and for a size without pixels nothing happens. GL.
    void Draw(int width, int height, float pixelRatio = 1.0f);

    /// Whether frames are drawn quickly from the next one on rather than as they are meant, as while the view
    /// moves: see-through surfaces are then mixed where they are meant to be in exact order, occlusion by
    /// horizons is looked up at a quarter of the pixels, and while a section moves the ground keeps the contact
    /// shadow that it had. Pictures that are saved are as they are meant.
    /// Off at first.
    void Hurry(bool hurry);

    /// Whether the next frame differs from the last one, as far as this object and the dirty flags
    /// of the scene and its layers know. Where a capture serves (Antialiasing::Filter and
    /// Supersampling) a frame in which only the layer above changed is drawn from it.
    bool NeedsDraw() const;

    /// Lets go of all GL objects before the context is lost. GL. Until Resume nothing is drawn, nothing is found by
    /// picking and no picture is made, whatever a host asks for meanwhile.
    void Suspend();

    /// Comes back with a new context. GL.
    void Resume();

    /// As SavePicture, with the pixels in place of a file. GL.
    /// @param rgba on success 8 bits a channel, tight rows, the top row first, opaque. Untouched otherwise.
    bool TakePicture(std::vector<unsigned char>& rgba, int width, int height, std::string& error,
                     float pixelRatio = 1.0f);

    /// The same with more to choose: straight alpha where it is to be transparent; 8 bits a channel whatever is asked.
    bool TakePicture(std::vector<unsigned char>& rgba, const PictureOptions& options, std::string& error);

    /// Draws a picture of its own size and writes it as a PNG file. GL; the framebuffer that is
    /// bound and the viewport stay. With Antialiasing::Multisampling the picture has the samples of
    /// the settings.
    /// @param error on failure the reason and the remedy in one line, without the path.
    /// @param pixelRatio as of Resize.
    bool SavePicture(const std::string& path, int width, int height, std::string& error, float pixelRatio = 1.0f);

    /// The same with more to choose, as a PNG or a JPEG file by the ending of its name. What is too large
    /// to be drawn at once is drawn in tiles that show no rims, and goes to the file as it is drawn.
    /// @param facts null, or what was noticed meanwhile.
    bool SavePicture(const std::string& path, const PictureOptions& options, std::string& error,
                     PictureFacts* facts = nullptr);

    /// Draws all rows into a file that was begun with the size and the format of the options; to finish
    /// it is the caller's. GL, as SavePicture.
    bool WritePicture(PictureFile& file, const PictureOptions& options, std::string& error,
                      PictureFacts* facts = nullptr);

    /// Finds out whether a picture would show nothing of the model, and why: draws it small, without
    /// what stands behind and above the model. Of the options only size and transparency count. GL;
    /// the framebuffer that is bound and the viewport stay.
    BlankPicture FindBlank(const PictureOptions& options);

    /// Samples a pixel that a picture gets by settings: none without multisampling, else as
    /// many as they tell, or 4.
    /// @param most that GL has.
    static int SamplesFor(const PresentationSettings& settings, int most);

    /// What GL takes by settings for each pixel of a picture that is drawn at once, about. What the sun
    /// sees comes on top.
    /// @param bits of a channel, 8 or 16.
    static int BytesPerPixel(const PresentationSettings& settings, int samples, int bits = 8);

    /// What is seen nearest at a pixel of the framebuffer, from the upper left corner. Its size is the last
    /// one that Resize or Draw was told, or else that of the last picture; nothing before there is one. GL.
    std::optional<PickHit> Pick(int x, int y);

    /// As Picking::Pick and Picking::PickThrough. GL.
    std::vector<PickHit> Pick(const PickArea& area);
    std::vector<PickHit> PickThrough(int x, int y, int most = 16);

    /// GL, for the sizes of buffers.
    PresentationStatistics GetStatistics() const;

    // What it is made of, for hosts that put more into it. All of it is the presentation's. A host may delete anything
    // that is in the scene, empty the scene (Scene::Clear) or put another one in its place (CoreContext::SetScene),
    // which then counts as one that the host built: what settings add comes back with the next change of them, at the
    // latest with Refresh, and a camera or root at once. What is handed out here is good until then.
    //
    // The camera is moved by SetCamera and the settings; what a host does to it itself lasts until the next change of
    // those or of the size. Its near and far come from the bounds of the model. Where the eye is in them or close to
    // them, drawing and picking move near to before what the view shows nearest, unless the host has set one of the
    // two.

    Scene& GetScene() const;
    CameraNode& GetCamera() const;
    AppContext& GetContext() const;
    PresentationRenderer& GetRenderer() const;
    /// Behind and above the model. Both count in pixels, whatever the pixel ratio.
    Scene2D& GetBackground() const;
    Scene2D& GetForeground() const;

private:
    class Impl;

    std::unique_ptr<Impl> m_impl;
};

} // namespace OV::Host
