#include "tests/imaging/TextureFiles.h"
#include "tests/support/GLFixture.h"

#include "orvane/platform/ESTextureLoader.h"
#include "orvane/platform/detail/EntryPoints.h"

#include <GL/glew.h>

#include <algorithm>

namespace OV::Test
{

namespace
{

class TextureLoaderGLTest : public GLFixture
{
protected:
    TextureLoaderGLTest() { Platform::LoadEntryPoints(); }

    struct Level
    {
        int width = 0;
        int height = 0;
        Pixels pixels;
    };

    static Level ReadLevel(unsigned texture, int level, GLenum target = GL_TEXTURE_2D,
                           GLenum binding = GL_TEXTURE_2D)
    {
        Level read;
        glBindTexture(binding, texture);
        glGetTexLevelParameteriv(target, level, GL_TEXTURE_WIDTH, &read.width);
        glGetTexLevelParameteriv(target, level, GL_TEXTURE_HEIGHT, &read.height);
        read.pixels.resize(static_cast<std::size_t>(read.width) * read.height * 4);
        if (!read.pixels.empty())
        {
            glGetTexImage(target, level, GL_RGBA, GL_UNSIGNED_BYTE, read.pixels.data());
        }
        glBindTexture(binding, 0);
        return read;
    }

    static int Parameter(unsigned texture, GLenum name)
    {
        GLint value = 0;
        glBindTexture(GL_TEXTURE_2D, texture);
        glGetTexParameteriv(GL_TEXTURE_2D, name, &value);
        glBindTexture(GL_TEXTURE_2D, 0);
        return value;
    }

    unsigned CreateRaw(Pixels pixels, int width, int height, bool clamp = false)
    {
        return loader.CreateTexture(pixels.data(), width, height, uScale, vScale, hasAlpha, clamp);
    }

    unsigned Load(const std::string& name)
    {
        return loader.CreateTexture(files.Path(), name, width, height, uScale, vScale, false, 1.0f, 0, hasAlpha);
    }

    Platform::Linux::ESTextureLoader loader;
    TextureFiles files;
    int width = 0;
    int height = 0;
    float uScale = 0.0f;
    float vScale = 0.0f;
    bool hasAlpha = false;
};

TEST_F(TextureLoaderGLTest, RawPixelsArriveAsTheyAre)
{
    const Pixels pixels = CountedPixels(5, 3);
    const unsigned id = CreateRaw(pixels, 5, 3);
    const Level level = ReadLevel(id, 0);
    EXPECT_EQ(level.width, 5);
    EXPECT_EQ(level.height, 3);
    EXPECT_EQ(level.pixels, pixels);
    EXPECT_TRUE(loader.ReleaseTexture(id));
}

TEST_F(TextureLoaderGLTest, ATextureOf256By300HasMipmaps)
{
    const unsigned id = CreateRaw(PlainPixels(256, 300, 40, 80, 120), 256, 300);
    EXPECT_EQ(ReadLevel(id, 0).height, 300);
    const Level second = ReadLevel(id, 1);
    EXPECT_EQ(second.width, 128);
    EXPECT_EQ(second.height, 150);
    EXPECT_EQ(second.pixels, PlainPixels(128, 150, 40, 80, 120));
    const Level last = ReadLevel(id, 8);
    EXPECT_EQ(last.width, 1);
    EXPECT_EQ(last.height, 1);
    EXPECT_EQ(Parameter(id, GL_TEXTURE_MIN_FILTER), GL_LINEAR_MIPMAP_LINEAR);
    loader.ReleaseTexture(id);
}

TEST_F(TextureLoaderGLTest, ATextureOf300By256HasNone)
{
    const unsigned id = CreateRaw(PlainPixels(300, 256, 40, 80, 120), 300, 256);
    EXPECT_EQ(ReadLevel(id, 0).width, 300);
    EXPECT_EQ(ReadLevel(id, 1).width, 0);
    EXPECT_EQ(Parameter(id, GL_TEXTURE_MIN_FILTER), GL_LINEAR);
    EXPECT_EQ(Parameter(id, GL_TEXTURE_MAG_FILTER), GL_LINEAR);
    EXPECT_EQ(Parameter(id, GL_TEXTURE_WRAP_S), GL_REPEAT);
    loader.ReleaseTexture(id);
}

TEST_F(TextureLoaderGLTest, AClampedTextureHasMipmapsThatItDoesNotUse)
{
    const unsigned id = CreateRaw(PlainPixels(16, 16, 1, 2, 3), 16, 16, true);
    EXPECT_EQ(ReadLevel(id, 4).width, 1);
    EXPECT_EQ(Parameter(id, GL_TEXTURE_MIN_FILTER), GL_LINEAR);
    EXPECT_EQ(Parameter(id, GL_TEXTURE_WRAP_S), GL_CLAMP_TO_EDGE);
    EXPECT_EQ(Parameter(id, GL_TEXTURE_WRAP_T), GL_CLAMP_TO_EDGE);
    loader.ReleaseTexture(id);
}

TEST_F(TextureLoaderGLTest, TheHostsPixelLayoutDoesNoHarm)
{
    GLuint buffer = 0;
    glGenBuffers(1, &buffer);
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, buffer);
    glBufferData(GL_PIXEL_UNPACK_BUFFER, 64, nullptr, GL_STREAM_DRAW);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 8);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 9);
    glPixelStorei(GL_UNPACK_SKIP_ROWS, 1);
    glPixelStorei(GL_UNPACK_SKIP_PIXELS, 2);
    const Pixels pixels = CountedPixels(3, 3);
    const unsigned id = CreateRaw(pixels, 3, 3);
    EXPECT_EQ(ReadLevel(id, 0).pixels, pixels);
    for (const auto& [name, value] : {std::pair<GLenum, GLint>{GL_UNPACK_ALIGNMENT, 8}, {GL_UNPACK_ROW_LENGTH, 9},
                                      {GL_UNPACK_SKIP_ROWS, 1}, {GL_UNPACK_SKIP_PIXELS, 2},
                                      {GL_PIXEL_UNPACK_BUFFER_BINDING, static_cast<GLint>(buffer)}})
    {
        GLint now = -1;
        glGetIntegerv(name, &now);
        EXPECT_EQ(now, value) << name;
        glPixelStorei(name, name == GL_UNPACK_ALIGNMENT ? 4 : 0);
    }
    glGetError();
    glDeleteBuffers(1, &buffer);
    loader.ReleaseTexture(id);
}

TEST_F(TextureLoaderGLTest, AFileArrivesWithItsBottomRowFirst)
{
    const Pixels pixels = CountedPixels(6, 5);
    const unsigned id = Load(files.Write("picture.png", pixels, 6, 5));
    const Level level = ReadLevel(id, 0);
    EXPECT_EQ(level.width, 6);
    EXPECT_EQ(level.height, 5);
    EXPECT_EQ(level.pixels, Flipped(pixels, 6));
    EXPECT_EQ(width, 6);
    EXPECT_EQ(height, 5);
    loader.ReleaseTexture(id);
}

TEST_F(TextureLoaderGLTest, ATextArrivesWithItsTopRowFirst)
{
    int textureWidth = 0;
    int textureHeight = 0;
    const unsigned id =
        loader.CreateTextTexture("DejaVu Sans", 32, "_", 0, width, height, textureWidth, textureHeight);
    ASSERT_NE(id, 0u);
    const Level level = ReadLevel(id, 0);
    EXPECT_EQ(level.width, width);
    EXPECT_EQ(level.height, height);
    const std::size_t half = level.pixels.size() / 2;
    EXPECT_EQ(std::count(level.pixels.begin(), level.pixels.begin() + half, 0), half) << "nothing above the line";
    EXPECT_GT(std::count(level.pixels.begin() + half, level.pixels.end(), 255), 40);
    EXPECT_EQ(Parameter(id, GL_TEXTURE_MIN_FILTER), GL_LINEAR);
    EXPECT_EQ(Parameter(id, GL_TEXTURE_MAG_FILTER), GL_LINEAR);
    EXPECT_EQ(Parameter(id, GL_TEXTURE_WRAP_S), GL_REPEAT);
    loader.ReleaseTexture(id);
}

TEST_F(TextureLoaderGLTest, ASharedTextureLivesUntilItsLastRelease)
{
    files.Write("picture.png", PlainPixels(2, 2, 1, 2, 3), 2, 2);
    const unsigned id = Load("picture.png");
    ASSERT_EQ(Load("picture.png"), id);
    loader.ReleaseTexture(id);
    EXPECT_TRUE(glIsTexture(id));
    EXPECT_EQ(ReadLevel(id, 0).pixels, PlainPixels(2, 2, 1, 2, 3));
    loader.ReleaseTexture(id);
    EXPECT_FALSE(glIsTexture(id));
}

TEST_F(TextureLoaderGLTest, MipMapLevelsComeFromTheirFilesAndTheRestFromTheFirst)
{
    files.Write("0.png", PlainPixels(8, 8, 200, 0, 0), 8, 8);
    files.Write("1.png", CountedPixels(4, 4), 4, 4);
    const unsigned id = loader.CreateMipMapTexture(files.Path(), {"0.png", "1.png"});
    ASSERT_NE(id, 0u);
    EXPECT_EQ(ReadLevel(id, 0).pixels, PlainPixels(8, 8, 200, 0, 0));
    EXPECT_EQ(ReadLevel(id, 1).pixels, Flipped(CountedPixels(4, 4), 4));
    EXPECT_EQ(ReadLevel(id, 2).pixels, PlainPixels(2, 2, 200, 0, 0));
    EXPECT_EQ(ReadLevel(id, 3).pixels, PlainPixels(1, 1, 200, 0, 0));
    EXPECT_EQ(Parameter(id, GL_TEXTURE_MIN_FILTER), GL_LINEAR_MIPMAP_LINEAR);
    loader.ReleaseTexture(id);
}

TEST_F(TextureLoaderGLTest, CubeMapFacesComeInTheOrderOfTheFiles)
{
    std::vector<std::string> names;
    for (int i = 0; i < 6; ++i)
    {
        const auto shade = static_cast<unsigned char>(20 + i * 30);
        names.push_back(files.Write(std::to_string(i) + ".png", PlainPixels(4, 4, shade, 1, 2), 4, 4));
    }
    const unsigned id = loader.CreateCubeMap(files.Path(), names);
    ASSERT_NE(id, 0u);
    for (int i = 0; i < 6; ++i)
    {
        SCOPED_TRACE(i);
        const auto shade = static_cast<unsigned char>(20 + i * 30);
        const GLenum face = GL_TEXTURE_CUBE_MAP_POSITIVE_X + static_cast<GLenum>(i);
        EXPECT_EQ(ReadLevel(id, 0, face, GL_TEXTURE_CUBE_MAP).pixels, PlainPixels(4, 4, shade, 1, 2));
        EXPECT_EQ(ReadLevel(id, 2, face, GL_TEXTURE_CUBE_MAP).pixels, PlainPixels(1, 1, shade, 1, 2));
    }
    loader.ReleaseTexture(id);
}

}  // namespace

}  // namespace OV::Test
