#include "apps/render/FileChecks.h"

#include "apps/render/Options.h"
#include "apps/render/Report.h"
#include "orvane_host/output/PictureFile.h"
#include "orvane_host/present/Surroundings.h"
#include "orvane_host/sheet/Watermark.h"

#include <cstddef>

#include <sys/stat.h>
#include <unistd.h>

namespace OV::RenderApp
{

namespace
{

bool IsSameFile(const std::string& left, const std::string& right)
{
    struct stat a{};
    struct stat b{};
    return ::stat(left.c_str(), &a) == 0 && ::stat(right.c_str(), &b) == 0 && a.st_dev == b.st_dev
        && a.st_ino == b.st_ino;
}

/// Without what comes from standard input.
std::vector<std::string> ModelsOf(const Options& options)
{
    std::vector<std::string> models = {options.model};
    models.insert(models.end(), options.besides.begin(), options.besides.end());
    if (options.piped)
    {
        models.erase(models.begin() + static_cast<std::ptrdiff_t>(options.piped->index));
    }
    return models;
}

void CheckOutput(const Options& options)
{
    for (const std::string& file : ModelsOf(options))
    {
        Require(!IsSameFile(file, options.output), options.output,
                "the picture would replace the model; name another file with -o");
    }
    Require(!IsSameFile(options.settings.sheet.watermark, options.output), options.output,
            "the picture would replace the watermark; name another file with -o");
    Require(!IsSameFile(options.settings.surroundings, options.output), options.output,
            "the picture would replace the surroundings; name another file with -o");
    std::string error;
    const Host::PictureFormat format = FormatOf(options);
    Require(Host::PictureFile::CanHold(format, error), options.output, error);
    Require(options.output == "-" || Host::PictureFile::CanWrite(options.output, error), options.output, error);
    Require(options.output != "-" || ::isatty(STDOUT_FILENO) == 0, "standard output",
            "a picture is no text for a terminal; send it to a file or a program");
}

} // namespace

Host::PictureFormat FormatOf(const Options& options)
{
    Host::PictureFormat format;
    format.width = options.width;
    format.height = options.height;
    format.alpha = options.picture.transparent;
    format.bits = options.picture.bits;
    format.pixelsPerMetre = options.picture.pixelsPerMetre;
    std::string error;
    Require(Host::PictureFile::KindOf(options.output, format.kind, error), options.output, error);
    return format;
}

std::unique_ptr<Host::PictureFile> BeginPicture(const Options& options)
{
    std::string error;
    const Host::PictureFormat format = FormatOf(options);
    std::unique_ptr<Host::PictureFile> file = options.output == "-"
        ? Host::PictureFile::Create(STDOUT_FILENO, format, error)
        : Host::PictureFile::Create(options.output, format, error);
    Require(file != nullptr, options.output, error);
    return file;
}

void CheckFiles(const Options& options)
{
    for (const std::string& file : ModelsOf(options))
    {
        struct stat model{};
        Require(::stat(file.c_str(), &model) == 0, file, "there is no such file; check the name");
    }
    Require(!options.piped || ::isatty(STDIN_FILENO) == 0, "standard input",
            "no model comes from a terminal; send one by < or |");
    if (!options.output.empty())
    {
        CheckOutput(options);
    }
    // Told before the model is read, which may take long.
    const std::string& watermark = options.settings.sheet.watermark;
    std::string error;
    Require(watermark.empty() || Host::Watermark::Read(watermark, error), watermark, error);
    const std::string& surroundings = options.settings.surroundings;
    Require(surroundings.empty() || surroundings == "sky"
                || Host::Surroundings::Read(surroundings, options.settings.view.upAxis, error),
            surroundings, error);
}

} // namespace OV::RenderApp
