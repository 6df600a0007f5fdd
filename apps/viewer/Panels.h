#pragma once

#include "apps/viewer/Desk.h"
#include "apps/viewer/FilePanel.h"
#include "apps/viewer/ModelTree.h"
#include "apps/viewer/PointRect.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace OV::ViewerApp
{

class Viewer;

/// Where the next panel stands, in points.
/// @param height 0 for as much as it needs.
void PlaceInMiddle(float width, float height);

/// Shows a text by the pointer, in as many lines as it takes to stay in the window.
void TellByPointer(const std::string& text);

/// The panels about the picture: menus, the model's tree, settings, and what is asked now and then.
class Panels
{
public:
    explicit Panels(Viewer& viewer) : m_viewer(viewer) {}

    /// Tells the panels, between Gui::Begin and Gui::Draw, and finds what is left for the picture.
    void Draw();
    const PointRect& GetPicture() const { return m_picture; }

    void ToggleSides() { m_hasSides = !m_hasSides; }
    void ToggleHelp() { m_isHelpOpen = !m_isHelpOpen; }
    /// @param beside stands the file beside what is there.
    void AskForFile(bool beside = false);
    void AskForPicture();

    /// Closes what was opened last.
    /// @return whether there was something.
    bool CloseTop();

private:
    void DrawMenu();
    void DrawRecent();
    void DrawStatus(float width, float height);
    void DrawModelSide();
    void DrawSettingsSide();
    void DrawTree(Desk& desk);
    /// @return whether it is to be opened, or closed.
    bool DrawTreeRow(Desk& desk, std::size_t index);
    void DrawSelection();
    void DrawSelectionButtons(Desk& desk);
    const std::optional<Desk::Thing>& SelectedThing();
    void DrawSavedViews();
    void DrawHelp();
    void DrawWelcome();
    void DrawOpening();
    void DrawPicturePanel();
    void ReadTree();

    Viewer& m_viewer;
    PointRect m_picture;
    bool m_hasSides = true;
    bool m_isHelpOpen = false;

    FilePanel m_file;
    bool m_isPictureTransparent = false;
    bool m_isPictureOpen = false;
    bool m_isPictureNew = false;
    std::string m_pictureOf; ///< the model that the name was proposed for
    char m_pictureName[512] = "picture.png";
    int m_pictureSize[2] = {1920, 1080};

    char m_search[128] = "";
    unsigned m_listed = 0; ///< revision that the tree is of
    ModelTree m_tree;
    std::string m_revealed; ///< path that was brought into sight last
    float m_belowTree = 0.0f; ///< height of what stands below it; 0 before it was drawn
    bool m_isThingKnown = false; ///< the two below are of the selection of the path
    std::string m_thingPath;
    std::optional<Desk::Thing> m_thing;
    std::string m_thingPlace; ///< what it is in
    bool m_isThingFile = false;
    char m_viewName[128] = "";
};

} // namespace OV::ViewerApp
