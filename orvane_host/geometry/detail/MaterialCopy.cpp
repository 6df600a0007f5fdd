#include "orvane_host/geometry/detail/MaterialCopy.h"

#include "orvane/scene/Material.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <new>

namespace OV::Host::Detail
{

void CompleteCopy(const Material& from, Material& copy)
{
    copy.flags = from.flags;
    if (from.pixels)
    {
        const std::size_t bytes = std::size_t(4) * static_cast<std::size_t>(from.pixelWidth)
            * static_cast<std::size_t>(from.pixelHeight);
        copy.pixels = static_cast<unsigned char*>(std::malloc(bytes));
        if (!copy.pixels)
        {
            throw std::bad_alloc();
        }
        std::copy(from.pixels, from.pixels + bytes, copy.pixels);
    }
    copy.pixelWidth = from.pixelWidth;
    copy.pixelHeight = from.pixelHeight;
    copy.pointSize = from.pointSize;
    copy.polygonOffsetFactor = from.polygonOffsetFactor;
    copy.polygonOffsetUnits = from.polygonOffsetUnits;
    copy.clampTexture = from.clampTexture;
    copy.uScale = from.uScale;
    copy.vScale = from.vScale;
    copy.stippleOffset = from.stippleOffset;
    copy.stippleSize = from.stippleSize;
    copy.hatchUScale = from.hatchUScale;
    copy.hatchVScale = from.hatchVScale;
    copy.normalMapName = from.normalMapName;
    copy.opacityMapName = from.opacityMapName;
    std::copy(std::begin(from.reflectionFactors), std::end(from.reflectionFactors), copy.reflectionFactors);
    copy.noDepthWrite = from.noDepthWrite;
}

} // namespace OV::Host::Detail
