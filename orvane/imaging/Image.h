#pragma once

#include "orvane/Export.h"

#include <memory>

namespace OV
{

class Image;

namespace detail
{
struct SharedPixels;
std::unique_ptr<Image> NewImage(int width, int height);
}  // namespace detail

/// A decoded bitmap in the one form that the engine knows: 8-bit RGBA, four bytes a pixel,
/// rows without padding, top row first unless it was made flipped.
///
/// No operation needs a GL context; different images may be used on different threads.
class ORVANE_API Image
{
public:
    /// Shares the pixels: both images then hold one block, which is freed once, by the last
    /// of them to go or to take other pixels.
    Image(const Image& other);
    /// As the copy; what this image held before is let go.
    Image& operator=(const Image& other);
    /// Frees the pixels, unless another image shares them.
    ~Image();

    /// Makes an image of a decoder's raw rows; the caller deletes it.
    ///
    /// From 65,536 pixels on the rows are spread over at most as many threads as the machine
    /// has, the caller's included; it returns when all is done. A width or height below 1
    /// gives an image without pixels.
    /// @param source width * height pixels without padding, 3 bytes each if sourceIsRGB,
    /// else 4. It stays the caller's.
    /// @param swapRedBlue exchanges the first and the third byte of each pixel.
    /// @param sourceIsRGB the pixels come out opaque.
    /// @param flipVertical the last row of the source becomes the first of the image.
    /// @throw std::bad_alloc where there is no memory for the pixels.
    static Image* ImageFromData(int width, int height, unsigned char* source, bool swapRedBlue, bool sourceIsRGB,
                                bool flipVertical);

    /// Makes an image of white text on black, with the average of the first three bytes of a
    /// pixel in all four bytes: coverage over nothing, premultiplied. The caller deletes it.
    /// @param source 4 bytes a pixel, the bottom row first. It stays the caller's.
    /// @throw std::bad_alloc where there is no memory for the pixels.
    static Image* ImageFromTextData(int width, int height, unsigned char* source);

    /// The pixels, which stay the image's, and the size.
    unsigned char* GetData(int& width, int& height);

    void GetDimensions(int& width, int& height);

    /// Multiplies red, green and blue by alpha, dropping fractions. Every image that shares
    /// the pixels sees it.
    void PremultiplyAlpha();

    /// Scales the picture to the given size; images that shared the pixels keep the old ones.
    /// A new size of 1 divides by zero on purpose: that axis shows its first column or row.
    void Resize(int width, int height);

    /// Cuts a part out of the picture as it would look scaled to the full size.
    ///
    /// The corner pixels of the picture become the corner pixels of the full size. What lies
    /// outside the picture repeats its edge, except that columns and rows of the crop from
    /// the full width and height on are left transparent black.
    /// @return cropWidth * cropHeight pixels, which the caller gives back with free().
    /// @throw std::bad_alloc where there is no memory for them.
    unsigned char* ResizeCropAndReturnData(int fullWidth, int fullHeight, int cropX, int cropY, int cropWidth,
                                           int cropHeight);

    /// RGBA pixels from malloc(), owned. May be written by hand: a block put here is freed by
    /// the destructor, one taken from here (null left behind) is the taker's, as long as no
    /// other image shares it.
    unsigned char* data = nullptr;
    int width = 0;   ///< in pixels
    int height = 0;  ///< in pixels

protected:
    Image();

    /// Reads one point of a picture, blending the neighbours to the right and below.
    ///
    /// Between the first two columns (or rows) nothing is blended; coordinates outside take
    /// the nearest edge, and one that is not a number the first column (or row).
    /// @param x, y in source pixels, whole numbers on pixel centres.
    /// @param destination receives bytesPerPixel bytes; fractions are dropped.
    /// @param width, height size of the source, at least 1.
    /// @param stride bytes from a row of the source to the next.
    static void SampleBilinear(float x, float y, unsigned char* destination, unsigned char* source, int width,
                               int height, int stride, int bytesPerPixel);

private:
    friend std::unique_ptr<Image> detail::NewImage(int width, int height);

    // The hold on the block that all its owners have in common, made by the first copy.
    const std::shared_ptr<detail::SharedPixels>& Share() const;
    // Frees the block, or leaves it to those that share it.
    void Release();

    // Empty while the block has one owner. It stands aside from `data`, which a host may
    // replace: only while both name the same block does it count.
    mutable std::shared_ptr<detail::SharedPixels> m_shared;
};

}  // namespace OV
