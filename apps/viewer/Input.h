#pragma once

#include <string>
#include <vector>

namespace OV::ViewerApp
{

/// Keys that are held while another is pressed, or a button.
enum Modifier : unsigned
{
    ModifierNone = 0,
    ModifierShift = 1,
    ModifierControl = 2,
    ModifierAlt = 4,
};

enum class Button
{
    Left,
    Middle,
    Right,
};

/// Keys by what they are for; letters, digits and signs are their own characters, in upper case.
enum Key : int
{
    KeyNone = 0,
    KeyEscape = 256,
    KeyEnter,
    KeyTab,
    KeyBackspace,
    KeyDelete,
    KeyLeft,
    KeyRight,
    KeyUp,
    KeyDown,
    KeyPageUp,
    KeyPageDown,
    KeyHome,
    KeyEnd,
    KeyF1,
    KeyF12 = KeyF1 + 11,
    KeyShift,
    KeyControl,
    KeyAlt,
    KeyCount,
};

/// One thing that a person did to the window, or a script in their place.
///
/// Places are in points from the window's upper left corner.
struct InputEvent
{
    enum class Kind
    {
        PointerMoved,
        ButtonDown,
        ButtonUp,
        Scrolled, ///< dx, dy in steps of a wheel
        KeyDown,
        KeyUp,
        Typed,   ///< codepoint
        Dropped, ///< files
        Refresh, ///< the window's content was lost, or its size or scale changed
        CloseAsked,
    };

    Kind kind = Kind::Refresh;
    double x = 0.0;
    double y = 0.0;
    double dx = 0.0;
    double dy = 0.0;
    Button button = Button::Left;
    int key = KeyNone;
    unsigned modifiers = ModifierNone;
    unsigned codepoint = 0;
    double time = 0.0; ///< in seconds, of a button or a scroll; only differences count
    std::vector<std::string> files;
};

/// Finds a key by its name in a script or in the list of keys: one character, or such as
/// "escape", "page-up" and "f5", with "shift+", "ctrl+" and "alt+" before it.
/// @return false, with nothing changed, for any other text.
bool ParseKey(const std::string& text, int& key, unsigned& modifiers);

} // namespace OV::ViewerApp
