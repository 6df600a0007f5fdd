#include "orvane_host/import/detail/PictureReader.h"

#include "orvane/imaging/Image.h"
#include "orvane/imaging/ImageCodec.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

namespace OV::Host
{

namespace
{

constexpr char kMissing[] = "is not to be found";
constexpr char kDamaged[] = "is damaged";

/// A source over a file; the stream must outlive it.
ByteSource FileSource(std::ifstream& stream)
{
    return [&stream](std::uint64_t offset, void* to, std::size_t size)
    {
        stream.clear();
        stream.seekg(static_cast<std::streamoff>(offset));
        stream.read(static_cast<char*>(to), static_cast<std::streamsize>(size));
        return static_cast<std::size_t>(stream.gcount()) == size;
    };
}

bool IsRaw(const FoundPicture& picture)
{
    return picture.embedded && picture.embedded->width > 0;
}

DecodedPicture CopyTexels(const TextureData& texture)
{
    const std::size_t row = std::size_t(texture.width) * 4;
    DecodedPicture picture;
    picture.pixels.reset(static_cast<unsigned char*>(std::malloc(row * texture.height)));
    if (!picture.pixels)
    {
        throw std::bad_alloc();
    }
    // Pixels go to the texture as they lie, and there the first row is the bottom one.
    for (std::size_t y = 0; y < texture.height; ++y)
    {
        std::memcpy(picture.pixels.get() + (texture.height - 1 - y) * row, texture.bytes.data + y * row, row);
    }
    picture.width = texture.width;
    picture.height = texture.height;
    return picture;
}

DecodedPicture DecodeBytes(const unsigned char* bytes, std::uint64_t size)
{
    DecodedPicture picture;
    std::unique_ptr<Image> image;
    try
    {
        if (size <= static_cast<std::uint64_t>(std::numeric_limits<int>::max()))
        {
            image.reset(ImageCodec::DecodeImage(const_cast<unsigned char*>(bytes), static_cast<int>(size),
                                                false, true));
        }
    }
    catch (const std::domain_error&)
    {
    }
    if (image && image->data)
    {
        picture.width = static_cast<std::uint32_t>(image->width);
        picture.height = static_cast<std::uint32_t>(image->height);
        picture.pixels.reset(std::exchange(image->data, nullptr));
    }
    return picture;
}

} // namespace

bool DecodedPicture::HasTransparentPixel() const
{
    for (std::uint64_t i = 0; i < Count(); ++i)
    {
        if (pixels.get()[4 * i + 3] != 255)
        {
            return true;
        }
    }
    return false;
}

PictureReader::PictureReader(const ModelData& model, const std::string& modelPath, const ImportLimits& limits)
    : m_model(model), m_limits(limits), m_finder(modelPath)
{
}

FoundPicture PictureReader::Find(const PictureData& picture)
{
    FoundPicture found = Locate(picture);
    if (found.IsUsable() && found.facts.needsConversion)
    {
        found.obstacle = kDamaged;
    }
    return found;
}

FoundPicture PictureReader::Locate(const PictureData& picture)
{
    if (picture.embedded < 0)
    {
        return FindFile(picture.path);
    }
    FoundPicture found;
    found.label = picture.path.empty() ? "embedded" : picture.path;
    found.path = picture.path;
    const std::size_t index = static_cast<std::size_t>(picture.embedded);
    if (index >= m_model.textures.size())
    {
        found.obstacle = kMissing;
        return found;
    }
    found.embedded = &m_model.textures[index];
    const TextureData& texture = *found.embedded;
    if (IsRaw(found))
    {
        found.facts.width = texture.width;
        found.facts.height = texture.height;
        found.facts.isReadable = texture.bytes.count / 4 >= found.facts.Pixels() && texture.height > 0;
        found.facts.obstacle = "is damaged or too large";
        found.facts.hasAlpha = true;
    }
    else
    {
        found.facts = ProbeImage(MemorySource(texture.bytes.data, texture.bytes.count));
    }
    CheckSize(found);
    return found;
}

FoundPicture PictureReader::FindFile(const std::string& reference)
{
    FoundPicture found;
    found.label = reference;
    found.path = m_finder.Find(reference);
    if (found.path.empty())
    {
        found.obstacle = kMissing;
        return found;
    }
    found.label = found.path;
    std::ifstream stream(found.path, std::ios::in | std::ios::binary);
    found.facts = ProbeImage(FileSource(stream));
    CheckSize(found);
    return found;
}

void PictureReader::CheckSize(FoundPicture& picture) const
{
    const ImageFacts& facts = picture.facts;
    if (!facts.isReadable)
    {
        picture.obstacle = facts.obstacle;
    }
    else if (facts.Pixels() > m_limits.texturePixels)
    {
        picture.obstacle = "has more than " + std::to_string(m_limits.texturePixels) + " pixels";
    }
    else if (facts.Pixels() * 4 > m_limits.textureBytes - std::min(m_keptBytes, m_limits.textureBytes))
    {
        picture.obstacle = "is beyond the memory for pictures";
    }
}

DecodedPicture PictureReader::Decode(FoundPicture& picture) const
{
    if (IsRaw(picture))
    {
        return CopyTexels(*picture.embedded);
    }
    DecodedPicture decoded;
    if (picture.embedded)
    {
        decoded = DecodeBytes(picture.embedded->bytes.data, picture.embedded->bytes.count);
    }
    else
    {
        const std::vector<unsigned char> bytes = FileBytes(picture);
        decoded = DecodeBytes(bytes.data(), bytes.size());
    }
    if (!decoded.pixels)
    {
        picture.obstacle = kDamaged;
    }
    return decoded;
}

std::vector<unsigned char> PictureReader::FileBytes(FoundPicture& picture) const
{
    if (IsRaw(picture))
    {
        return EncodePng(CopyTexels(*picture.embedded));
    }
    if (picture.embedded)
    {
        const ArrayView<unsigned char>& bytes = picture.embedded->bytes;
        return std::vector<unsigned char>(bytes.data, bytes.data + bytes.count);
    }
    std::ifstream stream(picture.path, std::ios::in | std::ios::binary | std::ios::ate);
    std::vector<unsigned char> bytes(static_cast<std::size_t>(std::max<std::streamoff>(stream.tellg(), 0)));
    if (!FileSource(stream)(0, bytes.data(), bytes.size()))
    {
        bytes.clear();
        picture.obstacle = kDamaged;
    }
    return bytes;
}

void ReportMissing(ImportReport& report, const std::string& material, const std::string& what,
                   const FoundPicture& picture)
{
    ++report.missingTextures;
    report.warnings.push_back("Material '" + material + "' is shown without its " + what + ": '" +
                              picture.label + "' " + picture.obstacle + ".");
}

std::vector<unsigned char> EncodePng(const DecodedPicture& picture)
{
    const std::size_t row = std::size_t(picture.width) * 4;
    std::vector<unsigned char> topDown(row * picture.height);
    for (std::size_t y = 0; y < picture.height; ++y)
    {
        std::memcpy(topDown.data() + y * row, picture.pixels.get() + (picture.height - 1 - y) * row, row);
    }
    return ImageCodec::EncodeImagePNG(topDown, picture.width, picture.height, 4);
}

} // namespace OV::Host
