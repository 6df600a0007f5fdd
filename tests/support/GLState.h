#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

namespace OV::Test
{

/// The GL state that the engine may touch, as named values.
using GLStateValues = std::map<std::string, std::vector<double>>;

/// Names of the living GL objects, by kind: "buffer", "texture", "program", "shader",
/// "framebuffer", "renderbuffer".
using GLObjects = std::map<std::string, std::set<unsigned int>>;

/// Looks at a GL context past the entry points of the engine and of a recording stand-in, so
/// that looking changes nothing. The context must be current.
class GLState
{
public:
    static GLStateValues Capture();

    /// Puts everything that Capture reads, but framebuffer and viewport, to GL's start values.
    static void Reset();

    static GLObjects CaptureObjects();

    /// Takes the oldest pending error, 0 for none.
    static unsigned int TakeError();

    /// Drops all pending errors.
    static void DropErrors();

    /// Clears the bound framebuffer to transparent black, the farthest depth and stencil 0, and
    /// leaves these as the values to clear with.
    static void ClearFramebuffer();

    /// Unbinds program, buffers and textures, so that objects already deleted are really gone.
    static void Unbind();
};

}  // namespace OV::Test
