#pragma once

#include <string>

namespace OV::Host
{

class HeadlessContext;
struct PresentationSettings;

} // namespace OV::Host

namespace OV::RenderApp
{

struct Options;

/// Pixels along an edge of what is drawn for each of the picture.
int ScaleOf(const Host::PresentationSettings& settings);

/// What trouble with the picture is told about.
const std::string& SubjectOf(const Options& options);

/// Throws Failure where GL can't draw the picture at once.
void CheckSize(const Options& options, const Host::HeadlessContext& gl);

/// Whether GL and the memory have room for all of the picture at once.
bool FitsAtOnce(const Options& options, const Host::HeadlessContext& gl);

/// Throws Failure where the picture takes more memory than there is. A kernel that is short of
/// memory kills the process instead of refusing, so that the picture is not begun where it cannot
/// fit.
void CheckMemory(const Options& options, int samples);

} // namespace OV::RenderApp
