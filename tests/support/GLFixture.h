#pragma once

#include "orvane_host/context/HeadlessContext.h"
#include "tests/support/GLState.h"
#include "tests/support/Picture.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace OV::Test
{

/// Base of every test that draws: one headless context a process, a framebuffer that is bound
/// and cleared to transparent black before each test, and a look back at the end.
///
/// The destructor, which runs after the members of the derived fixture are gone, fails the test
/// when a GL error is pending, when a GL object lives that did not live before, or when state
/// differs that the engine does not document to change. A missing context fails the test.
class GLFixture : public ::testing::Test
{
public:
    static constexpr int DefaultSize = 128;

    /// The context of this process; throws when there is none to be had.
    static Host::HeadlessContext& Context();

protected:
    GLFixture();
    ~GLFixture() override;

    /// Replaces the framebuffer, binds it with a viewport to match and clears it.
    void UseFramebuffer(int width, int height, int samples = 0);

    int Width() const;
    int Height() const;

    /// The fixture's framebuffer as it is now.
    Picture ReadPixels() const;

    /// Every pixel of the rectangle has that colour, give or take `tolerance` a channel. Reports
    /// the first that has not and how many there are. A rectangle that is empty or reaches out
    /// of the picture is a failure too.
    static void ExpectColorInRect(const Picture& picture, const PixelRect& rect, const Pixel& color,
                                  int tolerance = 0);

    /// The same on the framebuffer as it is now.
    void ExpectColorInRect(const PixelRect& rect, const Pixel& color, int tolerance = 0) const;

    /// No GL error is pending. Clears the errors.
    static void ExpectNoGLError();

    /// Lets the test leave this state changed; the names are those of GLState::Capture.
    void AllowStateChange(const std::string& name);

    /// Lets the test leave GL objects behind, for objects that live as long as the process.
    void AllowObjects();

private:
    /// Takes a framebuffer that replaced the one of `old` as the state to come back to.
    void ExpectNewFramebuffer(const GLObjects& old);
    void CheckState() const;
    void CheckObjects() const;

    std::set<std::string> m_allowedState;
    bool m_objectsAllowed = false;
    GLStateValues m_stateBefore;
    GLObjects m_objectsBefore;
};

}  // namespace OV::Test
