#include "orvane_host/import/detail/PictureConverter.h"

#include "orvane_host/import/detail/ForeignPicture.h"
#include "orvane_host/import/detail/PictureReader.h"

#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace OV::Host
{

namespace
{

class PictureConverter
{
public:
    PictureConverter(ModelData& model, const std::string& modelPath, const ImportOptions& options,
                     const std::function<void(std::uint64_t)>& opened)
        : m_model(model), m_reader(model, modelPath, options.limits), m_opened(opened)
    {
    }

    void Convert(PictureData& picture)
    {
        if (picture.IsNone())
        {
            return;
        }
        FoundPicture found = m_reader.Locate(picture);
        if (!found.IsUsable() || !found.facts.needsConversion)
        {
            return;
        }
        if (found.embedded)
        {
            ConvertEmbedded(found, m_model.textures[static_cast<std::size_t>(picture.embedded)]);
            return;
        }
        const auto known = m_files.find(found.path);
        picture.embedded = known == m_files.end() ? ConvertFile(found) : known->second;
    }

private:
    void ConvertEmbedded(FoundPicture& found, TextureData& texture)
    {
        TextureData texels = Decode(found, texture.bytes.data, texture.bytes.count);
        if (texels.width > 0)
        {
            texture = texels;
        }
    }

    /// @return the index of its texels, or -1.
    std::int32_t ConvertFile(FoundPicture& found)
    {
        const std::vector<unsigned char> bytes = m_reader.FileBytes(found);
        if (m_opened)
        {
            m_opened(bytes.size());
        }
        const TextureData texels = Decode(found, bytes.data(), bytes.size());
        std::int32_t index = -1;
        if (texels.width > 0)
        {
            index = static_cast<std::int32_t>(m_model.textures.size());
            m_model.textures.push_back(texels);
        }
        m_files.emplace(found.path, index);
        return index;
    }

    TextureData Decode(const FoundPicture& found, const unsigned char* bytes, std::uint64_t size)
    {
        TextureData texels;
        auto kept = std::make_shared<std::vector<unsigned char>>(DecodeForeign(bytes, size, found.facts));
        if (!kept->empty())
        {
            texels.width = found.facts.width;
            texels.height = found.facts.height;
            texels.bytes = {kept->data(), kept->size()};
            m_reader.Keep(kept->size());
            m_model.keepAlive.push_back(std::move(kept));
        }
        return texels;
    }

    ModelData& m_model;
    PictureReader m_reader;
    const std::function<void(std::uint64_t)>& m_opened;
    std::map<std::string, std::int32_t> m_files;
};

} // namespace

void ConvertPictures(ModelData& model, const std::string& modelPath, const ImportOptions& options,
                     const std::function<void(std::uint64_t)>& opened)
{
    PictureConverter converter(model, modelPath, options, opened);
    for (MaterialData& material : model.materials)
    {
        converter.Convert(material.texture);
        converter.Convert(material.normalMap.picture);
        converter.Convert(material.opacityMap.picture);
    }
}

} // namespace OV::Host
