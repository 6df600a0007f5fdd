#include "orvane/imaging/TextureLoader.h"

#include "orvane/imaging/TextureHeir.h"

#include <utility>

namespace OV
{

TextureHeir::~TextureHeir() = default;

TextureLoader::~TextureLoader() = default;

void TextureLoader::SetHeir(std::shared_ptr<TextureHeir> heir)
{
    m_heir = std::move(heir);
}

}  // namespace OV
