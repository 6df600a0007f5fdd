#pragma once

namespace OV::RenderApp
{

struct Options;

/// Throws Failure for files that can't be read or written, before any work is done for them.
void CheckFiles(const Options& options);

} // namespace OV::RenderApp
