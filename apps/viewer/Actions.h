#pragma once

#include <string>
#include <vector>

namespace OV::ViewerApp
{

class Viewer;

/// Something that a key does, and an entry of a menu.
struct Action
{
    const char* group; ///< the menu that it is in; "" for none
    const char* key;   ///< as ParseKey reads it; "" for none
    const char* text;
    void (*run)(Viewer& viewer);
};

/// All of them, in the order of the menus.
const std::vector<Action>& ListActions();

/// Does what a key is for.
/// @return false where it is for nothing.
bool RunActionOf(Viewer& viewer, int key, unsigned modifiers);

} // namespace OV::ViewerApp
