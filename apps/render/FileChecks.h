#pragma once

namespace OV::Host
{

struct PictureFormat;

} // namespace OV::Host

namespace OV::RenderApp
{

struct Options;

/// Of the picture that is asked for. Throws Failure for a name of a kind that isn't written.
Host::PictureFormat FormatOf(const Options& options);

/// Throws Failure for files that can't be read or written, before any work is done for them.
void CheckFiles(const Options& options);

} // namespace OV::RenderApp
