#pragma once

#include <memory>
#include <string>
#include <vector>

namespace OV
{

class Scene2D;
class Sprite;

} // namespace OV

namespace OV::Host
{

/// A picture from a file in the middle of a layer, as large as it is or as the layer has room
/// for.
class Watermark
{
public:
    /// Reads a PNG or JPEG file. Not GL.
    /// @param path UTF-8, or whatever bytes name the file.
    /// @param error on failure the reason and the remedy in one line, without the path.
    /// @return null on failure.
    static std::unique_ptr<Watermark> Read(const std::string& path, std::string& error);

    Watermark(const Watermark&) = delete;
    Watermark& operator=(const Watermark&) = delete;
    ~Watermark();

    /// Shows the picture in a layer of this size in pixels, in place of where it was shown before.
    /// GL, if it was drawn. The layer may go first; a suspended one loses the picture, so that it
    /// has to be shown anew.
    void Show(Scene2D& layer, int width, int height);

    int GetWidth() const { return m_width; }
    int GetHeight() const { return m_height; }

private:
    Watermark() = default;

    int m_width = 0;
    int m_height = 0;
    std::vector<unsigned char> m_rgba; ///< rows tight, the bottom row first
    std::unique_ptr<Sprite> m_sprite;
};

} // namespace OV::Host
