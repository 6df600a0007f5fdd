#pragma once

#include "orvane_host/geometry/FeatureLines.h"
#include "orvane_host/geometry/SectionFaces.h"
#include "orvane_host/geometry/detail/Lent.h"
#include "orvane_host/import/NodePath.h"
#include "orvane_host/output/PictureFile.h"
#include "orvane_host/present/Picking.h"
#include "orvane_host/present/Presentation.h"
#include "orvane_host/present/detail/GroundStage.h"
#include "orvane_host/present/detail/HighlightRenderer.h"
#include "orvane_host/present/detail/MaterialSettings.h"
#include "orvane_host/present/detail/NearFinder.h"
#include "orvane_host/present/detail/LostNodes.h"
#include "orvane_host/present/detail/NodeVisibility.h"
#include "orvane_host/present/detail/SunLight.h"
#include "orvane_host/sheet/Notes.h"
#include "orvane_host/sheet/Sheet.h"
#include "orvane_host/sheet/Watermark.h"
#include "orvane_host/view/SceneFit.h"
#include "orvane/engine/AppContext.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/platform/ESTextureLoader.h"
#include "orvane/scene/LineStyle.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace OV
{

class LightNode;

} // namespace OV

namespace OV::Host
{

class Surroundings;

/// PresentationFiles.cpp has how files come and go, PresentationScene.cpp what settings do to the scene,
/// PresentationNotes.cpp what stands on the picture, PresentationView.cpp what settings do to the
/// camera, PresentationNear.cpp where its near plane is, PresentationDrawing.cpp what draws both,
/// PresentationPicture.cpp what writes it.
class Presentation::Impl
{
public:
    explicit Impl(ImportResult model, bool numbersNodes);
    ~Impl();

    bool Apply(const PresentationSettings& wanted, std::string& error);
    void Refresh();

    bool Add(ImportResult model, std::string& error);
    bool Replace(std::size_t place, ImportResult model, std::string& error);
    bool Remove(std::size_t place);

    Node* FindNode(const std::string& path) const;
    /// A node that is asked for itself; null for one of another scene.
    const Node* OwnNode(const Node& node);
    /// Of the nodes; made when it is asked for.
    const NodePaths& Paths() const;
    /// To be called whenever nodes come or go, or get other names.
    void ForgetPaths();
    /// This, with nodes that a host has deleted forgotten, and with a scene that has a root and a camera. Before it,
    /// there may be none of them.
    Impl& Followed();
    void SetVisibility(bool hasChanged);
    bool SetDimensions(std::vector<Dimension> wanted);
    bool SetUnit(double metres);
    bool SetLabel(const Node* node, const std::string* text);
    void ClearLabels();
    void SetHighlight(const Node& node, const std::optional<Color>& color);
    void ClearHighlights();

    std::optional<Box> BoxOf(const std::vector<Vector>& points) const;
    std::vector<Vector> ShownPointsBelow(const Node& node);
    /// Where nothing is hidden or cut away.
    std::vector<Vector> AllPoints();
    bool Frame(const std::vector<Vector>& points);
    bool SetViewHeight(double height);
    double ViewHeight() const;
    BlankPicture FindBlank(const PictureOptions& options);
    bool LookFrom(const Vector& eye, const Vector& target, const std::optional<Vector>& up);

    void Resize(int newWidth, int newHeight, float newRatio);
    void Prepare();
    void Draw(int newWidth, int newHeight, float newRatio);
    void Hurry(bool hurry);
    bool NeedsDraw() const;
    void Suspend();
    void Resume();
    bool SavePicture(const std::string& path, const PictureOptions& options, PictureFacts& facts, std::string& error);
    bool WritePicture(PictureFile& file, const PictureOptions& options, PictureFacts& facts, std::string& error);
    static PictureFormat FormatOf(const PictureOptions& options);
    bool TakePicture(std::vector<unsigned char>& rgba, const PictureOptions& options, std::string& error);
    std::vector<PickHit> Pick(const PickArea& area);
    std::vector<PickHit> PickThrough(int x, int y, int most);

    Scene& World() const { return *app.GetContext()->GetScene(); }
    CameraNode& Camera() const { return *app.GetContext()->GetCamera(); }
    /// False once a node of the host's has deleted it in an update, until Followed.
    bool HasCamera() const { return app.GetContext()->GetCamera() != nullptr; }

    ImportReport report;
    std::vector<ImportedNode> nodes;
    std::vector<ImportedMesh> meshes;
    std::vector<PresentedFile> files;
    std::vector<Dimension> dimensions;
    PresentationSettings settings;
    SunState sun;

    // Destroyed from the last to the first: what comes later has GL objects of what comes before.
    Platform::Linux::ESTextureLoader textures;
    AppContext app;
    std::unique_ptr<Detail::HighlightRenderer> renderer;
    std::unique_ptr<Picking> picking;
    std::optional<Detail::NodeVisibility> visibility; ///< always there, as all of its kind below

private:
    std::optional<Detail::LostNodes> m_lostNodes;

    class PictureDrawing;

    /// What of the settings changed.
    struct Changes
    {
        bool section = false;
        bool lines = false; ///< that there are some, or which
        bool materials = false;
        bool view = false;
        bool sheet = false;
        bool picture = false; ///< something behind the sheet, whatever
    };

    /// What a file brought.
    struct Content
    {
        std::vector<Node*> tops; ///< below the root of the scene
        ImportReport report;
        double scale = 1.0;
    };

    struct NodeLabel
    {
        const Node* node;
        std::string text; ///< UTF-8
        QGM::Point3d place; ///< in the node's own space
    };

    Changes ChangesTo(const PresentationSettings& wanted) const;
    /// What wanted settings bring along from outside of them.
    struct Brought
    {
        std::unique_ptr<Watermark> watermark;
        std::shared_ptr<const Surroundings> surroundings;
        SunState sun;
    };

    bool Check(const PresentationSettings& wanted, Brought& brought, std::string& error) const;
    bool ReadSurroundings(const PresentationSettings& wanted, Brought& brought, std::string& error) const;
    void CountModel();
    void StandOn(Scene& scene);
    /// Stands on the scene that a host has put in the place of another one, and gives it what every scene has where
    /// the host has deleted that.
    void FollowScene();
    void TakeBackAll();
    void ForgetGone();
    void DoAllAgain();
    void NumberNodes();
    void TakeFirstFile(const std::string& path);
    void PutFile(std::size_t place, ImportResult model);
    void TakeFileOut(std::size_t place);
    void CountFiles();
    /// The first file that tells where it stands counts, and so for the north.
    void TellPlace();
    void MakeLight();
    LightNode* OwnLight() const { return m_lightWatch.IsAlive() ? m_light : nullptr; }
    float Extent() const;
    float OutlineWidth() const;
    float LineScale() const;
    void UpdateGlobals();
    void UpdateScene(const Changes& changes);
    void CutSection();
    LineStyle& Style();
    void UpdateStyle();
    void UpdateMaterials();
    void UpdateLight();
    /// What is up in the model, unit.
    Vector Up() const;
    std::optional<PresentationRenderer::ShadowGround> ShadowGroundOfModel() const;
    void ReachShadows();
    void UpdateEdit();
    bool KeepsContactShadow() const;
    std::optional<Detail::Ground> MakeGround();
    void UpdateHighlights();
    std::vector<const Node*> AllNodes() const;
    bool IsOfModel(const Mesh& mesh) const;
    Vector MiddleOfModel() const;
    SceneFit::Filter ModelFilter() const;
    bool LookAsFrom(const CameraNode& camera, double distance);
    float Aspect() const;
    void PlaceCamera();
    void KeepDepths();
    void FitNear();
    std::optional<double> FindNear();
    double NearestDepth(double enough);
    void ConfigureRenderer();
    std::optional<HiddenLineLook> HiddenLook() const;
    std::optional<float> NorthInPicture() const;
    void LayOut();
    void LayOutNotes();
    void PlaceLabels();
    void MakeNotes();
    bool IsCaptured() const;
    /// Neither suspended nor without a context: what GL is asked to make else is nothing, and stays so.
    bool CanDraw() const;
    void DrawPart(const PicturePart& part, const Color& background, float ratio);
    void EndParts();
    bool IsBlank(const PictureOptions& options, const PictureFacts& facts) const;
    bool WriteUnkept(const PictureOptions& options, PictureFacts& facts);
    bool StandsOut(const PictureOptions& options); ///< from another background
    BlankPicture ExplainBlank(const PixelSize& size);
    /// Of a model that is in front of the eye or not, and covers no pixel.
    BlankReason ExplainSize(const Box& box, bool isInView) const;
    BlankPicture ExplainBacks(const std::vector<PickHit>& backs);
    std::vector<PickHit> PickReduced(const PixelSize& size);
    std::vector<PickHit> PickBacks(const PixelSize& size);
    bool IsInFog(const std::vector<PickHit>& hits) const;
    void FollowFramebuffer();

    mutable std::unique_ptr<NodePaths> m_paths; ///< null until it is asked for
    std::vector<Content> m_contents; ///< of each file
    std::uint64_t m_nextFile = 1;    ///< number of the next one that comes
    bool m_isSceneOther = false;     ///< since Refresh
    bool m_isHostsScene = false;     ///< it was not imported
    bool m_isUnitTold = false;       ///< by the host, in place of files
    std::optional<SectionFaces> m_section;
    Detail::Lent<LineStyle> m_style; ///< in the scene while there are lines
    std::optional<FeatureLines> m_lines;
    std::optional<Detail::MaterialSettings> m_materials;
    std::map<const Node*, Color> m_highlights;
    LightNode* m_light = nullptr; ///< in the scene, as long as it is watched; null where it has its own
    LifetimeWatch m_lightWatch;
    Detail::SunLight m_sunLight;
    std::unique_ptr<Watermark> m_watermark;
    bool m_isWatermarkLaid = false;
    std::shared_ptr<const Surroundings> m_surroundings;
    std::shared_ptr<const Detail::ContactShadow> m_contactShadow; ///< null until it is needed
    bool m_isContactShadowStale = false; ///< the section has moved since
    std::unique_ptr<Sheet> m_sheet;
    std::unique_ptr<Notes> m_notes;
    std::vector<NodeLabel> m_labels;
    std::vector<std::size_t> m_shownLabels; ///< those of the notes
    bool m_areNotesStale = false;
    std::optional<float> m_sheetNorth; ///< that it was made for

    /// What the camera has its range of depths from.
    struct Depths
    {
        float nearest = 0.0f; ///< by the bounds of the model
        float farthest = 0.0f;
        float used = 0.0f; ///< in place of the nearest
    };

    Depths m_depths;
    std::unique_ptr<Detail::NearFinder> m_nearFinder; ///< null until it is needed
    int m_framesWithoutNear = 0;                      ///< since it was

    int m_width = 0;
    int m_height = 0;
    float m_ratio = 1.0f;
    unsigned int m_framebuffer = 0;   ///< that the last frame was drawn into
    bool m_holdsCapture = false;      ///< of all but the layer above
    bool m_isSuspended = false;
    bool m_isPictureChanged = true;   ///< since the last frame, behind the layer above
    bool m_isForegroundChanged = true;
    bool m_hurries = false;
};

} // namespace OV::Host
