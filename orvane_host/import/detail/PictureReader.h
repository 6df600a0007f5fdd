#pragma once

#include "orvane_host/import/ImportOptions.h"
#include "orvane_host/import/ImportResult.h"
#include "orvane_host/import/detail/FileFinder.h"
#include "orvane_host/import/detail/ImageProbe.h"
#include "orvane_host/import/detail/ModelData.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace OV::Host
{

/// A picture of the model, and what its head says.
struct FoundPicture
{
    /// Why it cannot be shown, as the end of a sentence that begins "the picture"; empty when
    /// it can be.
    std::string obstacle;
    /// What to call it in a report.
    std::string label;
    /// Of its file, or of the one that its texels come from; empty for an embedded one.
    std::string path;
    /// Set too for texels that come from a file.
    const TextureData* embedded = nullptr;
    ImageFacts facts;

    bool IsUsable() const { return obstacle.empty(); }
};

struct FreePixels
{
    void operator()(unsigned char* pixels) const { std::free(pixels); }
};

/// R, G, B, A with the bottom row first.
struct DecodedPicture
{
    /// From malloc; null for none.
    std::unique_ptr<unsigned char, FreePixels> pixels;
    std::uint32_t width = 0;
    std::uint32_t height = 0;

    std::uint64_t Count() const { return std::uint64_t(width) * height; }
    std::uint64_t Bytes() const { return Count() * 4; }
    bool HasTransparentPixel() const;
};

/// Finds the pictures of a model, and decodes them within the limits of its import.
class PictureReader
{
public:
    /// The model and the limits must outlive the reader.
    PictureReader(const ModelData& model, const std::string& modelPath, const ImportLimits& limits);

    /// Looks at no more than the head. Nothing is found for a picture that names none. What had to be
    /// converted and has not been by now is damaged.
    FoundPicture Find(const PictureData& picture);

    /// The same before anything is converted.
    FoundPicture Locate(const PictureData& picture);

    /// @return no pixels, with the obstacle set, where the picture is damaged.
    DecodedPicture Decode(FoundPicture& picture) const;

    /// The bytes of a whole image file; empty, with the obstacle set, where there are none.
    std::vector<unsigned char> FileBytes(FoundPicture& picture) const;

    /// Takes pixels that are kept off the memory for pictures.
    void Keep(std::uint64_t bytes) { m_keptBytes += bytes; }

private:
    FoundPicture FindFile(const std::string& reference);
    void CheckSize(FoundPicture& picture) const;

    const ModelData& m_model;
    const ImportLimits& m_limits;
    FileFinder m_finder;
    std::uint64_t m_keptBytes = 0;
};

/// Tells that a material does without a picture.
/// @param what the picture is to the material.
void ReportMissing(ImportReport& report, const std::string& material, const std::string& what,
                   const FoundPicture& picture);

/// Packs pixels into the bytes of a PNG file.
std::vector<unsigned char> EncodePng(const DecodedPicture& picture);

} // namespace OV::Host
