#pragma once

#include <string>
#include <vector>

namespace OV::Host
{

class Presentation;
class SunHoursMap;
struct SunStudyTimes;

} // namespace OV::Host

namespace OV::RenderApp
{

struct Options;

/// The times of the study that options ask for, as clocks show them where the model stands. Throws
/// Failure where they don't tell.
Host::SunStudyTimes StudyTimes(const Options& options, const Host::Presentation& presentation);

/// Draws the sheet of the study into a file. Throws Failure, with no file written. GL.
void WriteStudySheet(const Options& options, Host::Presentation& presentation);

/// Works out the map of the study, and moves the view that it has room unless options tell the eye.
/// Throws Failure. Not GL.
void ShowStudyMap(const Options& options, Host::Presentation& presentation, Host::SunHoursMap& map);

} // namespace OV::RenderApp
