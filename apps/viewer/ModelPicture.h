#pragma once

namespace OV::ViewerApp
{

/// The picture of the model in the pixels of the window, kept between frames, so that panels move
/// above it without the model being drawn again. GL.
class ModelPicture
{
public:
    ModelPicture() = default;
    ~ModelPicture();
    ModelPicture(const ModelPicture&) = delete;
    ModelPicture& operator=(const ModelPicture&) = delete;

    /// Makes it this large, and binds it to be drawn into.
    /// @param samples 0 or 1 for none; fewer where GL has not so many.
    /// @return false where GL can't make it; the window's own framebuffer is bound then.
    bool Begin(int width, int height, int samples);

    /// Lays it over the window's framebuffer, which is bound then.
    /// @param x, y of its lower left corner, in pixels from that of the window.
    void Show(int x, int y) const;

    /// Whether it holds a picture of that size.
    bool Holds(int width, int height) const { return m_framebuffer != 0 && m_width == width && m_height == height; }

    /// Gives the GL objects back.
    void Release();

private:
    bool Make(int width, int height, int samples);

    unsigned int m_framebuffer = 0;
    unsigned int m_color = 0;
    unsigned int m_depth = 0;
    int m_width = 0;
    int m_height = 0;
    int m_samples = 0;
};

} // namespace OV::ViewerApp
