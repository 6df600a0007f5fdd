#include "orvane/overlay/detail/TextSizeCallback.h"

#include "orvane/platform/ESTextureLoader.h"

namespace OV::Detail
{

Text::SizeCallback& TextSizeCallback()
{
    static Text::SizeCallback callback = &Platform::Linux::ESTextureLoader::TextSize;
    return callback;
}

} // namespace OV::Detail
