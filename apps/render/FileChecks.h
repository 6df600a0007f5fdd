#pragma once

#include <memory>

namespace OV::Host
{

class PictureFile;
struct PictureFormat;

} // namespace OV::Host

namespace OV::RenderApp
{

struct Options;

/// Of the picture that is asked for. Throws Failure for a name of a kind that isn't written.
Host::PictureFormat FormatOf(const Options& options);

/// Begins to write that picture where it is wanted. Throws Failure.
std::unique_ptr<Host::PictureFile> BeginPicture(const Options& options);

/// Throws Failure for files that can't be read or written, before any work is done for them.
void CheckFiles(const Options& options);

} // namespace OV::RenderApp
