#include "orvane/platform/ESTextureLoader.h"

#include "orvane/base/GLCheckpoint.h"
#include "orvane/imaging/Image.h"
#include "orvane/imaging/ImageCodec.h"
#include "orvane/imaging/TextureHeir.h"
#include "orvane/imaging/detail/TextRasterizer.h"
#include "orvane/platform/detail/EntryPoints.h"
#include "orvane/platform/detail/GLString.h"
#include "orvane/platform/detail/PixelTransferScope.h"

#include <GL/glew.h>

#include <algorithm>
#include <utility>

namespace OV::Platform::Linux
{

namespace
{

// Every driver takes textures of this size: a text that is no higher needs no question.
constexpr int kSafeTextureSize = 1024;

bool IsPowerOfTwo(int number)
{
    return number > 0 && (number & (number - 1)) == 0;
}

void UploadLevel0(GLenum target, int width, int height, const unsigned char* pixels)
{
    const PixelTransferScope scope(PixelTransferScope::Direction::Upload);
    glTexImage2D(target, 0, GL_RGBA, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
    OV_GL_CHECKPOINT();
}

GLuint GenerateTexture()
{
    GLuint name = 0;
    glGenTextures(1, &name);
    return name;
}

void SetParameter(GLenum target, GLenum parameter, GLenum value)
{
    glTexParameteri(target, parameter, static_cast<GLint>(value));
}

void SetWrap(GLenum target, GLenum wrap)
{
    SetParameter(target, GL_TEXTURE_WRAP_S, wrap);
    SetParameter(target, GL_TEXTURE_WRAP_T, wrap);
}

// The picture with its last row first, as GL has it; null where there is none.
std::unique_ptr<Image> LoadPicture(const FilePath& path, const std::string& name)
{
    std::unique_ptr<Image> image(ImageCodec::LoadImageData(path, name, false, true));
    return image && image->data ? std::move(image) : nullptr;
}

}  // namespace

/// Gives textures back by the counts of users that the loader left.
class ESTextureLoader::Heir : public TextureHeir
{
public:
    void Release(unsigned int id) override { ReleaseFrom(cache, id); }

    /// Deletes the texture with its last user, and at once one that is not shared.
    static void ReleaseFrom(Cache& cache, unsigned int id)
    {
        const auto found = std::find_if(cache.begin(), cache.end(),
                                        [id](const auto& entry) { return entry.second->textureId == id; });
        if (found != cache.end())
        {
            if (found->second->refCount > 1)
            {
                --found->second->refCount;
                return;
            }
            cache.erase(found);
        }
        const GLuint texture = id;
        glDeleteTextures(1, &texture);
        OV_GL_CHECKPOINT();
    }

    Cache cache;
};

ESTextureLoader::ESTextureLoader() :
    m_heir(std::make_shared<Heir>())
{
    SetHeir(m_heir);
}

// Handed over as it is: an end that takes memory could fail.
ESTextureLoader::~ESTextureLoader()
{
    m_heir->cache = std::move(cache);
}

void ESTextureLoader::CheckExtensions()
{
    extensionsChecked = true;
    // Any extension whose name contains this one will do.
    anisotropySupported = GLString(GL_EXTENSIONS).find("EXT_texture_filter_anisotropic") != std::string::npos;
    if (anisotropySupported)
    {
        glGetFloatv(GL_MAX_TEXTURE_MAX_ANISOTROPY_EXT, &maxAnisotropy);
    }
}

unsigned int ESTextureLoader::CreateTexture(unsigned char* data, int width, int height, float& uScale, float& vScale,
                                            bool&, bool clamp)
{
    if (!LoadEntryPoints())
    {
        return 0;
    }
    if (!extensionsChecked)
    {
        CheckExtensions();
    }
    // The height is not looked at: a width that is a power of two is enough.
    const bool mipmapped = mipmapsEnabled && IsPowerOfTwo(width);

    const GLuint texture = GenerateTexture();
    glBindTexture(GL_TEXTURE_2D, texture);
    UploadLevel0(GL_TEXTURE_2D, width, height, data);
    if (mipmapped)
    {
        glGenerateMipmap(GL_TEXTURE_2D);
        OV_GL_CHECKPOINT();
    }
    SetParameter(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    if (!clamp && mipmapped && anisotropySupported)
    {
        glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY_EXT, maxAnisotropy);
    }
    // A clamped texture has mipmaps too, but is sampled without them.
    SetParameter(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER,
                 !clamp && mipmapped ? GL_LINEAR_MIPMAP_LINEAR : GL_LINEAR);
    SetWrap(GL_TEXTURE_2D, clamp ? GL_CLAMP_TO_EDGE : GL_REPEAT);
    glBindTexture(GL_TEXTURE_2D, 0);
    OV_GL_CHECKPOINT();
    uScale = 1.0f;
    vScale = 1.0f;
    return texture;
}

unsigned int ESTextureLoader::CreateTexture(const FilePath& path, const std::string& name, int& width, int& height,
                                            float& uScale, float& vScale, bool, float, int, bool& hasAlpha)
{
    TextureIndex key(path, name, false);
    const auto found = cache.find(key);
    if (found != cache.end())
    {
        CacheRecord& record = *found->second;
        width = record.width;
        height = record.height;
        uScale = record.uScale;
        vScale = record.vScale;
        ++record.refCount;
        return record.textureId;
    }

    const std::unique_ptr<Image> image = LoadPicture(path, name);
    if (!image)
    {
        return 0;
    }
    auto record = std::make_unique<CacheRecord>();
    record->textureId = CreateTexture(image->data, image->width, image->height, uScale, vScale, hasAlpha, false);
    if (record->textureId == 0)
    {
        return 0;
    }
    record->width = width = image->width;
    record->height = height = image->height;
    record->uScale = uScale;
    record->vScale = vScale;
    return cache.emplace(std::move(key), std::move(record)).first->second->textureId;
}

unsigned int ESTextureLoader::CreateTextTexture(const std::string& fontName, int fontSize, const std::string& text,
                                                int maxWidth, int& width, int& height, int& textureWidth,
                                                int& textureHeight)
{
    const TextureIndex key(fontName, fontSize, text, maxWidth);
    const auto found = cache.find(key);
    if (found == cache.end())
    {
        std::unique_ptr<Image> image(detail::RasterizeText(fontName, fontSize, text, maxWidth));
        const int wholeHeight = image ? image->height : 0;
        if (wholeHeight > kSafeTextureSize && LoadEntryPoints())
        {
            GLint largest = 0;
            glGetIntegerv(GL_MAX_TEXTURE_SIZE, &largest);
            if (wholeHeight > largest)
            {
                image.reset(detail::RasterizeText(fontName, fontSize, text, maxWidth, largest));
            }
        }
        const unsigned int id = image ? AddTextTexture(key, *image, width, height, textureWidth, textureHeight) : 0;
        if (id != 0 && textureHeight < wholeHeight)
        {
            // The text is as high as if no line were left out; the empty last row stands for those.
            height = wholeHeight;
            CacheRecord& cut = *cache.find(key)->second;
            cut.height = height;
            cut.vScale = static_cast<float>(height) / static_cast<float>(textureHeight);
            glBindTexture(GL_TEXTURE_2D, id);
            SetParameter(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
            glBindTexture(GL_TEXTURE_2D, 0);
        }
        return id;
    }
    CacheRecord& record = *found->second;
    width = record.width;
    height = record.height;
    textureWidth = static_cast<int>(static_cast<float>(width) / record.uScale);
    textureHeight = static_cast<int>(static_cast<float>(height) / record.vScale);
    ++record.refCount;
    return record.textureId;
}

unsigned int ESTextureLoader::AddTextTexture(const TextureIndex& key, Image& image, int& width, int& height,
                                             int& textureWidth, int& textureHeight)
{
    if (!LoadEntryPoints())
    {
        return 0;
    }
    width = textureWidth = image.width;
    height = textureHeight = image.height;

    auto record = std::make_unique<CacheRecord>();
    record->textureId = GenerateTexture();
    if (record->textureId == 0)
    {
        return 0;
    }
    glBindTexture(GL_TEXTURE_2D, record->textureId);
    SetParameter(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    SetParameter(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    UploadLevel0(GL_TEXTURE_2D, textureWidth, textureHeight, image.data);
    glBindTexture(GL_TEXTURE_2D, 0);

    record->width = width;
    record->height = height;
    // An empty text has no quotient.
    record->uScale = textureWidth == 0 ? 1.0f : static_cast<float>(width) / static_cast<float>(textureWidth);
    record->vScale = textureHeight == 0 ? 1.0f : static_cast<float>(height) / static_cast<float>(textureHeight);
    return cache.emplace(key, std::move(record)).first->second->textureId;
}

unsigned int ESTextureLoader::CreateMipMapTexture(const FilePath& path, const std::vector<std::string>& names)
{
    if (!LoadEntryPoints())
    {
        return 0;
    }
    const GLuint texture = GenerateTexture();
    glBindTexture(GL_TEXTURE_2D, texture);
    for (std::size_t i = 0; i < names.size(); ++i)
    {
        const std::unique_ptr<Image> image = LoadPicture(path, names[i]);
        if (!image)
        {
            return 0;
        }
        if (i == 0)
        {
            UploadLevel0(GL_TEXTURE_2D, image->width, image->height, image->data);
            // So that every level exists for the others to replace.
            glGenerateMipmap(GL_TEXTURE_2D);
        }
        else
        {
            const PixelTransferScope scope(PixelTransferScope::Direction::Upload);
            glTexSubImage2D(GL_TEXTURE_2D, static_cast<GLint>(i), 0, 0, image->width, image->height, GL_RGBA,
                            GL_UNSIGNED_BYTE, image->data);
        }
        OV_GL_CHECKPOINT();
    }
    SetWrap(GL_TEXTURE_2D, GL_REPEAT);
    SetParameter(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    SetParameter(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    if (anisotropySupported)
    {
        glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY_EXT, maxAnisotropy);
    }
    glBindTexture(GL_TEXTURE_2D, 0);
    OV_GL_CHECKPOINT();
    return texture;
}

unsigned int ESTextureLoader::CreateCubeMap(const FilePath& path, const std::vector<std::string>& names)
{
    if (!LoadEntryPoints())
    {
        return 0;
    }
    const GLuint texture = GenerateTexture();
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_CUBE_MAP, texture);
    for (std::size_t i = 0; i < names.size(); ++i)
    {
        const std::unique_ptr<Image> image = LoadPicture(path, names[i]);
        if (!image)
        {
            return 0;
        }
        UploadLevel0(GL_TEXTURE_CUBE_MAP_POSITIVE_X + static_cast<GLenum>(i), image->width, image->height,
                     image->data);
    }
    glGenerateMipmap(GL_TEXTURE_CUBE_MAP);
    SetParameter(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    SetParameter(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    SetWrap(GL_TEXTURE_CUBE_MAP, GL_CLAMP_TO_EDGE);
    if (anisotropySupported)
    {
        // Meant: the 2D target gets the setting, the cube map stays without.
        glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY_EXT, maxAnisotropy);
    }
    glBindTexture(GL_TEXTURE_CUBE_MAP, 0);
    OV_GL_CHECKPOINT();
    return texture;
}

bool ESTextureLoader::ReleaseTexture(unsigned int id)
{
    Heir::ReleaseFrom(cache, id);
    return true;
}

void ESTextureLoader::Suspend()
{
}

void ESTextureLoader::Resume()
{
}

void ESTextureLoader::TextSize(const std::string& fontName, int fontSize, const std::string& text, int maxWidth,
                               int& width, int& height, int& textureWidth, int& textureHeight)
{
    detail::MeasureText(fontName, fontSize, text, maxWidth, width, height);
    textureWidth = width;
    textureHeight = height;
}

}  // namespace OV::Platform::Linux
