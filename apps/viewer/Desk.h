#pragma once

#include "apps/viewer/Navigator.h"
#include "orvane_host/import/ModelLoading.h"
#include "orvane_host/present/Presentation.h"

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace OV::ViewerApp
{

/// What a person has before them: a model, how it is shown and looked at, and what is selected.
///
/// Knows no window and no panel. One thread, the one of the GL context, which is current
/// throughout. What goes wrong is told as one sentence by GetMessage, and leaves all as it was.
///
/// DeskFiles.cpp has how files come, DeskNodes.cpp what is done to nodes: select, hide, name.
class Desk
{
public:
    /// What there is to say about the selection.
    struct Thing
    {
        std::string path;
        std::string name;
        std::string material; ///< of the first mesh; may be empty
        std::size_t triangles = 0;
        Vector size; ///< along the axes of the world

        /// A line each: material, size and triangles, if any.
        /// @param unit behind the size, such as "m"; may be empty.
        std::string Text(const std::string& unit) const;
    };

    /// What a file that is opened does to those that are there.
    enum class Opening
    {
        InPlace, ///< takes their place
        Beside,  ///< stands beside them
        Again,   ///< takes the place that it had before it changed
    };

    /// @param wake ends the wait for events, from any thread.
    explicit Desk(std::function<void()> wake);
    ~Desk();

    // Opening

    /// Begins to read a file on another thread, or when those are read that were asked for before;
    /// what is shown stays until it is there. In place of all it comes at once.
    void Open(const std::string& path, Opening opening = Opening::InPlace);

    /// Reads all files again.
    void OpenAgain();
    void CancelOpening();
    bool IsOpening() const { return m_loading != nullptr; }
    float GetPercent() const { return m_loading ? m_loading->GetPercent() : 0.0f; }
    const std::string& GetOpeningPath() const { return m_opened.path; }

    /// Whether a node is the top of one file of several.
    bool IsFile(const std::string& path) const { return FileAt(path).has_value(); }

    /// Takes the file away that a node is the top of, unless it is the only one.
    /// @return whether it was.
    bool TakeAway(const std::string& path);

    /// Whether the files are looked after, and one is opened again when it changes.
    void Watch(bool watch) { m_watches = watch; }
    bool IsWatching() const { return m_watches; }

    /// Takes over what was loaded, and moves on what moves.
    /// @param seconds since the last time.
    /// @return the path of a model that was opened; empty for none.
    std::string Update(double seconds);

    /// Null before a model was opened.
    Host::Presentation* GetModel() const { return m_model.get(); }

    /// Of the first file; empty before a model was opened.
    std::string GetPath() const;

    /// Of all files, in the order in which they came.
    std::vector<std::string> GetPaths() const;

    /// Rises whenever nodes may have come or gone.
    unsigned GetRevision() const { return m_revision; }

    // Settings

    const Host::PresentationSettings& GetSettings() const { return m_settings; }

    /// @return false, with a message, where they can't be applied.
    bool Apply(const Host::PresentationSettings& settings);

    /// The same for what a hand drags other than the view: what takes too long steps back meanwhile, as
    /// when that moves.
    bool ApplyInMotion(const Host::PresentationSettings& settings);

    /// Keeps what belongs to one model alone, such as the eye and planes, with the next one too.
    void KeepAllSettings() { m_keepsAll = true; }

    // Looking

    void SetPicture(int width, int height, float ratio);
    int GetWidth() const { return m_width; }
    int GetHeight() const { return m_height; }

    /// Takes over what the navigator did.
    void FollowNavigator();
    Navigator& GetNavigator() { return m_navigator; }
    const Navigator& GetNavigator() const { return m_navigator; }

    /// Turns there in a short while.
    void TurnTo(const Host::ViewSettings& view);
    void TurnTo(Host::NamedView view);
    /// What is neither hidden nor cut away.
    void Fit();
    void FitSelection();
    /// Goes so many metres forward, at the height of a person's eyes above the floor; 0 stands on it.
    bool Walk(double forward);
    bool IsMoving() const { return m_navigator.IsTurning() || m_restIn > 0.0; }

    /// The point of the model under a pixel; where there is none, one as far away as the target.
    glm::dvec3 PointUnder(const glm::dvec2& pixel);
    std::optional<Host::PickHit> Pick(const glm::dvec2& pixel);

    /// Draws into the framebuffer that is bound.
    void Draw();
    bool NeedsDraw() const;
    /// What is drawn with at the moment: while something moves, stages that take too long step back.
    const Host::PresentationSettings& GetDrawn() const;
    /// @param seconds that the frame which was drawn last took.
    void TellFrameTime(double seconds);

    // Nodes

    void SelectAt(const glm::dvec2& pixel, bool adds);
    void SelectIn(const Host::PickArea& area, bool adds);
    void Select(std::vector<std::string> paths);
    const std::vector<std::string>& GetSelection() const { return m_selection; }
    const std::vector<std::string>& GetHidden() const { return m_hidden; }
    /// Empty for none.
    const std::string& GetIsolated() const { return m_isolated; }
    /// Pixels per point.
    float GetRatio() const { return m_ratio; }
    std::optional<Thing> Describe(const std::string& path) const;

    void HideSelection();
    void IsolateSelection();
    void SetHidden(const std::string& path, bool hidden);
    bool IsHidden(const std::string& path) const;
    bool HasHidden() const { return !m_hidden.empty() || !m_isolated.empty(); }
    void ShowAll();
    /// Names the selection in the picture, or takes that back.
    void LabelSelection();
    /// Paths of the nodes that are named.
    const std::vector<std::string>& GetLabels() const { return m_labels; }

    /// Draws a measure in the picture, until it is taken away.
    void AddDimension(const Host::Dimension& dimension);
    std::vector<Host::Dimension> GetDimensions() const;
    void RemoveLastDimension();
    /// Takes all measures and names out of the picture.
    void ClearNotes();
    /// Greys all but the selection; without one takes that back.
    void EditSelection();

    // Words

    struct Message
    {
        std::string text;
        bool isTrouble = false;
    };
    const Message& GetMessage() const { return m_message; }
    void Tell(const std::string& text) { m_message = {text, false}; }
    void TellTrouble(const std::string& text) { m_message = {text, true}; }

    // GL

    void Suspend();
    void Resume();

private:
    /// A file that is wanted.
    struct Wanted
    {
        std::string path;
        Opening opening = Opening::InPlace;
        long long stamp = 0; ///< as far as it tells a change
    };

    std::optional<std::size_t> FileAt(const std::string& path) const;
    void BeginOpening();
    void TakeModel(Host::ImportResult result);
    bool PutModel(Host::ImportResult result);
    void ForgetNodes();
    void ShowModel();
    /// Applies the settings to a model that came, but for what it can't have.
    void ApplyWhatStays();
    void ShowNotes();
    void ApplyView(const Host::ViewSettings& view);
    void ApplyDrawn();
    void ShowSelection();
    void HideAgain();
    void LookAfterFile(double seconds);
    std::string PathOf(const Node* node) const;

    std::function<void()> m_wake;
    std::unique_ptr<Host::ModelLoading> m_loading;
    Wanted m_opened;             ///< that is read
    std::deque<Wanted> m_queue;  ///< and those after it
    std::string m_openingTrouble; ///< of those that were read since all was there
    bool m_keepsAll = false;
    bool m_watches = false;
    double m_watchedFor = 0.0;
    std::vector<long long> m_stamps; ///< of the files
    unsigned m_revision = 0;

    std::unique_ptr<Host::Presentation> m_model;
    Host::PresentationSettings m_settings;
    Navigator m_navigator;
    std::optional<Host::ViewSettings> m_afterTurn;
    int m_width = 0;
    int m_height = 0;
    float m_ratio = 1.0f;

    double m_restIn = 0.0;     ///< seconds until what steps back comes back
    bool m_stepsBack = false;
    double m_frameTime = 0.0;  ///< of the last one with all stages

    std::vector<std::string> m_selection;
    std::vector<std::string> m_hidden;
    std::string m_isolated;
    std::vector<std::string> m_labels;
    Message m_message;
};

} // namespace OV::ViewerApp
