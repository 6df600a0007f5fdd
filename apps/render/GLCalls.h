#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace OV::RenderApp
{

/// What a GL call is for.
enum class GLCallKind
{
    Draw,
    Program,
    Uniform,
    Attribute, ///< pointers, and arrays switched on and off
    Buffer,
    Texture, ///< bindings and units
    Framebuffer,
    State, ///< depth, blending, culling and the like
    Clear,
};

constexpr std::size_t GLCallKindCount = static_cast<std::size_t>(GLCallKind::Clear) + 1;

/// Names of the kinds in what --stats tells.
constexpr std::array<const char*, GLCallKindCount> GLCallKindNames = {
    "draw", "program", "uniform", "attribute", "buffer", "texture", "framebuffer", "state", "clear"};

using GLCallCounts = std::array<std::uint64_t, GLCallKindCount>;

/// Counts the GL calls of this process by kind, for the length of a scope; queries and what makes or
/// deletes GL objects are not counted. One at a time, with the engine's entry points loaded.
class GLCallCounter
{
public:
    GLCallCounter();
    ~GLCallCounter();

    GLCallCounter(const GLCallCounter&) = delete;
    GLCallCounter& operator=(const GLCallCounter&) = delete;

    const GLCallCounts& GetCounts() const;
};

} // namespace OV::RenderApp
