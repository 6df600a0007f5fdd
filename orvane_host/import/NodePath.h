#pragma once

#include "orvane_host/import/ImportResult.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace OV::Host
{

/// Leads from paths to nodes and back, for whoever asks for more than one.
///
/// Made of the names alone: whose child a node is is looked up when it is asked for.
class NodePaths
{
public:
    /// @param nodes kept by reference: make another one after a change of them.
    explicit NodePaths(const std::vector<ImportedNode>& nodes);

    /// As FindNode.
    Node* Find(const std::string& path) const;

    /// As PathOf.
    std::string PathTo(const Node& node) const;

private:
    bool Ends(const Node* node, const std::string& path) const;

    const std::vector<ImportedNode>& m_nodes;
    std::unordered_map<const Node*, const std::string*> m_names;
    std::unordered_map<std::string_view, std::vector<std::size_t>> m_places; ///< in the nodes, of each name
};

/// Finds a node by its name, or by the names from some node down to it with slashes between
/// them. Of several the one that comes first in the file. NodePaths serves who asks often.
/// @return null if there is none.
Node* FindNode(const std::vector<ImportedNode>& nodes, const std::string& path);

/// The names from the file's root down to a node with slashes between them, which FindNode takes.
/// Names that are empty at its begin are left out; so is what is above a node that is not listed.
std::string PathOf(const std::vector<ImportedNode>& nodes, const Node& node);

/// What PathOf gives for every node that has a name, in the order of the nodes.
std::vector<std::string> ListNodePaths(const std::vector<ImportedNode>& nodes);

/// What the name of a node says to a person.
struct NodeName
{
    std::string name;
    std::string kind; ///< such as "Wall"; empty where it isn't told
};

/// Divides the name of a node into what it is called and what it is, where the file keeps both, and an
/// identifier for programs, in one; what has no name is called by its kind.
NodeName DivideName(const std::string& whole);

/// Some names of nodes, for a person who named none of them.
std::string SomeNodeNames(const std::vector<ImportedNode>& nodes);

} // namespace OV::Host
