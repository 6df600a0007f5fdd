// The textures of a material: asked for, awaited and given back.
#include "orvane/renderdata/MaterialES20.h"

#include "orvane/imaging/TextureLoader.h"
#include "orvane/overlay/Material2D.h"
#include "orvane/scene/Scene.h"

#include <cstdlib>
#include <string>

namespace OV
{

namespace detail
{

struct LoadedScale
{
    float u = 1.0f;
    float v = 1.0f;
};

} // namespace detail

namespace
{

using detail::LoadedScale;

/// What CreateTexture is told about a reduction of pictures: none.
constexpr float kFullScale = 1.0f;
constexpr int kNoSizeLimit = 0x7FFFFFFF;

/// What a loader answers. One that throws has no texture, and without a texture the scale is
/// what it was.
template <class Request>
unsigned int AskLoader(LoadedScale& scale, Request&& request)
{
    const LoadedScale before = scale;
    unsigned int id = 0;
    try
    {
        id = request();
    }
    catch (...)
    {
        id = 0;
    }
    if (id == 0 || id == MaterialES20::PendingTexture)
    {
        scale = before;
    }
    return id;
}

/// Asks for the picture in a file of the material. The loader's host may delete the material, so
/// that nothing of it is handed out.
unsigned int AskForFile(TextureLoader& loader, const Material& material, const std::string& fileName, bool flag,
                        LoadedScale& scale, bool& hasAlpha)
{
    const FilePath path = material.texturePath;
    const std::string name = fileName;
    int width = 0;
    int height = 0;
    return AskLoader(scale,
                     [&]
                     {
                         return loader.CreateTexture(path, name, width, height, scale.u, scale.v, flag,
                                                     kFullScale, kNoSizeLimit, hasAlpha);
                     });
}

} // namespace

void MaterialES20::LoadTextures()
{
    const bool isFlat = material->HasType(NodeTypeMaterial2D);
    if (isFlat && material)
    {
        LoadHudTexture();
    }
    else if (material && !material->HasType(NodeTypeSimMaterial) && material)
    {
        LoadSurfaceTextures();
    }
}

void MaterialES20::LoadHudTexture()
{
    if (!textureLoader)
    {
        return;
    }
    LoadedScale scale;
    if (!material->textureName.empty())
    {
        LoadBase(scale, true);
    }
    else if (material->pixels)
    {
        LoadPixels(scale, true);
        if (material)
        {
            std::free(material->pixels);
            material->pixels = nullptr;
        }
    }
    else if (auto* const flat = dynamic_cast<Material2D*>(material))
    {
        LoadText(*flat);
    }
    uScale = scale.u;
    vScale = scale.v;
}

void MaterialES20::LoadBase(detail::LoadedScale& scale, bool flag)
{
    bool hasAlpha = material->hasAlpha;
    textureId = AskForFile(*textureLoader, *material, material->textureName, flag, scale, hasAlpha);
    if (material)
    {
        material->hasAlpha = hasAlpha;
    }
}

void MaterialES20::LoadPixels(detail::LoadedScale& scale, bool clamp)
{
    bool hasAlpha = material->hasAlpha;
    textureId = AskLoader(scale,
                          [&]
                          {
                              return textureLoader->CreateTexture(material->pixels, material->pixelWidth,
                                                                  material->pixelHeight, scale.u, scale.v,
                                                                  hasAlpha, clamp);
                          });
    if (material)
    {
        material->hasAlpha = hasAlpha;
    }
}

void MaterialES20::LoadText(Material2D& flat)
{
    const bool drawn =
        !flat.text.empty() && !flat.fontName.empty() && flat.fontSize > 0 && flat.EachMesh().size() == 1;
    if (!drawn)
    {
        return;
    }
    const std::string fontName = flat.fontName;
    const std::string text = flat.text;
    int width = 0;
    int height = 0;
    int textureWidth = flat.textureWidth;
    int textureHeight = flat.textureHeight;
    LoadedScale scale;
    textureId = AskLoader(scale, [&] {
        return textureLoader->CreateTextTexture(fontName, flat.fontSize, text, flat.maxWidth, width, height,
                                                textureWidth, textureHeight);
    });
    if (!material)
    {
        return;
    }
    flat.textureWidth = textureWidth;
    flat.textureHeight = textureHeight;
    flat.hasAlpha = true;
    if (textureHeight > 0 && textureHeight < height)
    {
        // The texture ends where the driver's limit is, and the shape goes on below it.
        materialVScale *= static_cast<float>(textureHeight) / static_cast<float>(height);
    }
}

void MaterialES20::LoadSurfaceTextures()
{
    if (!textureLoader)
    {
        return;
    }
    LoadedScale scale;
    if (!material->textureName.empty())
    {
        LoadBase(scale, false);
    }
    else if (material->pixels)
    {
        LoadPixels(scale, material->clampTexture);
    }
    uScale = scale.u;
    vScale = scale.v;
    normalMapId = LoadMap(&Material::normalMapName);
    opacityMapId = LoadMap(&Material::opacityMapName);
}

unsigned int MaterialES20::LoadMap(std::string Material::*name)
{
    // The question before may have been the end of the material or of the loader.
    if (!material || !textureLoader || (material->*name).empty())
    {
        return 0;
    }
    LoadedScale scale{uScale, vScale};
    bool hasAlpha = false;
    const unsigned int id = AskForFile(*textureLoader, *material, material->*name, false, scale, hasAlpha);
    // The map loaded last decides the scale for all.
    uScale = scale.u;
    vScale = scale.v;
    return id == PendingTexture ? 0 : id;
}

void MaterialES20::ReleaseTextures()
{
    for (unsigned int* id : {&textureId, &normalMapId, &opacityMapId})
    {
        if (*id != 0)
        {
            textureLoader.Release(*id);
        }
        *id = 0;
    }
}

bool MaterialES20::EnsureTextureLoaded()
{
    if (textureId != PendingTexture || !material)
    {
        return material != nullptr;
    }
    LoadedScale scale;
    bool hasAlpha = material->hasAlpha;
    const unsigned int answer =
        textureLoader ? AskForFile(*textureLoader, *material, material->textureName, true, scale, hasAlpha) : 0;
    textureId = answer;
    if (!material)
    {
        return false;
    }
    material->hasAlpha = hasAlpha;
    if (textureId == PendingTexture)
    {
        if (Scene* scene = material->GetScene())
        {
            scene->MarkDirty();
        }
        return false;
    }
    if (textureId != 0)
    {
        uScale = scale.u * materialUScale;
        vScale = scale.v * materialVScale;
    }
    return true;
}

} // namespace OV
