#include "orvane/imaging/TextureLoader.h"

#include "orvane/platform/ESTextureLoader.h"

namespace OV
{

TextureLoader::~TextureLoader() = default;

TextureLoader* TextureLoader::Create()
{
    return new Platform::Linux::ESTextureLoader();
}

}  // namespace OV
