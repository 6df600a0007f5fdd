#include "orvane/imaging/TextureLoader.h"

#include "tests/imaging/TextureFiles.h"
#include "tests/support/GLRecorder.h"
#include "tests/support/VirtualSlot.h"

#include "orvane/imaging/Image.h"
#include "orvane/imaging/TextureLoaderPtr.h"
#include "orvane/platform/ESTextureLoader.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/scene/Material.h"

#include <GL/glew.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <stdexcept>
#include <type_traits>

namespace OV::Test
{

namespace
{

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

using Texts = std::vector<std::string>;

// Opens what the loader keeps for its subclasses.
class OpenLoader : public Platform::Linux::ESTextureLoader
{
public:
    using ESTextureLoader::AddTextTexture;
    using ESTextureLoader::anisotropySupported;
    using ESTextureLoader::cache;
    using ESTextureLoader::CheckExtensions;
    using ESTextureLoader::extensionsChecked;
    using ESTextureLoader::maxAnisotropy;
    using ESTextureLoader::mipmapsEnabled;
};

const std::string kAnisotropyName = "GL_EXT_texture_filter_anisotropic";

Texts Parameters(GLenum target, std::initializer_list<std::pair<GLenum, GLenum>> values)
{
    Texts texts;
    for (const auto& [name, value] : values)
    {
        texts.push_back(CallText("glTexParameteri", {double(target), double(name), double(value)}));
    }
    return texts;
}

class TextureLoaderTest : public testing::Test
{
protected:
    void OfferAnisotropy(float degree)
    {
        gl.SetString(GL_EXTENSIONS, ("GL_A " + kAnisotropyName + " GL_B").c_str());
        gl.SetFloats(GL_MAX_TEXTURE_MAX_ANISOTROPY_EXT, {degree});
    }

    unsigned CreateRaw(int width, int height, bool clamp = false)
    {
        Pixels pixels = PlainPixels(width, height, 1, 2, 3);
        return loader.CreateTexture(pixels.data(), width, height, uScale, vScale, hasAlpha, clamp);
    }

    unsigned Load(const std::string& name)
    {
        return loader.CreateTexture(files.Path(), name, width, height, uScale, vScale, true, 0.5f, 16, hasAlpha);
    }

    // The parameters that were set, as they are written.
    Texts ParameterCalls() const { return gl.Strings({"glTexParameteri", "glTexParameterf"}); }

    GLRecorder gl;
    OpenLoader loader;
    TextureFiles files;
    int width = -1;
    int height = -1;
    float uScale = -1.0f;
    float vScale = -1.0f;
    bool hasAlpha = false;
};

TEST(TextureLoader, CreateMakesTheLoaderOfThePlatformWithoutGL)
{
    const GLRecorder gl;
    const std::unique_ptr<TextureLoader> loader(TextureLoader::Create());
    EXPECT_NE(dynamic_cast<Platform::Linux::ESTextureLoader*>(loader.get()), nullptr);
    static_assert(std::is_same_v<Platform::Win32::ESTextureLoader, Platform::Linux::ESTextureLoader>);
    EXPECT_THAT(gl.Strings(), IsEmpty());
}

TEST(TextureLoader, KeepsTheOrderOfItsVirtualOperations)
{
    using Raw = unsigned (TextureLoader::*)(unsigned char*, int, int, float&, float&, bool&, bool);
    using File = unsigned (TextureLoader::*)(const FilePath&, const std::string&, int&, int&, float&, float&, bool,
                                             float, int, bool&);
    EXPECT_EQ(VirtualSlot(&TextureLoader::CreateTextTexture), 1);
    EXPECT_EQ(VirtualSlot(static_cast<Raw>(&TextureLoader::CreateTexture)), 2);
    EXPECT_EQ(VirtualSlot(static_cast<File>(&TextureLoader::CreateTexture)), 3);
    EXPECT_EQ(VirtualSlot(&TextureLoader::CreateMipMapTexture), 4);
    EXPECT_EQ(VirtualSlot(&TextureLoader::CreateCubeMap), 5);
    EXPECT_EQ(VirtualSlot(&TextureLoader::ReleaseTexture), 6);
    EXPECT_EQ(VirtualSlot(&TextureLoader::Suspend), 7);
    EXPECT_EQ(VirtualSlot(&TextureLoader::Resume), 8);
}

TEST_F(TextureLoaderTest, StartsEmptyUncheckedWithMipmapsAndWithoutAnisotropy)
{
    EXPECT_TRUE(loader.cache.empty());
    EXPECT_FALSE(loader.extensionsChecked);
    EXPECT_TRUE(loader.mipmapsEnabled);
    EXPECT_FALSE(loader.anisotropySupported);
    EXPECT_EQ(loader.maxAnisotropy, 1.0f);
}

TEST_F(TextureLoaderTest, CheckExtensionsFindsAnisotropyInsideAnyName)
{
    gl.SetString(GL_EXTENSIONS, "GL_XEXT_texture_filter_anisotropicX");
    gl.SetFloats(GL_MAX_TEXTURE_MAX_ANISOTROPY_EXT, {16.0f});
    loader.CheckExtensions();
    EXPECT_TRUE(loader.extensionsChecked);
    EXPECT_TRUE(loader.anisotropySupported);
    EXPECT_EQ(loader.maxAnisotropy, 16.0f);
}

TEST_F(TextureLoaderTest, CheckExtensionsWithoutAnisotropyAsksForNoDegree)
{
    gl.SetFloats(GL_MAX_TEXTURE_MAX_ANISOTROPY_EXT, {16.0f});
    for (const char* extensions : {static_cast<const char*>(nullptr), "", "GL_A EXT_texture_filter_anisotropi"})
    {
        gl.SetString(GL_EXTENSIONS, extensions);
        loader.CheckExtensions();
        EXPECT_FALSE(loader.anisotropySupported);
        EXPECT_EQ(loader.maxAnisotropy, 1.0f);
    }
    EXPECT_EQ(gl.Count("glGetFloatv"), 0u);
}

TEST_F(TextureLoaderTest, TheExtensionsAreReadOnceAtTheFirstRawTexture)
{
    EXPECT_EQ(gl.Count("glGetString"), 0u);
    CreateRaw(2, 2);
    CreateRaw(2, 2);
    EXPECT_EQ(gl.Count("glGetString"), 1u);
    EXPECT_TRUE(loader.extensionsChecked);
}

TEST_F(TextureLoaderTest, ARawTextureIsMadeInThisOrder)
{
    OfferAnisotropy(8.0f);
    loader.CheckExtensions();
    gl.Clear();
    const unsigned id = CreateRaw(4, 2);
    EXPECT_NE(id, 0u);
    const double name = id;
    EXPECT_THAT(
        gl.Strings({"glGenTextures", "glBindTexture", "glTexImage2D", "glGenerateMipmap", "glTexParameteri",
                    "glTexParameterf"}),
        ElementsAreArray({
            CallText("glGenTextures", {1}, "{" + std::to_string(id) + "}"),
            CallText("glBindTexture", {GL_TEXTURE_2D, name}),
            CallText("glTexImage2D", {GL_TEXTURE_2D, 0, GL_RGBA, 4, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE}, "data"),
            CallText("glGenerateMipmap", {GL_TEXTURE_2D}),
            CallText("glTexParameteri", {GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR}),
            CallText("glTexParameterf", {GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY_EXT, 8}),
            CallText("glTexParameteri", {GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR}),
            CallText("glTexParameteri", {GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT}),
            CallText("glTexParameteri", {GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT}),
            CallText("glBindTexture", {GL_TEXTURE_2D, 0}),
        }));
    EXPECT_EQ(uScale, 1.0f);
    EXPECT_EQ(vScale, 1.0f);
    EXPECT_EQ(gl.TextureTexels(id).bytes, PlainPixels(4, 2, 1, 2, 3));
}

TEST_F(TextureLoaderTest, WithoutAnisotropyTheSettingIsLeftOut)
{
    CreateRaw(4, 2);
    EXPECT_EQ(gl.Count("glTexParameterf"), 0u);
    EXPECT_EQ(gl.Count("glTexParameteri", {GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR}), 1u);
}

TEST_F(TextureLoaderTest, OnlyTheWidthDecidesAboutMipmaps)
{
    struct
    {
        int width, height;
        bool mipmapped;
    } const cases[] = {{300, 256, false}, {256, 300, true}, {1, 1, true},   {2, 3, true},
                       {3, 2, false},     {0, 4, false},    {255, 1, false}, {257, 1, false}};
    OfferAnisotropy(2.0f);
    for (const auto& expected : cases)
    {
        SCOPED_TRACE(testing::Message() << expected.width << " by " << expected.height);
        gl.Clear();
        EXPECT_NE(CreateRaw(expected.width, expected.height), 0u);
        EXPECT_EQ(gl.Count("glGenerateMipmap"), expected.mipmapped ? 1u : 0u);
        EXPECT_EQ(gl.Count("glTexParameterf"), expected.mipmapped ? 1u : 0u);
        const double filter = expected.mipmapped ? GL_LINEAR_MIPMAP_LINEAR : GL_LINEAR;
        EXPECT_EQ(gl.Count("glTexParameteri", {GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, filter}), 1u);
    }
}

TEST_F(TextureLoaderTest, AClampedTextureHasMipmapsButIsSampledWithoutThem)
{
    OfferAnisotropy(8.0f);
    CreateRaw(256, 256, true);
    EXPECT_EQ(gl.Count("glGenerateMipmap", {GL_TEXTURE_2D}), 1u);
    EXPECT_THAT(ParameterCalls(), ElementsAreArray(Parameters(GL_TEXTURE_2D,
                                                              {{GL_TEXTURE_MAG_FILTER, GL_LINEAR},
                                                               {GL_TEXTURE_MIN_FILTER, GL_LINEAR},
                                                               {GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE},
                                                               {GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE}})));
}

TEST_F(TextureLoaderTest, WithMipmapsOffThereAreNone)
{
    OfferAnisotropy(8.0f);
    loader.mipmapsEnabled = false;
    CreateRaw(256, 256);
    EXPECT_EQ(gl.Count("glGenerateMipmap"), 0u);
    EXPECT_EQ(gl.Count("glTexParameterf"), 0u);
    EXPECT_EQ(gl.Count("glTexParameteri", {GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR}), 1u);
}

TEST_F(TextureLoaderTest, ARawTextureStaysOutOfTheCacheAndItsPixelsStayTheCallers)
{
    Pixels pixels = PlainPixels(2, 2, 9, 8, 7);
    const unsigned first = loader.CreateTexture(pixels.data(), 2, 2, uScale, vScale, hasAlpha, false);
    const unsigned second = loader.CreateTexture(pixels.data(), 2, 2, uScale, vScale, hasAlpha, false);
    EXPECT_NE(first, second);
    EXPECT_TRUE(loader.cache.empty());
    EXPECT_EQ(pixels, PlainPixels(2, 2, 9, 8, 7));
}

TEST_F(TextureLoaderTest, HasAlphaIsNeitherReadNorWritten)
{
    for (const bool before : {false, true})
    {
        hasAlpha = before;
        CreateRaw(2, 2);
        EXPECT_EQ(hasAlpha, before);
        Load(files.Write(before ? "a.png" : "b.png", PlainPixels(2, 2, 0, 0, 0, 0), 2, 2));
        EXPECT_EQ(hasAlpha, before);
    }
}

TEST_F(TextureLoaderTest, ThePixelLayoutOfTheHostIsPutAsideBeforeEachUpload)
{
    glPixelStorei(GL_UNPACK_ALIGNMENT, 8);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 100);
    glPixelStorei(GL_UNPACK_SKIP_ROWS, 3);
    glPixelStorei(GL_UNPACK_SKIP_PIXELS, 5);
    gl.Clear();
    CreateRaw(3, 2);
    const std::size_t upload = gl.IndexOf("glTexImage2D");
    EXPECT_LT(gl.IndexOf("glPixelStorei", {GL_UNPACK_ALIGNMENT, 4}), upload);
    EXPECT_LT(gl.IndexOf("glPixelStorei", {GL_UNPACK_ROW_LENGTH, 0}), upload);
    EXPECT_LT(gl.IndexOf("glPixelStorei", {GL_UNPACK_SKIP_ROWS, 0}), upload);
    EXPECT_LT(gl.IndexOf("glPixelStorei", {GL_UNPACK_SKIP_PIXELS, 0}), upload);
}

TEST_F(TextureLoaderTest, AFileIsLoadedWithItsLastRowFirstAndSharedAfterwards)
{
    const Pixels pixels = CountedPixels(4, 3);
    files.Write("picture.png", pixels, 4, 3);
    const unsigned first = Load("picture.png");
    ASSERT_NE(first, 0u);
    EXPECT_EQ(width, 4);
    EXPECT_EQ(height, 3);
    EXPECT_EQ(uScale, 1.0f);
    EXPECT_EQ(vScale, 1.0f);
    EXPECT_EQ(gl.TextureTexels(first).bytes, Flipped(pixels, 4));
    // A file's texture repeats.
    EXPECT_EQ(gl.Count("glTexParameteri", {GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT}), 1u);
    ASSERT_EQ(loader.cache.size(), 1u);
    EXPECT_TRUE(loader.cache.begin()->first.isFile);
    EXPECT_FALSE(loader.cache.begin()->first.flag);
    EXPECT_EQ(loader.cache.begin()->second->refCount, 1);

    gl.Clear();
    width = height = -1;
    uScale = vScale = -1.0f;
    EXPECT_EQ(Load("picture.png"), first);
    EXPECT_EQ(width, 4);
    EXPECT_EQ(height, 3);
    EXPECT_EQ(uScale, 1.0f);
    EXPECT_EQ(vScale, 1.0f);
    EXPECT_EQ(loader.cache.begin()->second->refCount, 2);
    EXPECT_THAT(gl.Strings(), IsEmpty());
}

TEST_F(TextureLoaderTest, ASharedTextureDiesWithItsLastUser)
{
    files.Write("picture.png", PlainPixels(2, 2, 1, 1, 1), 2, 2);
    const unsigned id = Load("picture.png");
    ASSERT_EQ(Load("picture.png"), id);
    EXPECT_TRUE(loader.ReleaseTexture(id));
    EXPECT_EQ(gl.Count("glDeleteTextures"), 0u);
    EXPECT_EQ(loader.cache.size(), 1u);
    EXPECT_EQ(loader.cache.begin()->second->refCount, 1);
    EXPECT_TRUE(loader.ReleaseTexture(id));
    EXPECT_THAT(gl.Strings({"glDeleteTextures"}),
                ElementsAre("glDeleteTextures(1, {" + std::to_string(id) + "})"));
    EXPECT_TRUE(loader.cache.empty());
    EXPECT_EQ(gl.LiveCount(), 0u);

    EXPECT_NE(Load("picture.png"), 0u);
    EXPECT_EQ(loader.cache.begin()->second->refCount, 1);
}

TEST_F(TextureLoaderTest, TheOtherArgumentsOfAFileAreIgnored)
{
    files.Write("picture.png", PlainPixels(64, 64, 1, 1, 1), 64, 64);
    const unsigned first = loader.CreateTexture(files.Path(), "picture.png", width, height, uScale, vScale, true,
                                                0.25f, 8, hasAlpha);
    EXPECT_EQ(width, 64);
    EXPECT_EQ(loader.CreateTexture(files.Path(), "picture.png", width, height, uScale, vScale, false, 4.0f, 4096,
                                   hasAlpha),
              first);
}

TEST_F(TextureLoaderTest, FilesOfOneNameInTwoFoldersAreTwoTextures)
{
    TextureFiles others;
    files.Write("picture.png", PlainPixels(2, 2, 1, 1, 1), 2, 2);
    others.Write("picture.png", PlainPixels(2, 2, 2, 2, 2), 2, 2);
    const unsigned first = Load("picture.png");
    const unsigned second = loader.CreateTexture(others.Path(), "picture.png", width, height, uScale, vScale, false,
                                                 1.0f, 0, hasAlpha);
    EXPECT_NE(first, second);
    EXPECT_EQ(loader.cache.size(), 2u);
}

TEST_F(TextureLoaderTest, AFileThatFailsGivesZeroAndLeavesNothing)
{
    files.WriteBytes("empty.png", {});
    for (const char* name : {"missing.png", "empty.png"})
    {
        EXPECT_EQ(Load(name), 0u) << name;
    }
    EXPECT_TRUE(loader.cache.empty());
    EXPECT_THAT(gl.Strings(), IsEmpty());
    EXPECT_EQ(width, -1);
    EXPECT_EQ(uScale, -1.0f);

    files.Write("missing.png", PlainPixels(2, 2, 1, 1, 1), 2, 2);
    EXPECT_NE(Load("missing.png"), 0u);
}

TEST_F(TextureLoaderTest, WhatTheCodecThrowsPassesThrough)
{
    files.WriteBytes("broken.png", {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A, 0, 0});
    EXPECT_THROW(Load("broken.png"), std::domain_error);
    EXPECT_THROW(loader.CreateMipMapTexture(files.Path(), {"broken.png"}), std::domain_error);
    EXPECT_THROW(loader.CreateCubeMap(files.Path(), {"broken.png"}), std::domain_error);
    EXPECT_THROW(Load("\xFF.png"), std::range_error);
    EXPECT_TRUE(loader.cache.empty());
}

TEST_F(TextureLoaderTest, AFileWhoseTextureFailsIsNotKept)
{
    files.Write("picture.png", PlainPixels(2, 2, 1, 1, 1), 2, 2);
    gl.FailCreation("glGenTextures");
    EXPECT_EQ(Load("picture.png"), 0u);
    EXPECT_TRUE(loader.cache.empty());
    gl.FailCreation("glGenTextures", false);
    EXPECT_NE(Load("picture.png"), 0u);
}

TEST_F(TextureLoaderTest, ReleaseOfAnUnknownIdDeletesThatTexture)
{
    const unsigned id = CreateRaw(2, 2);
    EXPECT_TRUE(loader.ReleaseTexture(id));
    EXPECT_EQ(gl.LiveCount(), 0u);
    EXPECT_TRUE(loader.ReleaseTexture(4711));
    EXPECT_EQ(gl.Calls().back().ToString(), "glDeleteTextures(1, {4711})");
    EXPECT_TRUE(loader.ReleaseTexture(0));
}

TEST_F(TextureLoaderTest, SuspendAndResumeDoNothing)
{
    files.Write("picture.png", PlainPixels(2, 2, 1, 1, 1), 2, 2);
    const unsigned id = Load("picture.png");
    gl.Clear();
    loader.Suspend();
    loader.Resume();
    EXPECT_THAT(gl.Strings(), IsEmpty());
    EXPECT_EQ(Load("picture.png"), id);
}

TEST_F(TextureLoaderTest, TheEndOfTheLoaderDeletesNoTexture)
{
    files.Write("picture.png", PlainPixels(2, 2, 1, 1, 1), 2, 2);
    auto other = std::make_unique<OpenLoader>();
    const unsigned id = other->CreateTexture(files.Path(), "picture.png", width, height, uScale, vScale, false, 1.0f,
                                             0, hasAlpha);
    other.reset();
    EXPECT_EQ(gl.Count("glDeleteTextures"), 0u);
    EXPECT_THAT(gl.Live(GLObjectKind::Texture), ElementsAre(id));
}

TEST_F(TextureLoaderTest, TexturesGoWithTheirLastUsersAfterTheEndOfTheLoader)
{
    files.Write("picture.png", PlainPixels(2, 2, 1, 1, 1), 2, 2);
    auto other = std::make_unique<OpenLoader>();
    const TextureLoaderPtr pointer(other.get());
    EXPECT_EQ(pointer.Get(), other.get());
    unsigned shared = 0;
    for (int user = 0; user < 3; ++user)
    {
        shared = other->CreateTexture(files.Path(), "picture.png", width, height, uScale, vScale, false, 1.0f, 0,
                                      hasAlpha);
    }
    Pixels pixels = PlainPixels(2, 2, 1, 2, 3);
    const unsigned raw = other->CreateTexture(pixels.data(), 2, 2, uScale, vScale, hasAlpha, false);
    pointer.Release(shared);
    other.reset();
    EXPECT_EQ(pointer.Get(), nullptr);

    const TextureLoaderPtr copy = pointer;
    copy.Release(shared);
    EXPECT_THAT(gl.Live(GLObjectKind::Texture), ElementsAre(shared, raw));
    copy.Release(raw);
    EXPECT_THAT(gl.Live(GLObjectKind::Texture), ElementsAre(shared));
    copy.Release(shared);
    EXPECT_THAT(gl.Live(GLObjectKind::Texture), IsEmpty());
    EXPECT_THAT(gl.StrayDeletes(), IsEmpty());
}

TEST_F(TextureLoaderTest, MaterialsThatOutliveTheLoaderLeaveNoTexture)
{
    files.Write("picture.png", PlainPixels(2, 2, 1, 1, 1), 2, 2);
    files.Write("normals.png", PlainPixels(2, 2, 1, 1, 1), 2, 2);
    auto other = std::make_unique<OpenLoader>();
    Material first("first");
    Material second("second");
    for (Material* material : {&first, &second})
    {
        material->texturePath = files.Path();
        material->textureName = "picture.png";
        material->normalMapName = "normals.png";
        material->SetRenderData(new MaterialES20(material, other.get(), nullptr, nullptr));
    }
    other.reset();
    first.SetRenderData(nullptr);
    EXPECT_EQ(gl.Live(GLObjectKind::Texture).size(), 2u) << "the other one still draws with them";
    second.SetRenderData(nullptr);
    EXPECT_THAT(gl.Live(GLObjectKind::Texture), IsEmpty());
    EXPECT_THAT(gl.StrayDeletes(), IsEmpty());
}

TEST_F(TextureLoaderTest, ALoaderWithoutAnHeirLeavesItsTexturesToGL)
{
    const TextureLoaderPtr nobody;
    nobody.Release(1);
    const TextureLoaderPtr null(nullptr);
    null.Release(1);
    EXPECT_EQ(gl.Count("glDeleteTextures"), 0u);
}

TEST_F(TextureLoaderTest, MipMapTextureReplacesLevelAfterLevel)
{
    files.Write("0.png", CountedPixels(4, 4), 4, 4);
    files.Write("1.png", PlainPixels(2, 2, 10, 20, 30), 2, 2);
    files.Write("2.png", PlainPixels(1, 1, 40, 50, 60), 1, 1);
    OfferAnisotropy(4.0f);
    loader.CheckExtensions();
    gl.Clear();
    const unsigned id = loader.CreateMipMapTexture(files.Path(), {"0.png", "1.png", "2.png"});
    ASSERT_NE(id, 0u);
    const double name = id;
    EXPECT_THAT(
        gl.Strings({"glGenTextures", "glBindTexture", "glTexImage2D", "glTexSubImage2D", "glGenerateMipmap",
                    "glTexParameteri", "glTexParameterf"}),
        ElementsAreArray({
            CallText("glGenTextures", {1}, "{" + std::to_string(id) + "}"),
            CallText("glBindTexture", {GL_TEXTURE_2D, name}),
            CallText("glTexImage2D", {GL_TEXTURE_2D, 0, GL_RGBA, 4, 4, 0, GL_RGBA, GL_UNSIGNED_BYTE}, "data"),
            CallText("glGenerateMipmap", {GL_TEXTURE_2D}),
            CallText("glTexSubImage2D", {GL_TEXTURE_2D, 1, 0, 0, 2, 2, GL_RGBA, GL_UNSIGNED_BYTE}, "data"),
            CallText("glTexSubImage2D", {GL_TEXTURE_2D, 2, 0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE}, "data"),
            CallText("glTexParameteri", {GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT}),
            CallText("glTexParameteri", {GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT}),
            CallText("glTexParameteri", {GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR}),
            CallText("glTexParameteri", {GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR}),
            CallText("glTexParameterf", {GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY_EXT, 4}),
            CallText("glBindTexture", {GL_TEXTURE_2D, 0}),
        }));
    EXPECT_EQ(gl.TextureTexels(id).bytes, Flipped(CountedPixels(4, 4), 4));
    EXPECT_EQ(gl.TextureTexels(id, 2).bytes, PlainPixels(1, 1, 40, 50, 60));
    EXPECT_TRUE(loader.cache.empty());
}

TEST_F(TextureLoaderTest, MipMapTextureWithoutNamesHasNoImagesAndAllParameters)
{
    const unsigned id = loader.CreateMipMapTexture(files.Path(), {});
    EXPECT_NE(id, 0u);
    EXPECT_EQ(gl.Count("glTexImage2D"), 0u);
    EXPECT_EQ(gl.Count("glGenerateMipmap"), 0u);
    EXPECT_THAT(ParameterCalls(), ElementsAreArray(Parameters(GL_TEXTURE_2D,
                                                              {{GL_TEXTURE_WRAP_S, GL_REPEAT},
                                                               {GL_TEXTURE_WRAP_T, GL_REPEAT},
                                                               {GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR},
                                                               {GL_TEXTURE_MAG_FILTER, GL_LINEAR}})));
    EXPECT_EQ(gl.Calls().back().ToString(), CallText("glBindTexture", {GL_TEXTURE_2D, 0}));
}

TEST_F(TextureLoaderTest, MipMapAndCubeTexturesBeforeAnyRawOneSetNoAnisotropy)
{
    OfferAnisotropy(16.0f);
    loader.CreateMipMapTexture(files.Path(), {});
    loader.CreateCubeMap(files.Path(), {});
    EXPECT_EQ(gl.Count("glTexParameterf"), 0u);
    EXPECT_FALSE(loader.extensionsChecked);

    CreateRaw(2, 2);
    gl.Clear();
    loader.CreateMipMapTexture(files.Path(), {});
    EXPECT_EQ(gl.Count("glTexParameterf", {GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY_EXT, 16}), 1u);
}

TEST_F(TextureLoaderTest, MipMapTextureGivesUpAtTheFirstFileThatFails)
{
    files.Write("0.png", PlainPixels(2, 2, 1, 1, 1), 2, 2);
    EXPECT_EQ(loader.CreateMipMapTexture(files.Path(), {"0.png", "missing.png", "0.png"}), 0u);
    EXPECT_EQ(gl.Count("glTexImage2D"), 1u);
    EXPECT_EQ(gl.Count("glTexSubImage2D"), 0u);
    EXPECT_EQ(gl.Count("glTexParameteri"), 0u);
    // What was made so far is left undeleted.
    EXPECT_EQ(gl.Count("glDeleteTextures"), 0u);
    EXPECT_EQ(gl.LiveCount(), 1u);
}

TEST_F(TextureLoaderTest, CubeMapFillsSixFacesOnTheFirstUnit)
{
    std::vector<std::string> names;
    for (int i = 0; i < 6; ++i)
    {
        const auto shade = static_cast<unsigned char>(i * 10);
        names.push_back(files.Write(std::to_string(i) + ".png", PlainPixels(2, 2, shade, 0, 0), 2, 2));
    }
    OfferAnisotropy(4.0f);
    loader.CheckExtensions();
    gl.Clear();
    const unsigned id = loader.CreateCubeMap(files.Path(), names);
    ASSERT_NE(id, 0u);
    Texts expected = {
        CallText("glGenTextures", {1}, "{" + std::to_string(id) + "}"),
        CallText("glActiveTexture", {GL_TEXTURE0}),
        CallText("glBindTexture", {GL_TEXTURE_CUBE_MAP, double(id)}),
    };
    for (const GLenum face :
         {GL_TEXTURE_CUBE_MAP_POSITIVE_X, GL_TEXTURE_CUBE_MAP_NEGATIVE_X, GL_TEXTURE_CUBE_MAP_POSITIVE_Y,
          GL_TEXTURE_CUBE_MAP_NEGATIVE_Y, GL_TEXTURE_CUBE_MAP_POSITIVE_Z, GL_TEXTURE_CUBE_MAP_NEGATIVE_Z})
    {
        expected.push_back(
            CallText("glTexImage2D", {double(face), 0, GL_RGBA, 2, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE}, "data"));
    }
    expected.push_back(CallText("glGenerateMipmap", {GL_TEXTURE_CUBE_MAP}));
    for (const std::string& text : Parameters(GL_TEXTURE_CUBE_MAP, {{GL_TEXTURE_MAG_FILTER, GL_LINEAR},
                                                                    {GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR},
                                                                    {GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE},
                                                                    {GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE}}))
    {
        expected.push_back(text);
    }
    // The anisotropy goes to the 2D target, as it must.
    expected.push_back(CallText("glTexParameterf", {GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY_EXT, 4}));
    expected.push_back(CallText("glBindTexture", {GL_TEXTURE_CUBE_MAP, 0}));
    EXPECT_THAT(gl.Strings({"glGenTextures", "glActiveTexture", "glBindTexture", "glTexImage2D", "glGenerateMipmap",
                            "glTexParameteri", "glTexParameterf"}),
                ElementsAreArray(expected));
    EXPECT_EQ(gl.TextureTexels(id, 0, GL_TEXTURE_CUBE_MAP_NEGATIVE_Z).bytes, PlainPixels(2, 2, 50, 0, 0));
    EXPECT_TRUE(loader.cache.empty());
}

TEST_F(TextureLoaderTest, CubeMapGivesUpAtTheFirstFileThatFails)
{
    files.Write("0.png", PlainPixels(2, 2, 1, 1, 1), 2, 2);
    EXPECT_EQ(loader.CreateCubeMap(files.Path(), {"0.png", "missing.png", "0.png", "0.png", "0.png", "0.png"}), 0u);
    EXPECT_EQ(gl.Count("glTexImage2D"), 1u);
    EXPECT_EQ(gl.Count("glGenerateMipmap"), 0u);
    EXPECT_EQ(gl.LiveCount(), 1u);
}

// Text.

std::unique_ptr<Image> TextImage(int width, int height)
{
    Pixels source = PlainPixels(width, height, 90, 60, 30);
    return std::unique_ptr<Image>(Image::ImageFromTextData(width, height, source.data()));
}

class TextTextureTest : public TextureLoaderTest
{
protected:
    unsigned Add(const TextureIndex& key, int imageWidth, int imageHeight)
    {
        const std::unique_ptr<Image> image = TextImage(imageWidth, imageHeight);
        return loader.AddTextTexture(key, *image, width, height, textureWidth, textureHeight);
    }

    unsigned Find(const std::string& font, int size, const std::string& text, int maxWidth)
    {
        return loader.CreateTextTexture(font, size, text, maxWidth, width, height, textureWidth, textureHeight);
    }

    int textureWidth = -1;
    int textureHeight = -1;
};

TEST_F(TextTextureTest, ATextIsRasterisedAndUploaded)
{
    const unsigned id = Find("DejaVu Sans", 20, "Hello", 0);
    ASSERT_NE(id, 0u);
    int measuredWidth = 0;
    int measuredHeight = 0;
    int measuredTextureWidth = 0;
    int measuredTextureHeight = 0;
    Platform::Linux::ESTextureLoader::TextSize("DejaVu Sans", 20, "Hello", 0, measuredWidth, measuredHeight,
                                               measuredTextureWidth, measuredTextureHeight);
    EXPECT_GT(measuredWidth, 20);
    EXPECT_EQ(width, measuredWidth);
    EXPECT_EQ(height, measuredHeight);
    EXPECT_EQ(textureWidth, measuredTextureWidth);
    EXPECT_EQ(textureHeight, measuredTextureHeight);
    const GLTexels texels = gl.TextureTexels(id);
    EXPECT_EQ(texels.width, width);
    EXPECT_EQ(texels.height, height);
    EXPECT_GT(std::count(texels.bytes.begin(), texels.bytes.end(), 255), 40) << "covered pixels";
    EXPECT_EQ(Find("DejaVu Sans", 20, "Hello", 0), id);
    EXPECT_EQ(loader.cache.size(), 1u);
}

TEST_F(TextTextureTest, ATextThatFailsToRasteriseGivesZeroAndLeavesNothing)
{
    EXPECT_EQ(Find(std::string(32, 'x'), 12, "Hello", 0), 0u);
    EXPECT_EQ(Find("DejaVu Sans", 0, "Hello", 0), 0u);
    EXPECT_TRUE(loader.cache.empty());
    EXPECT_THAT(gl.Strings(), IsEmpty());
}

TEST_F(TextTextureTest, ATextWhoseTextureFailsIsNotKept)
{
    gl.FailCreation("glGenTextures");
    EXPECT_EQ(Find("DejaVu Sans", 12, "Hello", 0), 0u);
    EXPECT_TRUE(loader.cache.empty());
    gl.FailCreation("glGenTextures", false);
    EXPECT_NE(Find("DejaVu Sans", 12, "Hello", 0), 0u);
}

TEST_F(TextTextureTest, ATextIsUploadedUnfilteredByMipmapsWithDefaultWrapping)
{
    const unsigned id = Add(TextureIndex("Sans", 12, "Hello", 0), 8, 4);
    ASSERT_NE(id, 0u);
    EXPECT_EQ(width, 8);
    EXPECT_EQ(height, 4);
    EXPECT_EQ(textureWidth, 8);
    EXPECT_EQ(textureHeight, 4);
    EXPECT_THAT(gl.Strings({"glBindTexture", "glTexParameteri", "glTexParameterf", "glTexImage2D",
                            "glGenerateMipmap"}),
                ElementsAreArray({
                    CallText("glBindTexture", {GL_TEXTURE_2D, double(id)}),
                    CallText("glTexParameteri", {GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR}),
                    CallText("glTexParameteri", {GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR}),
                    CallText("glTexImage2D", {GL_TEXTURE_2D, 0, GL_RGBA, 8, 4, 0, GL_RGBA, GL_UNSIGNED_BYTE}, "data"),
                    CallText("glBindTexture", {GL_TEXTURE_2D, 0}),
                }));
    EXPECT_EQ(gl.TextureTexels(id).bytes, PlainPixels(8, 4, 60, 60, 60, 60));
    EXPECT_EQ(loader.cache.begin()->second->refCount, 1);
    EXPECT_EQ(loader.cache.begin()->second->uScale, 1.0f);
    EXPECT_EQ(loader.cache.begin()->second->vScale, 1.0f);
}

TEST_F(TextTextureTest, AHeldTextIsSharedWithItsSizes)
{
    const unsigned id = Add(TextureIndex("Sans", 12, "Hello", 0), 8, 4);
    auto& record = *loader.cache.begin()->second;
    record.uScale = 0.5f;
    record.vScale = 0.3f;
    gl.Clear();
    width = height = -1;
    EXPECT_EQ(Find("Sans", 12, "Hello", 0), id);
    EXPECT_EQ(width, 8);
    EXPECT_EQ(height, 4);
    EXPECT_EQ(textureWidth, 16);
    EXPECT_EQ(textureHeight, 13);  // 4 / 0.3 without its fraction
    EXPECT_EQ(record.refCount, 2);
    EXPECT_THAT(gl.Strings(), IsEmpty());
    loader.ReleaseTexture(id);
    EXPECT_EQ(gl.Count("glDeleteTextures"), 0u);
    loader.ReleaseTexture(id);
    EXPECT_EQ(gl.LiveCount(), 0u);
}

TEST_F(TextTextureTest, AnotherSizeWidthFontOrTextIsAnotherTexture)
{
    Add(TextureIndex("Sans", 12, "Hello", 0), 8, 4);
    EXPECT_EQ(Find("Sans", 12, "Hello", 0), loader.cache.begin()->second->textureId);
    std::set<unsigned> ids;
    ids.insert(loader.cache.begin()->second->textureId);
    ids.insert(Find("Sans", 13, "Hello", 0));
    ids.insert(Find("Sans", 12, "Hello", 20));
    ids.insert(Find("Serif", 12, "Hello", 0));
    ids.insert(Find("Sans", 12, "Hello!", 0));
    EXPECT_EQ(ids.size(), 5u);
    EXPECT_EQ(ids.count(0u), 0u);
    EXPECT_EQ(loader.cache.size(), 5u);
}

TEST_F(TextTextureTest, AnEmptyTextHasScaleOne)
{
    Add(TextureIndex("Sans", 12, "", 0), 0, 4);
    EXPECT_EQ(loader.cache.begin()->second->uScale, 1.0f);
    EXPECT_EQ(loader.cache.begin()->second->vScale, 1.0f);
    EXPECT_NE(Find("Sans", 12, "", 0), 0u);
    EXPECT_EQ(textureWidth, 0);
    EXPECT_EQ(textureHeight, 4);
}

TEST_F(TextTextureTest, ATextOfAFilesNameIsNotThatFile)
{
    const unsigned file = Load(files.Write("Hello", PlainPixels(2, 2, 1, 1, 1), 2, 2));
    const unsigned text = Add(TextureIndex("", 0, "Hello", 0), 8, 4);
    EXPECT_NE(file, text);
    EXPECT_EQ(loader.cache.size(), 2u);
    // Release walks in the order of the keys and finds either.
    loader.ReleaseTexture(file);
    EXPECT_EQ(loader.cache.size(), 1u);
    EXPECT_FALSE(loader.cache.begin()->first.isFile);
    loader.ReleaseTexture(text);
    EXPECT_TRUE(loader.cache.empty());
}

TEST_F(TextTextureTest, TheTextureIsOfTheTextsSizeWithinItsLimit)
{
    int unlimited = 0;
    Platform::Linux::ESTextureLoader::TextSize("DejaVu Sans", 16, "A hundred pixels", 0, unlimited, height,
                                               textureWidth, textureHeight);
    Platform::Linux::ESTextureLoader::TextSize("DejaVu Sans", 16, "A hundred pixels", 60, width, height, textureWidth,
                                               textureHeight);
    EXPECT_GT(unlimited, 60);
    EXPECT_EQ(width, 60);
    EXPECT_EQ(textureWidth, 60);
    EXPECT_EQ(textureHeight, height);
    EXPECT_NE(Find("DejaVu Sans", 16, "A hundred pixels", 60), 0u);
    EXPECT_EQ(width, 60);
}

TEST(TextureLoader, WithoutAContextNothingIsMade)
{
    OpenLoader loader;
    TextureFiles files;
    files.Write("picture.png", PlainPixels(2, 2, 1, 1, 1), 2, 2);
    Pixels pixels = PlainPixels(2, 2, 1, 1, 1);
    int width = 0;
    int height = 0;
    float uScale = 0.0f;
    float vScale = 0.0f;
    bool hasAlpha = false;
    EXPECT_EQ(loader.CreateTexture(pixels.data(), 2, 2, uScale, vScale, hasAlpha, false), 0u);
    EXPECT_FALSE(loader.extensionsChecked);
    EXPECT_EQ(loader.CreateTexture(files.Path(), "picture.png", width, height, uScale, vScale, false, 1.0f, 0,
                                   hasAlpha),
              0u);
    EXPECT_TRUE(loader.cache.empty());
    EXPECT_EQ(loader.CreateMipMapTexture(files.Path(), {"picture.png"}), 0u);
    EXPECT_EQ(loader.CreateCubeMap(files.Path(), {"picture.png"}), 0u);
    int textureWidth = 0;
    int textureHeight = 0;
    EXPECT_EQ(loader.CreateTextTexture("DejaVu Sans", 12, "Hello", 0, width, height, textureWidth, textureHeight), 0u);
    EXPECT_TRUE(loader.cache.empty());
    EXPECT_TRUE(loader.ReleaseTexture(1));
}

}  // namespace

}  // namespace OV::Test
