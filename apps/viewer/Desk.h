#pragma once

#include "apps/viewer/Navigator.h"
#include "orvane_host/import/ModelLoading.h"
#include "orvane_host/present/Presentation.h"

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
/// DeskNodes.cpp has what is done to nodes: select, hide, name.
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
        std::optional<glm::dvec3> middle; ///< of its box; none without triangles
    };

    /// A name that follows a node in the picture.
    struct Label
    {
        std::string path;
        std::string name;
        std::optional<glm::dvec3> middle;
    };

    /// @param wake ends the wait for events, from any thread.
    explicit Desk(std::function<void()> wake);
    ~Desk();

    // Opening

    /// Begins to read a file on another thread; what is shown stays until it is there.
    void Open(const std::string& path);
    void CancelOpening();
    bool IsOpening() const { return m_loading != nullptr; }
    float GetPercent() const { return m_loading ? m_loading->GetPercent() : 0.0f; }
    const std::string& GetOpeningPath() const { return m_loadingPath; }

    /// Whether the file is looked after, and opened again when it changes.
    void Watch(bool watch) { m_watches = watch; }
    bool IsWatching() const { return m_watches; }

    /// Takes over what was loaded, and moves on what moves.
    /// @param seconds since the last time.
    /// @return whether a model was opened.
    bool Update(double seconds);

    /// Null before a model was opened.
    Host::Presentation* GetModel() const { return m_model.get(); }
    const std::string& GetPath() const { return m_path; }

    // Settings

    const Host::PresentationSettings& GetSettings() const { return m_settings; }

    /// @return false, with a message, where they can't be applied.
    bool Apply(const Host::PresentationSettings& settings);

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
    void TellFrameTime(double seconds);

    // Nodes

    void SelectAt(const glm::dvec2& pixel, bool adds);
    void SelectIn(const Host::PickArea& area, bool adds);
    void Select(std::vector<std::string> paths);
    const std::vector<std::string>& GetSelection() const { return m_selection; }
    std::optional<Thing> Describe(const std::string& path) const;

    void HideSelection();
    void IsolateSelection();
    void SetHidden(const std::string& path, bool hidden);
    bool IsHidden(const std::string& path) const;
    bool HasHidden() const { return !m_hidden.empty() || !m_isolated.empty(); }
    void ShowAll();
    /// Names the selection in the picture, or takes that back.
    void LabelSelection();
    const std::vector<Label>& GetLabels() const { return m_labels; }
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
    void TakeModel(Host::ImportResult result);
    void ShowModel();
    void ApplyView(const Host::ViewSettings& view);
    void ApplyDrawn();
    void ShowSelection();
    void HideAgain();
    std::optional<glm::dvec3> MiddleOf(const std::string& path) const;
    void LookAfterFile(double seconds);
    std::string PathOf(const Node* node) const;

    std::function<void()> m_wake;
    std::unique_ptr<Host::ModelLoading> m_loading;
    std::string m_loadingPath;
    bool m_keepsAll = false;
    bool m_watches = false;
    double m_watchedFor = 0.0;
    long long m_stamp = 0; ///< of the file, as far as it tells a change
    long long m_loadingStamp = 0;

    std::string m_path;
    std::unique_ptr<Host::Presentation> m_model;
    Host::PresentationSettings m_settings;
    Navigator m_navigator;
    std::optional<Host::ViewSettings> m_afterTurn;
    int m_width = 0;
    int m_height = 0;
    float m_ratio = 1.0f;

    double m_restIn = 0.0;     ///< seconds until what steps back comes back
    bool m_stepsBack = false;
    double m_frameTime = 0.0;

    std::vector<std::string> m_selection;
    std::vector<std::string> m_hidden;
    std::string m_isolated;
    std::vector<Label> m_labels;
    Message m_message;
};

} // namespace OV::ViewerApp
