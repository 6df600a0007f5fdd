#pragma once

#include <memory>

namespace OV::Host
{

/// Keeps the GL state of a program that has GL of its own, while the engine draws in its context.
///
/// The constructor saves what a frame changes and sets GL's initial values where a frame needs
/// them; the destructor brings all of it back. The framebuffers stay bound, so that the frame goes
/// where the program draws, and with them the viewport. Matrices are left alone: the engine has none.
///
///     {
///         OV::Host::GLStateGuard guard;
///         app.Render(renderer.get(), false);
///     }
///
/// Saved are: the framebuffers, the renderbuffer, the program, the vertex array; buffers of
/// vertices, indices, pixel packing and unpacking; the first 16 vertex attributes of no vertex
/// array; 2D and cube textures and samplers of the first 8 units; all that glPushAttrib and
/// glPushClientAttrib keep; and the switches and values of later versions that a frame feels.
///
/// Not looked after: what runs across the frame (queries, conditional rendering, transform feedback,
/// display lists, glBegin), values of draw buffers and viewports past the first, and integer values
/// of attributes that no array gives. The state of objects is their own, but for the parameters of
/// textures bound. GL errors that are pending stay so.
class GLStateGuard
{
public:
    /// GL, a compatibility context that is current.
    GLStateGuard();

    /// GL, the same context.
    ~GLStateGuard();

    GLStateGuard(const GLStateGuard&) = delete;
    GLStateGuard& operator=(const GLStateGuard&) = delete;

    /// Whether state was saved. It is not where one of the two stacks of attributes of GL is full;
    /// then nothing is set and nothing brought back, and nothing should be drawn.
    bool IsActive() const { return m_saved != nullptr; }

private:
    struct Saved;

    std::unique_ptr<Saved> m_saved;
};

} // namespace OV::Host
