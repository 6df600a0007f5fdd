#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace OV::ViewerApp
{

/// Asks for a model file: a folder with its folders and models, by pointer or by keys.
///
/// What is typed is a path, absolute or from the folder, or a part of a name that leaves the others
/// out. Up and down choose, enter opens.
class FilePanel
{
public:
    /// @param folder to begin in.
    /// @param beside whether the file is to stand beside what is there.
    void Ask(const std::string& folder, bool beside);
    void Close() { m_isOpen = false; }
    bool IsOpen() const { return m_isOpen; }
    bool IsBeside() const { return m_isBeside; }

    /// Tells the panel, between Gui::Begin and Gui::Draw.
    /// @return the path of the file that was chosen, which closes it; empty until then.
    std::string Draw();

private:
    struct Entry
    {
        std::string name;
        bool isFolder = false;
        std::string size; ///< as a person reads it
        std::string date;
    };

    void Enter(const std::string& folder);
    void DrawPlaces();
    void DrawEntries(const std::vector<std::size_t>& shown);
    void DrawButtons();
    std::vector<std::size_t> Shown() const;
    void TakeTyped(const std::vector<std::size_t>& shown);
    void TakeEntry(const Entry& entry);

    bool m_isOpen = false;
    bool m_isBeside = false;
    bool m_isNew = false; ///< the keys go to what is typed
    std::string m_folder;
    std::string m_trouble;
    std::vector<Entry> m_entries;
    char m_typed[1024] = "";
    std::size_t m_choice = 0; ///< place in those that are shown
    bool m_isChoiceMoved = false;
    std::string m_wanted;
};

} // namespace OV::ViewerApp
