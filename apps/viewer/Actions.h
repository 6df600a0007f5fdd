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
    /// What it would do nothing without and isn't there, as a person reads it; null where all is there.
    const char* (*lack)(Viewer& viewer) = nullptr;
};

/// All of them, in the order of the menus.
const std::vector<Action>& ListActions();

/// What an action lacks now; null where it can be done.
const char* LackOf(const Action& action, Viewer& viewer);

/// Does what a key is for, or tells what it lacks.
/// @return false where it is for nothing.
bool RunActionOf(Viewer& viewer, int key, unsigned modifiers);

} // namespace OV::ViewerApp
