#pragma once

#include "orvane/scene/PointerSpan.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace OV::detail
{

/// A list of this length at most is closed up at once where an entry leaves it; a longer one
/// keeps a gap until it is next read, so that taking out all of it does not move it each time.
constexpr int shortList = 256;

/// The place of the first such entry, or the length of the list.
template <class T>
std::size_t IndexOf(const PointerSpan<T>& list, const T* entry)
{
    return static_cast<std::size_t>(std::find(list.begin(), list.end(), entry) - list.begin());
}

/// Takes the first such entry out of a list of pointers; the rest keep their order.
/// @return false when there is none.
template <class T>
bool EraseFirst(std::vector<T*>& list, const T* entry)
{
    const auto found = std::find(list.begin(), list.end(), entry);
    if (found == list.end())
    {
        return false;
    }
    list.erase(found);
    return true;
}

/// Takes one such entry out of a list whose order means nothing, looking from the end.
template <class T>
void EraseAny(std::vector<T*>& list, const T* entry)
{
    const auto found = std::find(list.rbegin(), list.rend(), entry);
    if (found != list.rend())
    {
        *found = list.back();
        list.pop_back();
    }
}

template <class T>
void EraseAll(std::vector<T*>& list, const T* entry)
{
    list.erase(std::remove(list.begin(), list.end(), entry), list.end());
}

template <class T>
bool Contains(const std::vector<T*>& list, const T* entry)
{
    return std::find(list.begin(), list.end(), entry) != list.end();
}

template <class T>
bool Contains(const PointerSpan<T>& list, const T* entry)
{
    return std::find(list.begin(), list.end(), entry) != list.end();
}

} // namespace OV::detail
