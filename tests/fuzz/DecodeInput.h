#pragma once

#include "orvane/imaging/Image.h"
#include "orvane/imaging/ImageCodec.h"

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace OV::Test
{

/// Decodes a block, with switches that its length chooses, and ends the process on any answer
/// but an image with readable pixels, null, and the given error.
inline void DecodeInput(std::vector<unsigned char> block, const char* error)
{
    try
    {
        const std::size_t size = block.size();
        const std::unique_ptr<Image> image(
            ImageCodec::DecodeImage(block.data(), static_cast<int>(size), (size & 1) != 0, (size & 2) != 0));
        if (!image)
        {
            return;
        }
        if (image->width < 1 || image->height < 1 || !image->data)
        {
            std::abort();
        }
        unsigned sum = 0;
        for (std::size_t i = 0; i < std::size_t(image->width) * std::size_t(image->height) * 4; ++i)
        {
            sum += image->data[i];
        }
        [[maybe_unused]] static volatile unsigned seen;
        seen = sum;
    }
    catch (const std::domain_error& failure)
    {
        if (failure.what() != std::string(error))
        {
            std::abort();
        }
    }
}

}  // namespace OV::Test
