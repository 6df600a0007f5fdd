#pragma once

#include "orvane/imaging/TextureIndex.h"
#include "orvane/imaging/TextureLoader.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace OV
{
class Image;
}

namespace OV::Platform
{

namespace Linux
{

/// Texture loader on GL, which shares the textures of files and texts among their users.
///
/// The answer is never still to come. The texture unit in use is left as it is, except by
/// CreateCubeMap, which leaves unit 0 active; nothing stays bound where a texture was made.
/// How the host lets GL unpack pixels, a bound buffer of theirs too, does no harm and stays as
/// it is. What ImageCodec throws passes through.
///
/// Its end deletes no GL texture: each one belongs to whoever asked for it, and is given back
/// through TextureLoaderPtr by those that live longer.
class ORVANE_API ESTextureLoader : public TextureLoader
{
public:
    ESTextureLoader();
    ESTextureLoader(const ESTextureLoader&) = delete;
    ESTextureLoader& operator=(const ESTextureLoader&) = delete;
    ~ESTextureLoader() override;

    /// Font name and text are in the encoding of the C locale in force; the size is the em in
    /// pixels. A text that can't be drawn gives 0 and leaves the sizes as they were. Of the
    /// marks on one letter the first thirty are drawn. Colour emoji take the text's colour.
    unsigned int CreateTextTexture(const std::string& fontName, int fontSize, const std::string& text, int maxWidth,
                                   int& width, int& height, int& textureWidth, int& textureHeight) override;

    /// Whether there are mipmaps depends on the width alone: a power of two has them. The
    /// factors are 1; hasAlpha is neither read nor written.
    unsigned int CreateTexture(unsigned char* data, int width, int height, float& uScale, float& vScale,
                               bool& hasAlpha, bool clamp) override;

    /// The last four arguments are ignored on purpose: pictures are loaded as they are.
    unsigned int CreateTexture(const FilePath& path, const std::string& name, int& width, int& height, float& uScale,
                               float& vScale, bool flag, float scale, int limit, bool& hasAlpha) override;

    /// Never shared. When a file fails, what was made so far stays with GL, undeleted.
    unsigned int CreateMipMapTexture(const FilePath& path, const std::vector<std::string>& names) override;

    /// Never shared. When a file fails, what was made so far stays with GL, undeleted.
    unsigned int CreateCubeMap(const FilePath& path, const std::vector<std::string>& names) override;

    /// An id that is not shared is deleted at once.
    /// @return true, always.
    bool ReleaseTexture(unsigned int id) override;

    /// Nothing: textures go and come back with the render data that holds them.
    void Suspend() override;
    void Resume() override;

    /// Size of a text in pixels, as CreateTextTexture draws it; 0 by 0 for one that it can't.
    /// Not GL; any thread may ask.
    static void TextSize(const std::string& fontName, int fontSize, const std::string& text, int maxWidth,
                         int& width, int& height, int& textureWidth, int& textureHeight);

protected:
    /// A texture in use by one or more.
    struct CacheRecord
    {
        std::uint32_t textureId = 0;
        std::int32_t width = 0;   ///< pixels
        std::int32_t height = 0;  ///< pixels
        float uScale = 1.0f;
        float vScale = 1.0f;
        std::int32_t refCount = 1;
    };

    /// Asks the context for anisotropic filtering. GL.
    void CheckExtensions();

    /// Makes the texture of a rasterised text and holds it under the key. GL.
    unsigned int AddTextTexture(const TextureIndex& key, Image& image, int& width, int& height, int& textureWidth,
                                int& textureHeight);

    using Cache = std::map<TextureIndex, std::unique_ptr<CacheRecord>>;

    Cache cache;
    bool extensionsChecked = false;
    bool mipmapsEnabled = true;  ///< Nothing in the engine changes it.
    bool anisotropySupported = false;
    float maxAnisotropy = 1.0f;  ///< the largest degree that the driver offers

private:
    class Heir;

    std::shared_ptr<Heir> m_heir;
};

}  // namespace Linux

/// The other name of the level that belongs to the platform at hand.
namespace Win32 = Linux;

}  // namespace OV::Platform
