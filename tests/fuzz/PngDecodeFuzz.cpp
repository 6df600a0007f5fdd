#include "tests/fuzz/DecodeInput.h"
#include "tests/imaging/PngFile.h"

#include <algorithm>
#include <cstdint>

// The signature and the checksums are put right: what is behind them is of interest.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr unsigned char signature[] = {0x89, 'P', 'N', 'G', 13, 10, 26, 10};
    OV::Test::Bytes block(data, data + size);
    std::copy_n(signature, std::min(sizeof(signature), size), block.begin());
    OV::Test::RepairChecksums(block);
    OV::Test::DecodeInput(std::move(block), size == 0 ? "Error reading JPEG" : "Error reading PNG");
    return 0;
}
