#include "tests/support/GLFixture.h"

#include <sstream>
#include <stdexcept>
#include <utility>
#include <vector>

namespace OV::Test
{

namespace
{

/// What a frame is documented to leave as its last pass needed it.
const char* const DocumentedStateChanges[] = {
    "viewport",          "clear colour",   "face culling",   "depth test",
    "blend source",      "blend destination", "blend source alpha", "blend destination alpha",
    "active texture",    "program",        "array buffer",   "element buffer",
    "unpack alignment",
};

std::string Join(const std::vector<double>& values)
{
    std::ostringstream text;
    for (std::size_t i = 0; i < values.size(); ++i)
    {
        text << (i > 0 ? ", " : "") << values[i];
    }
    return text.str();
}

std::unique_ptr<Host::HeadlessContext> CreateContext()
{
    Host::HeadlessContext::Options options;
    options.width = GLFixture::DefaultSize;
    options.height = GLFixture::DefaultSize;
    std::string error;
    auto context = Host::HeadlessContext::Create(options, error);
    if (!context)
    {
        throw std::runtime_error(error);
    }
    return context;
}

}  // namespace

Host::HeadlessContext& GLFixture::Context()
{
    // Never destroyed: that would unload the driver, and what the driver itself keeps for the
    // life of the process (its mipmap shaders, for one) could no longer be told from a leak of ours.
    static Host::HeadlessContext* const context = CreateContext().release();
    return *context;
}

GLFixture::GLFixture() : m_allowedState(std::begin(DocumentedStateChanges), std::end(DocumentedStateChanges))
{
    if (!Context().MakeCurrent())
    {
        throw std::runtime_error("the GL context cannot be made current");
    }
    GLState::Reset();
    UseFramebuffer(DefaultSize, DefaultSize);
    GLState::DropErrors();
    m_stateBefore = GLState::Capture();
    m_objectsBefore = GLState::CaptureObjects();
}

GLFixture::~GLFixture()
{
    if (!Context().MakeCurrent())
    {
        ADD_FAILURE() << "the GL context was lost";
        return;
    }
    ExpectNoGLError();
    CheckState();
    GLState::Unbind();
    CheckObjects();
}

void GLFixture::UseFramebuffer(int width, int height, int samples)
{
    Host::HeadlessContext& context = Context();
    if (context.GetWidth() == width && context.GetHeight() == height && context.GetSamples() == samples)
    {
        context.BindFramebuffer();
        GLState::ClearFramebuffer();
        return;
    }
    const GLObjects old = GLState::CaptureObjects();
    std::string error;
    if (!context.Resize(width, height, samples, error))
    {
        throw std::runtime_error(error);
    }
    GLState::ClearFramebuffer();
    ExpectNewFramebuffer(old);
}

void GLFixture::ExpectNewFramebuffer(const GLObjects& old)
{
    if (m_stateBefore.empty())
    {
        return;
    }
    const GLStateValues state = GLState::Capture();
    for (const char* name : {"draw framebuffer", "read framebuffer"})
    {
        m_stateBefore[name] = state.at(name);
    }
    // The new framebuffer is made before the old one goes, so that no name stands for both.
    for (const auto& [kind, now] : GLState::CaptureObjects())
    {
        std::set<unsigned int>& expected = m_objectsBefore[kind];
        for (const unsigned int name : old.at(kind))
        {
            if (now.count(name) == 0)
            {
                expected.erase(name);
            }
        }
        for (const unsigned int name : now)
        {
            if (old.at(kind).count(name) == 0)
            {
                expected.insert(name);
            }
        }
    }
}

int GLFixture::Width() const
{
    return Context().GetWidth();
}

int GLFixture::Height() const
{
    return Context().GetHeight();
}

Picture GLFixture::ReadPixels() const
{
    std::vector<unsigned char> rgba;
    if (!Context().ReadPixels(rgba))
    {
        ADD_FAILURE() << "the framebuffer cannot be read";
    }
    return Picture(Width(), Height(), std::move(rgba));
}

void GLFixture::ExpectColorInRect(const Picture& picture, const PixelRect& rect, const Pixel& color, int tolerance)
{
    if (rect.width < 1 || rect.height < 1 || rect.x < 0 || rect.y < 0
        || rect.x + rect.width > picture.GetWidth() || rect.y + rect.height > picture.GetHeight())
    {
        ADD_FAILURE() << "the rectangle " << rect.x << ", " << rect.y << ", " << rect.width << " x " << rect.height
                      << " is empty or not inside the picture of " << picture.GetWidth() << " x "
                      << picture.GetHeight();
        return;
    }
    int wrong = 0;
    std::ostringstream first;
    for (int y = rect.y; y < rect.y + rect.height; ++y)
    {
        for (int x = rect.x; x < rect.x + rect.width; ++x)
        {
            const Pixel actual = picture.At(x, y);
            if (ChannelDifference(actual, color) > tolerance && wrong++ == 0)
            {
                first << actual << " at " << x << ", " << y;
            }
        }
    }
    EXPECT_EQ(wrong, 0) << "of " << rect.width * rect.height << " pixels are not " << color << " +- " << tolerance
                        << "; the first is " << first.str();
}

void GLFixture::ExpectColorInRect(const PixelRect& rect, const Pixel& color, int tolerance) const
{
    ExpectColorInRect(ReadPixels(), rect, color, tolerance);
}

void GLFixture::ExpectNoGLError()
{
    // Bounded, since a lost context reports an error for ever.
    for (int i = 0; i < 16; ++i)
    {
        const unsigned int error = GLState::TakeError();
        if (error == 0)
        {
            return;
        }
        ADD_FAILURE() << "GL error 0x" << std::hex << error;
    }
}

void GLFixture::AllowStateChange(const std::string& name)
{
    if (m_stateBefore.count(name) == 0)
    {
        ADD_FAILURE() << "no state is named '" << name << "'";
    }
    m_allowedState.insert(name);
}

void GLFixture::AllowObjects()
{
    m_objectsAllowed = true;
}

void GLFixture::CheckState() const
{
    for (const auto& [name, now] : GLState::Capture())
    {
        const std::vector<double>& before = m_stateBefore.at(name);
        if (before != now && m_allowedState.count(name) == 0)
        {
            ADD_FAILURE() << "the test left '" << name << "' changed from " << Join(before) << " to " << Join(now);
        }
    }
}

void GLFixture::CheckObjects() const
{
    if (m_objectsAllowed)
    {
        return;
    }
    for (const auto& [kind, now] : GLState::CaptureObjects())
    {
        const std::set<unsigned int>& before = m_objectsBefore.at(kind);
        for (const unsigned int name : now)
        {
            EXPECT_EQ(before.count(name), 1u) << "the " << kind << " " << name << " is left over";
        }
        for (const unsigned int name : before)
        {
            EXPECT_EQ(now.count(name), 1u) << "the " << kind << " " << name << " of somebody else was deleted";
        }
    }
}

}  // namespace OV::Test
