#pragma once

#include <string>
#include <vector>

namespace OV::Host
{

class HeadlessContext;

/// Whether a PNG keeps the alpha of its pixels.
enum class PNGAlpha
{
    Drop, ///< RGB: what the eye sees in the framebuffer
    Keep  ///< RGBA, straight as it lies in the framebuffer
};

/// Writes the picture of a context's framebuffer as a PNG file.
///
/// The file is complete or it is not there: the bytes go to a new file beside it, which then
/// takes its place, and a failure leaves an older file of that name as it was. A device or a
/// pipe is written to as it is. The mode of an older file stays. A name that ends like a file of
/// another kind of picture, such as .jpg, is refused.
/// @param path UTF-8, or whatever bytes name the file.
/// @param error on failure the reason and the remedy in one line, without the path.
bool WritePNG(HeadlessContext& context, const std::string& path, PNGAlpha alpha, std::string& error);

/// The same for pixels in memory.
/// @param rgba 8 bits a channel, tight rows, the top row first.
bool WritePNG(std::vector<unsigned char> rgba, int width, int height, const std::string& path, PNGAlpha alpha,
              std::string& error);

/// Tells early whether a file of that name could be written, and leaves nothing behind.
/// @param error as for WritePNG.
bool CanWritePNG(const std::string& path, std::string& error);

}  // namespace OV::Host
