#include "orvane/math/Base64.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

// Ends the process unless both forms agree, a refusal leaves the result alone, and what was
// taken encodes to a text that decodes to the same bytes.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::vector<char> text(data, data + size);
    const std::vector<char> untouched = {'o', 'l', 'd'};
    std::vector<char> fromVector = untouched;
    std::vector<char> fromString = untouched;
    const bool isGood = OV::Base64::Decode(text, fromVector);
    if (isGood != OV::Base64::Decode(std::string(text.begin(), text.end()), fromString) ||
        fromVector != fromString || (!isGood && fromVector != untouched))
    {
        std::abort();
    }
    if (!isGood)
    {
        return 0;
    }

    std::vector<char> encoded;
    std::vector<char> again;
    OV::Base64::Encode(fromVector, encoded);
    if (encoded.size() != text.size() || !OV::Base64::Decode(encoded, again) || again != fromVector)
    {
        std::abort();
    }
    // Only the last group may differ, in the bits that padding leaves over.
    if (!std::equal(text.begin(), text.end() - 4, encoded.begin()))
    {
        std::abort();
    }
    return 0;
}
