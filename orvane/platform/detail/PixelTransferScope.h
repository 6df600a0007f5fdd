#pragma once

namespace OV::Platform
{

/// Makes GL take pixels from memory, or write them to memory, in rows without padding for the
/// length of a scope, and puts the host's own layout and pixel buffer back.
///
/// Every upload and every read stands in one, an upload without pixels too: with a pixel buffer
/// bound the null pointer is a place in it. GL; the entry points are loaded.
class PixelTransferScope
{
public:
    enum class Direction
    {
        Upload,
        Read
    };

    explicit PixelTransferScope(Direction direction);
    PixelTransferScope(const PixelTransferScope&) = delete;
    PixelTransferScope& operator=(const PixelTransferScope&) = delete;
    ~PixelTransferScope();

private:
    static constexpr int kSettings = 4;

    Direction m_direction;
    int m_values[kSettings] = {};
    int m_buffer = 0;
};

}  // namespace OV::Platform
