#include "orvane_host/import/detail/ForeignPicture.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

// Ends the process unless a head comes with either sizes or an obstacle, and what is decoded has the sizes
// of its head and comes out the same twice.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace OV::Host;
    const ImageFacts facts = ProbeImage(MemorySource(data, size));
    if (facts.isReadable != facts.obstacle.empty() || (facts.isReadable && facts.Pixels() == 0))
    {
        std::abort();
    }
    // A few bytes may stand for more pixels than a run should spend its time on.
    constexpr std::uint64_t largest = 1 << 18;
    if (!facts.needsConversion || facts.Pixels() > largest)
    {
        return 0;
    }
    const std::vector<unsigned char> pixels = DecodeForeign(data, size, facts);
    const bool isWhole = pixels.empty() || pixels.size() == facts.Pixels() * 4;
    if (!isWhole || pixels != DecodeForeign(data, size, facts))
    {
        std::abort();
    }
    return 0;
}
