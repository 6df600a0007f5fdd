#include "orvane_host/import/detail/FormatGuess.h"

#include "orvane_host/import/detail/StepSchema.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>

namespace OV::Host
{

namespace
{

struct Beginning
{
    const char* text;
    const char* format;
};

constexpr Beginning kBeginnings[] = {
    {"glTF", "glb"},
    {"BB3D", "b3d"},
    {"MD5Version", "md5mesh"},
    {"version 1\nnodes", "smd"},
    {"version 1\r\nnodes", "smd"},
};

constexpr std::size_t kTriangleHeader = 84; ///< of binary STL: text and a count
constexpr std::size_t kTriangle = 50;

/// Binary STL has no mark of its own, but its size follows from the count that it holds.
bool IsBinaryStl(const unsigned char* start, std::uint64_t size)
{
    const std::uint64_t count = start[80] | start[81] << 8 | start[82] << 16 | std::uint64_t(start[83]) << 24;
    return count > 0 && size == kTriangleHeader + kTriangle * count;
}

} // namespace

std::string GuessFormat(const std::string& path)
{
    if (IsBuildingSchema(ReadStepSchema(path)))
    {
        return "ifc";
    }
    unsigned char start[kTriangleHeader] = {};
    std::ifstream stream(path, std::ios::in | std::ios::binary);
    stream.read(reinterpret_cast<char*>(start), sizeof(start));
    const bool isWhole = stream.gcount() == static_cast<std::streamsize>(sizeof(start));
    for (const Beginning& beginning : kBeginnings)
    {
        if (std::memcmp(start, beginning.text, std::strlen(beginning.text)) == 0)
        {
            return beginning.format;
        }
    }
    stream.clear();
    stream.seekg(0, std::ios::end);
    const std::streamoff size = stream.tellg();
    return isWhole && size > 0 && IsBinaryStl(start, static_cast<std::uint64_t>(size)) ? "stl" : std::string();
}

} // namespace OV::Host
