#pragma once

#include <algorithm>
#include <vector>

namespace OV::detail
{

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

} // namespace OV::detail
