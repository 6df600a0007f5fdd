#pragma once

#include "orvane/scene/Node.h"
#include "orvane/scene/detail/MarkedChildren.h"

#include <cstddef>
#include <iterator>
#include <list>
#include <memory>
#include <unordered_map>
#include <utility>

namespace OV::detail
{

/// The children of a node, linked through themselves, and which of them are marked.
struct Children
{
    void Link(Node* child)
    {
        child->m_previousSibling = last;
        child->m_nextSibling = nullptr;
        (last ? last->m_nextSibling : first) = child;
        last = child;
        ++count;
    }

    void Unlink(Node* child)
    {
        Node* const previous = std::exchange(child->m_previousSibling, nullptr);
        Node* const next = std::exchange(child->m_nextSibling, nullptr);
        (previous ? previous->m_nextSibling : first) = next;
        (next ? next->m_previousSibling : last) = previous;
        --count;
    }

    /// The list, which is kept up to date from now on.
    const std::list<Node*>& List()
    {
        if (!list)
        {
            auto made = std::make_unique<Listed>();
            for (Node* child = first; child; child = child->m_nextSibling)
            {
                made->Append(child);
            }
            list = std::move(made);
        }
        return list->entries;
    }

    /// What somebody has asked for as a list. Each child finds its entry at once.
    struct Listed
    {
        void Append(Node* child)
        {
            entries.push_back(child);
            try
            {
                places.emplace(child, std::prev(entries.end()));
            }
            catch (...)
            {
                entries.pop_back();
                throw;
            }
        }

        void MoveToEnd(const Node* child)
        {
            entries.splice(entries.end(), entries, places.at(child));
        }

        void Remove(const Node* child)
        {
            const auto place = places.find(child);
            entries.erase(place->second);
            places.erase(place);
        }

        std::list<Node*> entries;
        std::unordered_map<const Node*, std::list<Node*>::iterator> places;
    };

    Node* first = nullptr;
    Node* last = nullptr;
    std::size_t count = 0;
    MarkedChildren marked;
    std::unique_ptr<Listed> list; ///< null until it is asked for
};

} // namespace OV::detail
