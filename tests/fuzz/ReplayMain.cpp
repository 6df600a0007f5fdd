#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

// Feeds each file of the given directories to the fuzz target. Without a single file it fails:
// a corpus that is not found must not look like one that passes.
int main(int argc, char** argv)
{
    int inputs = 0;
    for (int i = 1; i < argc; ++i)
    {
        std::error_code error;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[i], error))
        {
            std::ifstream file(entry.path(), std::ios::binary);
            if (!entry.is_regular_file() || !file)
            {
                continue;
            }
            const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
            // In a block of its own size, so that a sanitizer sees the first byte past it.
            const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
            LLVMFuzzerTestOneInput(input.data(), input.size());
            ++inputs;
        }
    }
    std::printf("%d inputs\n", inputs);
    return inputs > 0 ? 0 : 1;
}
