#include "orvane/imaging/TextureLoader.h"

namespace OV
{

TextureLoader::~TextureLoader() = default;

}  // namespace OV
