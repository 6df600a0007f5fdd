#include "apps/viewer/Input.h"

#include <algorithm>
#include <cctype>
#include <iterator>

namespace OV::ViewerApp
{

namespace
{

constexpr struct
{
    const char* name;
    int key;
} kKeys[] = {
    {"escape", KeyEscape}, {"enter", KeyEnter},      {"tab", KeyTab},           {"backspace", KeyBackspace},
    {"delete", KeyDelete}, {"left", KeyLeft},        {"right", KeyRight},       {"up", KeyUp},
    {"down", KeyDown},     {"page-up", KeyPageUp},   {"page-down", KeyPageDown}, {"home", KeyHome},
    {"end", KeyEnd},       {"space", ' '},           {"plus", '+'},
};

constexpr struct
{
    const char* name;
    unsigned modifier;
} kModifiers[] = {{"shift+", ModifierShift}, {"ctrl+", ModifierControl}, {"alt+", ModifierAlt}};

/// None for what is no name of a key.
int KeyOf(const std::string& name)
{
    if (name.size() == 1 && std::isgraph(static_cast<unsigned char>(name[0])))
    {
        return std::toupper(static_cast<unsigned char>(name[0]));
    }
    const auto found = std::find_if(std::begin(kKeys), std::end(kKeys),
                                    [&](const auto& candidate) { return candidate.name == name; });
    if (found != std::end(kKeys))
    {
        return found->key;
    }
    for (int number = 1; number <= 12; ++number)
    {
        if (name == "f" + std::to_string(number))
        {
            return KeyF1 + number - 1;
        }
    }
    return KeyNone;
}

} // namespace

bool ParseKey(const std::string& text, int& key, unsigned& modifiers)
{
    std::string name = text;
    unsigned held = ModifierNone;
    bool found = true;
    while (found)
    {
        found = false;
        for (const auto& candidate : kModifiers)
        {
            const std::string prefix = candidate.name;
            if (name.size() > prefix.size() && name.compare(0, prefix.size(), prefix) == 0)
            {
                name.erase(0, prefix.size());
                held |= candidate.modifier;
                found = true;
            }
        }
    }
    const int named = KeyOf(name);
    if (named == KeyNone)
    {
        return false;
    }
    key = named;
    modifiers = held;
    return true;
}

} // namespace OV::ViewerApp
