#pragma once

#include "tests/imaging/Bytes.h"

#include <cstddef>
#include <vector>

namespace OV::Test
{

/// What a JPEG file is made of, and how.
struct JpegFile
{
    enum class Colors
    {
        Grey,
        YCbCr,
        RGB,
        TwoComponents,
        CMYK,
        YCCK
    };

    int width = 0;
    int height = 0;
    Colors colors = Colors::YCbCr;
    int quality = 90;
    int horizontalSampling = 1;  ///< of the first component, the others having 1
    int verticalSampling = 1;
    bool progressive = false;
    bool arithmetic = false;
    int restartInterval = 0;  ///< in blocks; 0 for none
    Bytes pixels;             ///< width * height times the components given to the library

    int Components() const;

    /// Sets the pixels to soft gradients with a little noise, like a photograph's.
    void FillWithPicture(unsigned seed = 1);

    /// The bytes of the file, written by libjpeg itself.
    Bytes Write() const;
};

/// What libjpeg makes of a file when it is called directly, with no wish of ours.
struct DecodedJpeg
{
    int width = 0;
    int height = 0;
    int components = 0;
    Bytes pixels;
};

/// @throw std::runtime_error where libjpeg gives up.
DecodedJpeg DecodeDirectly(const Bytes& file);

}  // namespace OV::Test
