#include "tests/orvane_host/present/ShadowStageModels.h"
#include "tests/support/GLRecorder.h"

#include <GL/glew.h>

#include <cstddef>

namespace OV::Test
{

namespace
{

using Host::PresentationSettings;

/// Shadows where GL has no textures of floats, so that the sun's map is of one part.
class PlainShadow : public PresentationFixture
{
protected:
    PlainShadow() : PresentationFixture(120, 90, 0) {}

    /// A view along the floor, of which what is near needs a finer map than what is far.
    static PresentationSettings AlongTheFloor(bool soft)
    {
        PresentationSettings settings = LookingDown();
        settings.view = {};
        settings.view.eye = Vector(-1.0f, 0.06f, 1.2f);
        settings.view.target = Vector(-1.0f, 0.0f, 0.4f);
        settings.shadows->soft = soft;
        return settings;
    }

    struct Drawn
    {
        Picture picture;
        std::size_t tables = 0; ///< textures of floats that were uploaded
        GLenum error = GL_NO_ERROR;
    };

    Drawn Draw(const PresentationSettings& wanted, bool isOld)
    {
        GLRecorder gl(GLRecorder::Mode::Forward);
        if (isOld)
        {
            gl.SetString(GL_VERSION, "2.1 of old");
            gl.SetString(GL_EXTENSIONS, "GL_ARB_framebuffer_object");
        }
        const FloorAndCube made = MakeFloorAndCube(0.5f);
        Apply(*made.presentation, wanted);
        Drawn drawn;
        drawn.picture = PresentationFixture::Draw(*made.presentation);
        drawn.tables = gl.Count("glTexImage2D", {GL_TEXTURE_2D, 0, GL_RGBA32F});
        drawn.error = glGetError();
        return drawn;
    }

    /// Pixels that are darker than without the sun's shadows.
    static std::size_t CountDarker(const Picture& picture, const Picture& bare)
    {
        std::size_t count = 0;
        for (int y = 0; y < bare.GetHeight(); ++y)
        {
            for (int x = 0; x < bare.GetWidth(); ++x)
            {
                count += picture.At(x, y).r + 60 < bare.At(x, y).r ? 1 : 0;
            }
        }
        return count;
    }
};

} // namespace

TEST_F(PlainShadow, IsThereWithoutTexturesOfFloats)
{
    for (const bool soft : {false, true})
    {
        SCOPED_TRACE(soft ? "soft" : "hard");
        PresentationSettings settings = AlongTheFloor(soft);
        const Drawn finest = Draw(settings, false);
        ASSERT_EQ(finest.tables, 1u) << "the view needs no parts";
        const Drawn plain = Draw(settings, true);
        EXPECT_EQ(plain.tables, 0u);
        EXPECT_EQ(plain.error, GLenum{GL_NO_ERROR});
        settings.shadows.reset();
        const Picture bare = Draw(settings, true).picture;
        const auto darker = static_cast<double>(CountDarker(finest.picture, bare));
        EXPECT_GT(darker, 300.0);
        EXPECT_NEAR(static_cast<double>(CountDarker(plain.picture, bare)), darker, 0.1 * darker);
    }
}

} // namespace OV::Test
