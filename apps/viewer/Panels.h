#pragma once

#include "apps/viewer/PointRect.h"

#include <string>
#include <vector>

namespace OV::ViewerApp
{

class Viewer;

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
    void DrawStatus(float width, float height);
    void DrawModelSide();
    void DrawSettingsSide();
    void DrawTree();
    void DrawSelection();
    void DrawSavedViews();
    void DrawHelp();
    void DrawWelcome();
    void DrawOpening();
    void DrawFilePanel();
    void DrawPicturePanel();
    void ListFolder();
    void ListNodes();

    Viewer& m_viewer;
    PointRect m_picture;
    bool m_hasSides = true;
    bool m_isHelpOpen = false;

    bool m_isFileOpen = false;
    bool m_isFileBeside = false;
    std::string m_folder;
    std::string m_fileTrouble;
    struct Entry
    {
        std::string name;
        bool isFolder = false;
    };
    std::vector<Entry> m_entries;

    bool m_isPictureOpen = false;
    char m_pictureName[512] = "picture.png";
    int m_pictureSize[2] = {1920, 1080};

    char m_search[128] = "";
    unsigned m_listed = 0; ///< revision that the nodes below are of
    std::vector<std::string> m_nodes; ///< paths
    char m_viewName[128] = "";
};

} // namespace OV::ViewerApp
