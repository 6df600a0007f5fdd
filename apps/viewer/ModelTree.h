#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace OV::Host
{

class Presentation;

} // namespace OV::Host

namespace OV::ViewerApp
{

/// The named nodes of a model as a tree whose rows a person opens and closes.
///
/// Nodes that only say how others belong together, such as those of relations, have no row: what is
/// below them stands below the one above.
class ModelTree
{
public:
    struct Row
    {
        static constexpr std::size_t None = static_cast<std::size_t>(-1);

        std::string path; ///< as Presentation::PathOf
        std::string name; ///< as people read it
        std::string kind; ///< what the file says that it is; may be empty
        std::size_t level = 0;
        std::size_t parent = None; ///< row, None at the top
        std::size_t end = 0;       ///< the first row after it that is not below it
        bool isDrawn = false;      ///< it or something below it has a shape
    };

    /// Reads all rows anew. What was opened and closed stays so, by path.
    void Read(const Host::Presentation& model);

    const std::vector<Row>& GetRows() const { return m_rows; }

    /// The rows to show, as places in GetRows: those below open ones; with a text to search for those
    /// whose names hold it, in whatever case.
    const std::vector<std::size_t>& List(const std::string& search);

    bool IsOpen(std::size_t row) const;
    bool HasRowsBelow(std::size_t row) const { return m_rows[row].end > row + 1; }
    void Toggle(std::size_t row);

    /// The row of a node; none without one.
    std::optional<std::size_t> Find(const std::string& path) const;

    /// The names of the rows that a row is below, from the top; empty at the top.
    std::string PlaceOf(std::size_t row) const;

    /// Opens all rows above that of a node.
    /// @return its row; none without one.
    std::optional<std::size_t> Reveal(const std::string& path);

private:
    std::vector<Row> m_rows;
    std::set<std::string> m_toggled; ///< paths that are open in place of closed, or closed in place of open
    std::vector<std::size_t> m_listed;
    std::string m_search; ///< that is listed
    bool m_isListed = false;
};

} // namespace OV::ViewerApp
