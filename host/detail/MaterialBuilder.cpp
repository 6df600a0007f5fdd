#include "host/detail/MaterialBuilder.h"

#include "orvane/imaging/Image.h"
#include "orvane/imaging/ImageCodec.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <new>
#include <vector>

namespace OV::Host
{

namespace
{

constexpr float kPointSize = 3.0f;

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

/// @return false when the bytes are no valid UTF-8.
bool ToWide(const std::string& utf8, std::wstring& wide)
{
    try
    {
        wide = std::filesystem::path(utf8).wstring();
        return true;
    }
    catch (const std::exception&)
    {
        return false;
    }
}

bool HasTransparentPixel(const unsigned char* rgba, std::uint64_t pixels)
{
    for (std::uint64_t i = 0; i < pixels; ++i)
    {
        if (rgba[4 * i + 3] != 255)
        {
            return true;
        }
    }
    return false;
}

} // namespace

MaterialBuilder::MaterialBuilder(const ModelData& model, const std::string& modelPath,
                                 const ImportOptions& options, Scene& scene, ImportReport& report)
    : m_model(model), m_options(options), m_scene(scene), m_report(report), m_finder(modelPath)
{
}

Material& MaterialBuilder::Get(std::uint32_t index, PrimitiveKind kind)
{
    Material*& known = m_materials[{index, kind}];
    if (known)
    {
        return *known;
    }
    const MaterialData plain;
    const MaterialData& data = index < m_model.materials.size() ? m_model.materials[index] : plain;
    auto material = std::make_unique<Material>(data.name);
    SetColors(data, *material);
    if (data.isTwoSided)
    {
        material->SetFlags(MaterialFlagNoCull);
    }
    if (kind == PrimitiveKind::Points)
    {
        material->SetFlags(MaterialFlagPoints | MaterialFlagUnlit);
        material->pointSize = kPointSize;
        material->SetAmbient(Color(0.0f, 0.0f, 0.0f, 1.0f));
    }
    material->clampTexture = data.clampsTexture;
    const bool hasAlpha = SetTexture(data, *material);
    material->hasAlpha = hasAlpha && data.alphaMode != AlphaMode::Opaque;
    if (material->hasAlpha && !material->IsTransparent())
    {
        // The opacity alone decides what is drawn after all opaque things. This much less
        // than 1 shows in no pixel.
        material->SetOpacity(std::nextafter(1.0f, 0.0f));
    }

    m_scene.AddMaterial(material.get());
    known = material.release();
    ++m_report.materials;
    return *known;
}

void MaterialBuilder::SetColors(const MaterialData& data, Material& material) const
{
    const float level = data.isUnlit ? 0.0f : std::clamp(m_options.ambientLevel, 0.0f, 1.0f);
    float ambient[3];
    for (int i = 0; i < 3; ++i)
    {
        ambient[i] = std::min(1.0f, level * data.diffuse[i] + data.emissive[i]);
    }
    material.SetDiffuse(Color(data.diffuse[0], data.diffuse[1], data.diffuse[2], data.diffuse[3]));
    material.SetAmbient(Color(ambient[0], ambient[1], ambient[2], 1.0f));
    material.SetEmissive(Color(data.emissive[0], data.emissive[1], data.emissive[2], 1.0f));
    material.SetSpecular(Color(data.specular[0], data.specular[1], data.specular[2], 1.0f));
    material.SetShininess(data.shininess);
    // The light's colour leaves room for the ambient share.
    material.ignoreLightColor = false;
    if (data.isUnlit)
    {
        material.SetFlags(MaterialFlagUnlit);
    }
}

bool MaterialBuilder::SetTexture(const MaterialData& data, Material& material)
{
    if (!m_options.textures)
    {
        return false;
    }
    if (data.embeddedTexture >= 0 && std::size_t(data.embeddedTexture) < m_model.textures.size())
    {
        return SetEmbeddedTexture(data, m_model.textures[std::size_t(data.embeddedTexture)], material);
    }
    return !data.texturePath.empty() && SetFileTexture(data, material);
}

bool MaterialBuilder::SetFileTexture(const MaterialData& data, Material& material)
{
    const std::string path = m_finder.Find(data.texturePath);
    if (path.empty())
    {
        Miss(data, data.texturePath, "is not to be found");
        return false;
    }
    std::ifstream stream(path, std::ios::in | std::ios::binary);
    const ImageFacts facts = ProbeImage(FileSource(stream));
    if (!IsAffordable(facts, data, path))
    {
        return false;
    }
    std::wstring folder;
    std::wstring name;
    if (ToWide(FolderOf(path), folder) && ToWide(NameOf(path), name))
    {
        material.texturePath.path = folder;
        material.textureName = NameOf(path);
        ++m_report.fileTextures;
        return facts.hasAlpha;
    }

    // A name that is no text cannot be handed on; the pixels can.
    stream.clear();
    stream.seekg(0, std::ios::end);
    std::vector<unsigned char> bytes(static_cast<std::size_t>(std::max<std::streamoff>(stream.tellg(), 0)));
    FileSource(stream)(0, bytes.data(), bytes.size());
    const bool hasAlpha = Decode(bytes.data(), bytes.size(), data, material);
    m_report.fileTextures += material.pixels ? 1 : 0;
    return hasAlpha;
}

bool MaterialBuilder::SetEmbeddedTexture(const MaterialData& data, const TextureData& texture,
                                         Material& material)
{
    ImageFacts facts;
    const bool isRaw = texture.width > 0;
    if (isRaw)
    {
        facts.width = texture.width;
        facts.height = texture.height;
        facts.isReadable = texture.bytes.count / 4 >= facts.Pixels() && texture.height > 0;
        facts.obstacle = "is damaged or too large";
    }
    else
    {
        facts = ProbeImage(MemorySource(texture.bytes.data, texture.bytes.count));
    }
    if (!IsAffordable(facts, data, "embedded"))
    {
        return false;
    }
    const bool hasAlpha = isRaw ? SetRawPixels(texture, material)
                                : Decode(texture.bytes.data, texture.bytes.count, data, material);
    m_report.embeddedTextures += material.pixels ? 1 : 0;
    return hasAlpha;
}

bool MaterialBuilder::SetRawPixels(const TextureData& texture, Material& material)
{
    const std::size_t row = std::size_t(texture.width) * 4;
    material.pixels = static_cast<unsigned char*>(std::malloc(row * texture.height));
    if (!material.pixels)
    {
        throw std::bad_alloc();
    }
    // Pixels go to the texture as they lie, and there the first row is the bottom one.
    for (std::size_t y = 0; y < texture.height; ++y)
    {
        std::memcpy(material.pixels + (texture.height - 1 - y) * row, texture.bytes.data + y * row, row);
    }
    material.pixelWidth = static_cast<int>(texture.width);
    material.pixelHeight = static_cast<int>(texture.height);
    m_pixelBytes += row * texture.height;
    return HasTransparentPixel(material.pixels, std::uint64_t(texture.width) * texture.height);
}

bool MaterialBuilder::Decode(const unsigned char* bytes, std::uint64_t size, const MaterialData& data,
                             Material& material)
{
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
    if (!image || !image->data)
    {
        Miss(data, "embedded", "is damaged");
        return false;
    }
    material.pixelWidth = image->width;
    material.pixelHeight = image->height;
    material.pixels = std::exchange(image->data, nullptr);
    const std::uint64_t pixels = std::uint64_t(material.pixelWidth) * std::uint64_t(material.pixelHeight);
    m_pixelBytes += pixels * 4;
    return HasTransparentPixel(material.pixels, pixels);
}

bool MaterialBuilder::IsAffordable(const ImageFacts& facts, const MaterialData& data,
                                   const std::string& picture)
{
    const ImportLimits& limits = m_options.limits;
    if (!facts.isReadable)
    {
        Miss(data, picture, facts.obstacle);
        return false;
    }
    if (facts.Pixels() > limits.texturePixels)
    {
        Miss(data, picture, "has more than " + std::to_string(limits.texturePixels) + " pixels");
        return false;
    }
    if (facts.Pixels() * 4 > limits.textureBytes - std::min(m_pixelBytes, limits.textureBytes))
    {
        Miss(data, picture, "is beyond the memory for pictures");
        return false;
    }
    return true;
}

void MaterialBuilder::Miss(const MaterialData& data, const std::string& picture, const std::string& reason)
{
    ++m_report.missingTextures;
    m_report.warnings.push_back("Material '" + data.name + "' is shown without its picture: '" + picture +
                                "' " + reason + ".");
}

} // namespace OV::Host
