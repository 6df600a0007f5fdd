#pragma once

#include <string>

namespace OV::Host
{

/// Why no pixel of a picture is of the model.
enum class BlankReason
{
    NotBlank,
    EmptyModel,      ///< there is nothing that can be drawn
    AllHidden,       ///< by Presentation::Hide and Isolate, or by the model itself
    AllCutAway,      ///< by the planes of the section
    OutOfView,       ///< the eye looks past the model or away from it
    EyeInside,       ///< the eye is inside something, of which it sees the backs alone
    OnlyBacks,       ///< faces turn their backs to the eye, which are left out
    TooSmall,        ///< what is in the view covers no pixel
    InFog,           ///< farther away than the fog lets through
    TooTiny,         ///< the model is too small for the numbers of a camera
    TooFarAway,      ///< the model is so far from the origin that its places come together
    FarApart,        ///< the model reaches over so much that no part of it covers a pixel
    NotFinite,       ///< no place of the model is a number that a camera can hold
    BackgroundColor, ///< what is seen has the colour of the background, or none
};

/// What Presentation::FindBlank finds.
struct BlankPicture
{
    BlankReason reason = BlankReason::NotBlank;
    /// Path of the node that BlankReason::EyeInside is about; empty where it has no name.
    std::string node;

    explicit operator bool() const { return reason != BlankReason::NotBlank; }

    /// The reason in one line without a capital and without a full stop; empty for none.
    std::string Line() const;
};

} // namespace OV::Host
