#include "tests/fuzz/DecodeInput.h"

#include <cstdint>

namespace
{

// Whether a frame header, or what looks like one, promises more pixels than a run should
// spend its time on: a few bytes may stand for four thousand million.
bool IsLarge(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t largest = 1 << 18;
    for (std::size_t i = 0; i + 9 <= size; ++i)
    {
        const std::size_t height = std::size_t(data[i + 5]) << 8 | data[i + 6];
        const std::size_t width = std::size_t(data[i + 7]) << 8 | data[i + 8];
        if (data[i] == 0xFF && (data[i + 1] & 0xF0) == 0xC0 && width * height > largest)
        {
            return true;
        }
    }
    return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const bool isPng = size > 0 && data[0] == 0x89;
    if (!isPng && !IsLarge(data, size))
    {
        OV::Test::DecodeInput(std::vector<unsigned char>(data, data + size), "Error reading JPEG");
    }
    return 0;
}
