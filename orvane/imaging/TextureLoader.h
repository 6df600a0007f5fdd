#pragma once

#include "orvane/Export.h"
#include "orvane/base/Lifetime.h"

#include <memory>
#include <string>
#include <vector>

namespace OV
{

struct FilePath;
class TextureHeir;

/// Makes GL textures of files, pixels and text. Every operation but Create needs a current
/// GL context.
///
/// An id of 0 is failure. 0xFFFFFFFF says that the answer is still to come and the question
/// is to be asked again in the next frame. Whoever got an id gives it back with
/// ReleaseTexture.
///
/// The engine calls a loader in the middle of a frame. What a host's own loader may do to scenes
/// and contexts there is told at Scene and AppContext. It may delete itself too, and returns at
/// once then; names and paths that it was given stay good until it returns, pixels as long as it
/// lets their material live.
class ORVANE_API TextureLoader
{
public:
    /// The loader of this platform. The caller deletes it.
    static TextureLoader* Create();

    virtual ~TextureLoader();

    /// A texture that shows a text.
    /// @param fontName the font family.
    /// @param text UTF-8.
    /// @param maxWidth in pixels, below 1 for none.
    /// @param width, height receive the size of the text in pixels.
    /// @param textureWidth, textureHeight receive the size of the texture in pixels.
    virtual unsigned int CreateTextTexture(const std::string& fontName, int fontSize, const std::string& text,
                                           int maxWidth, int& width, int& height, int& textureWidth,
                                           int& textureHeight) = 0;

    /// A texture of its own for the given pixels.
    /// @param data RGBA, a byte each, rows without padding, bottom row first; stays the
    /// caller's. Null leaves the texture's contents undefined.
    /// @param uScale, vScale receive the factors that the texture coordinates need.
    /// @param clamp whether the edge is repeated instead of the picture.
    virtual unsigned int CreateTexture(unsigned char* data, int width, int height, float& uScale, float& vScale,
                                       bool& hasAlpha, bool clamp) = 0;

    /// A texture of a picture in a file.
    /// @param path directory, put right before the name.
    /// @param name of the file, UTF-8.
    /// @param width, height receive the picture's size in pixels.
    /// @param uScale, vScale receive the factors that the texture coordinates need.
    /// @param flag, scale, limit for loaders that reduce pictures.
    virtual unsigned int CreateTexture(const FilePath& path, const std::string& name, int& width, int& height,
                                       float& uScale, float& vScale, bool flag, float scale, int limit,
                                       bool& hasAlpha) = 0;

    /// A texture whose mipmap levels come from files, the largest first; levels without a
    /// file are made from it.
    virtual unsigned int CreateMipMapTexture(const FilePath& path, const std::vector<std::string>& names) = 0;

    /// A cube map of six files in the order +X, -X, +Y, -Y, +Z, -Z.
    virtual unsigned int CreateCubeMap(const FilePath& path, const std::vector<std::string>& names) = 0;

    /// Gives a texture back; it is deleted with its last user.
    virtual bool ReleaseTexture(unsigned int id) = 0;

    /// The GL context is about to be lost.
    virtual void Suspend() = 0;
    /// There is a new GL context.
    virtual void Resume() = 0;

    /// Lets those who keep a pointer to this object notice its end.
    Lifetime& GetLifetime() { return m_lifetime; }

    /// Where textures that outlive this object are given back; null for a loader that leaves
    /// them to GL. TextureLoaderPtr asks for it.
    const std::shared_ptr<TextureHeir>& GetHeir() const { return m_heir; }

protected:
    /// Called by the constructor of a loader that has one.
    void SetHeir(std::shared_ptr<TextureHeir> heir);

private:
    Lifetime m_lifetime;
    std::shared_ptr<TextureHeir> m_heir;
};

}  // namespace OV
