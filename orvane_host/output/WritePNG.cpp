#include "orvane_host/output/WritePNG.h"

#include "orvane_host/context/HeadlessContext.h"
#include "orvane_host/output/PictureFile.h"
#include "orvane_host/output/detail/AtomicFile.h"
#include "orvane/imaging/ImageCodec.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <utility>

namespace OV::Host
{

namespace
{

/// Closes the gaps that the fourth channel leaves.
void DropAlpha(std::vector<unsigned char>& pixels)
{
    std::size_t to = 0;
    for (std::size_t from = 0; from + 3 < pixels.size(); from += 4, to += 3)
    {
        pixels[to] = pixels[from];
        pixels[to + 1] = pixels[from + 1];
        pixels[to + 2] = pixels[from + 2];
    }
    pixels.resize(to);
}

/// Other programs go by the ending, and would not find what it promises.
bool IsNameForPNG(const std::string& path, std::string& error)
{
    PictureKind kind = PictureKind::PNG;
    if (!PictureFile::KindOf(path, kind, error))
    {
        return false;
    }
    if (kind != PictureKind::PNG)
    {
        error = "the name promises a JPEG and this is a PNG; let the name end in .png";
        return false;
    }
    return true;
}

}  // namespace

bool WritePNG(HeadlessContext& context, const std::string& path, PNGAlpha alpha, std::string& error)
{
    std::vector<unsigned char> rgba;
    if (!context.ReadPixels(rgba))
    {
        error = "the picture could not be read back from GL; ask for a smaller one";
        return false;
    }
    return WritePNG(std::move(rgba), context.GetWidth(), context.GetHeight(), path, alpha, error);
}

bool WritePNG(std::vector<unsigned char> rgba, int width, int height, const std::string& path, PNGAlpha alpha,
              std::string& error)
{
    if (!IsNameForPNG(path, error))
    {
        return false;
    }
    if (width < 1 || height < 1
        || rgba.size() != static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4)
    {
        error = "the pixels do not make a picture of " + std::to_string(width) + "x" + std::to_string(height)
            + "; hand in four bytes for each";
        return false;
    }
    std::vector<unsigned char> file;
    try
    {
        if (alpha == PNGAlpha::Drop)
        {
            DropAlpha(rgba);
        }
        file = ImageCodec::EncodeImagePNG(rgba, static_cast<std::uint64_t>(width),
                                          static_cast<std::uint64_t>(height), alpha == PNGAlpha::Drop ? 3 : 4);
    }
    catch (const std::exception& trouble)
    {
        error = std::string("the picture could not be packed (") + trouble.what() + "); ask for a smaller one";
        return false;
    }
    if (file.empty())
    {
        error = "the picture could not be packed; ask for a smaller one";
        return false;
    }
    return Detail::WriteFileAtomically(path, file, error);
}

bool CanWritePNG(const std::string& path, std::string& error)
{
    return IsNameForPNG(path, error) && Detail::CanWriteFile(path, error);
}

}  // namespace OV::Host
