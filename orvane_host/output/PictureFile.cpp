#include "orvane_host/output/PictureFile.h"

#include "orvane_host/output/detail/AtomicFile.h"
#include "orvane_host/output/detail/PictureWriters.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

namespace OV::Host
{

namespace
{

constexpr std::array<const char*, 4> kJPEGEndings = {"jpe", "jpeg", "jpg", "jfif"};

/// Endings that promise a picture or a drawing of a kind that isn't written.
constexpr std::array<const char*, 32> kForeignEndings = {
    "avif", "bmp", "dds", "dib", "eps", "exr", "gif", "hdr", "heic", "heif", "ico", "j2k", "jp2", "jxl", "ktx", "pbm",
    "pcx",  "pdf", "pgm", "pic", "pnm", "ppm", "ps",  "psd", "qoi",  "ras",  "svg", "tga", "tif", "tiff", "webp", "xcf",
};

/// The ending of a file name in small letters, without the dot; empty where there is none.
std::string EndingOf(const std::string& path)
{
    const std::string name = path.substr(path.find_last_of('/') + 1);
    const std::size_t dot = name.find_last_of('.');
    std::string ending = dot == std::string::npos ? std::string() : name.substr(dot + 1);
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return ending;
}

template <class Endings>
bool IsAmong(const Endings& endings, const std::string& ending)
{
    return std::find(endings.begin(), endings.end(), ending) != endings.end();
}

std::string NameOf(PictureKind kind)
{
    return kind == PictureKind::JPEG ? "JPEG" : "PNG";
}

std::unique_ptr<PictureFile> Begin(std::unique_ptr<Detail::FileSink> sink, const PictureFormat& format,
                                   std::string& error)
{
    if (!sink)
    {
        return nullptr;
    }
    return format.kind == PictureKind::JPEG ? Detail::BeginJPEG(std::move(sink), format, error)
                                            : Detail::BeginPNG(std::move(sink), format, error);
}

}  // namespace

std::unique_ptr<PictureFile> PictureFile::Create(const std::string& path, const PictureFormat& format,
                                                 std::string& error)
{
    PictureKind promised = PictureKind::PNG;
    if (!KindOf(path, promised, error) || !CanHold(format, error))
    {
        return nullptr;
    }
    if (promised != format.kind && !EndingOf(path).empty() && (promised == PictureKind::JPEG || EndingOf(path) == "png"))
    {
        error = "the name promises a " + NameOf(promised) + " and a " + NameOf(format.kind)
            + " was asked for; choose another name";
        return nullptr;
    }
    return Begin(Detail::OpenFileAtomically(path, error), format, error);
}

std::unique_ptr<PictureFile> PictureFile::Create(int descriptor, const PictureFormat& format, std::string& error)
{
    return CanHold(format, error) ? Begin(Detail::SinkInto(descriptor), format, error) : nullptr;
}

bool PictureFile::KindOf(const std::string& path, PictureKind& kind, std::string& error)
{
    // Other programs go by the ending, and would not find what it promises.
    const std::string ending = EndingOf(path);
    if (IsAmong(kForeignEndings, ending))
    {
        error = "pictures are written as PNG or JPEG, which ." + ending + " is not; let the name end in .png";
        return false;
    }
    kind = IsAmong(kJPEGEndings, ending) ? PictureKind::JPEG : PictureKind::PNG;
    return true;
}

bool PictureFile::CanHold(const PictureFormat& format, std::string& error)
{
    const bool isJPEG = format.kind == PictureKind::JPEG;
    const int most = isJPEG ? PictureFormat::MostJPEGPixels : PictureFormat::MostPixels;
    if (format.width < 1 || format.height < 1 || format.width > most || format.height > most)
    {
        error = "a " + NameOf(format.kind) + " of " + std::to_string(format.width) + "x"
            + std::to_string(format.height) + " can't be written; a side has 1 to " + std::to_string(most) + " pixels";
        return false;
    }
    if (format.bits != 8 && format.bits != 16)
    {
        error = "channels of " + std::to_string(format.bits) + " bits can't be written; ask for 8 or 16";
        return false;
    }
    if (isJPEG && (format.alpha || format.bits != 8))
    {
        error = std::string("a JPEG has no ") + (format.alpha ? "transparency" : "16 bits a channel")
            + "; let the name end in .png";
        return false;
    }
    return true;
}

bool PictureFile::CanWrite(const std::string& path, std::string& error)
{
    PictureKind kind = PictureKind::PNG;
    return KindOf(path, kind, error) && Detail::CanWriteFile(path, error);
}

}  // namespace OV::Host
