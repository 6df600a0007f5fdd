#include "tests/imaging/JpegFile.h"
#include "tests/imaging/PngFile.h"
#include "tests/orvane_host/import/ForeignPictures.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

using OV::Test::Bytes;
using OV::Test::JpegFile;
using OV::Test::PngFile;

namespace
{

bool Write(const std::filesystem::path& file, const Bytes& bytes)
{
    std::filesystem::create_directories(file.parent_path());
    std::ofstream stream(file, std::ios::binary);
    stream.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    return stream.good();
}

bool WritePngs(const std::filesystem::path& directory)
{
    constexpr int forms[][2] = {{0, 1}, {0, 2}, {0, 4}, {0, 8},  {0, 16}, {2, 8}, {2, 16}, {3, 1},
                                {3, 2}, {3, 4}, {3, 8}, {4, 8}, {4, 16}, {6, 8}, {6, 16}};
    bool written = true;
    for (const auto& [colorType, bitDepth] : forms)
    {
        for (const bool special : {false, true})
        {
            PngFile file;
            file.width = 5;
            file.height = 4;
            file.colorType = colorType;
            file.bitDepth = bitDepth;
            file.FillWithNoise();
            file.palette.resize(colorType == 3 ? 6 : 0);
            for (Bytes& row : file.rows)
            {
                row.assign(row.size(), colorType == 3 ? 0 : row[0]);
            }
            // The second of each is a palette with alpha, and interlaced where there is none.
            file.transparency.assign(special && colorType == 3 ? 2 : 0, 100);
            file.interlaced = special && colorType != 3;
            const std::string name = "type" + std::to_string(colorType) + "-" + std::to_string(bitDepth) +
                                     (!special ? "" : colorType == 3 ? "-alpha" : "-interlaced") + ".png";
            written = Write(directory / name, file.Write()) && written;
        }
    }
    return written;
}

bool WriteJpegs(const std::filesystem::path& directory)
{
    struct Form
    {
        const char* name;
        JpegFile::Colors colors;
        int sampling;
        bool progressive;
        bool arithmetic;
        int restartInterval;
    };
    constexpr Form forms[] = {
        {"grey", JpegFile::Colors::Grey, 1, false, false, 0},
        {"grey-progressive", JpegFile::Colors::Grey, 1, true, false, 0},
        {"ycbcr", JpegFile::Colors::YCbCr, 1, false, false, 0},
        {"ycbcr-420", JpegFile::Colors::YCbCr, 2, false, false, 0},
        {"ycbcr-progressive", JpegFile::Colors::YCbCr, 2, true, false, 0},
        {"ycbcr-arithmetic", JpegFile::Colors::YCbCr, 1, false, true, 0},
        {"ycbcr-restarts", JpegFile::Colors::YCbCr, 1, false, false, 1},
        {"rgb", JpegFile::Colors::RGB, 1, false, false, 0},
        {"two", JpegFile::Colors::TwoComponents, 1, false, false, 0},
        {"cmyk", JpegFile::Colors::CMYK, 1, false, false, 0},
        {"ycck", JpegFile::Colors::YCCK, 2, false, false, 0},
    };
    bool written = true;
    for (const Form& form : forms)
    {
        JpegFile file;
        file.width = 17;
        file.height = 9;
        file.colors = form.colors;
        file.horizontalSampling = file.verticalSampling = form.sampling;
        file.progressive = form.progressive;
        file.arithmetic = form.arithmetic;
        file.restartInterval = form.restartInterval;
        file.quality = 20;
        file.FillWithPicture();
        written = Write(directory / (std::string(form.name) + ".jpg"), file.Write()) && written;
    }
    return written;
}

bool WriteForeign(const std::filesystem::path& directory)
{
    bool written = true;
    for (const unsigned char alpha : {0, 255})
    {
        const OV::Test::FourPixels pixels = {{10, 20, 30, alpha}};
        const std::string end = alpha ? "" : "-alpha";
        written = Write(directory / ("plain" + end + ".tga"), OV::Test::Tga(pixels)) && written;
        written = Write(directory / ("packed" + end + ".tga"), OV::Test::Tga(pixels, true, true)) && written;
        written = Write(directory / ("palette" + end + ".gif"), OV::Test::Gif(pixels)) && written;
        written = Write(directory / ("lossless" + end + ".webp"), OV::Test::Webp(pixels)) && written;
    }
    return Write(directory / "true.bmp", OV::Test::Bmp({})) && written;
}

}  // namespace

// Writes the first inputs of the fuzz targets for pictures: one small file of each form.
int main(int argc, char** argv)
{
    if (argc != 2)
    {
        std::fputs("usage: make_image_corpus DIRECTORY\n", stderr);
        return 2;
    }
    const std::filesystem::path directory = argv[1];
    if (!WritePngs(directory / "png") || !WriteJpegs(directory / "jpeg") ||
        !WriteForeign(directory / "foreign"))
    {
        std::fprintf(stderr, "make_image_corpus: cannot write to %s\n", argv[1]);
        return 1;
    }
    return 0;
}
