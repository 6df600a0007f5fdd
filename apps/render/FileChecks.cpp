#include "apps/render/FileChecks.h"

#include "apps/render/Options.h"
#include "apps/render/Report.h"
#include "orvane_host/output/WritePNG.h"
#include "orvane_host/present/Surroundings.h"
#include "orvane_host/sheet/Watermark.h"

#include <sys/stat.h>

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

void CheckOutput(const Options& options)
{
    Require(!IsSameFile(options.model, options.output), options.output,
            "the picture would replace the model; name another file with -o");
    Require(!IsSameFile(options.settings.sheet.watermark, options.output), options.output,
            "the picture would replace the watermark; name another file with -o");
    Require(!IsSameFile(options.settings.surroundings, options.output), options.output,
            "the picture would replace the surroundings; name another file with -o");
    std::string error;
    Require(Host::CanWritePNG(options.output, error), options.output, error);
}

} // namespace

void CheckFiles(const Options& options)
{
    struct stat model{};
    Require(::stat(options.model.c_str(), &model) == 0, options.model, "there is no such file; check the name");
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
