#pragma once

#include "orvane_host/output/PictureFile.h"
#include "orvane_host/output/detail/AtomicFile.h"

#include <memory>
#include <string>

namespace OV::Host::Detail
{

/// Both take the sink over; the format must be one that the kind can tell. Null on failure.
std::unique_ptr<PictureFile> BeginPNG(std::unique_ptr<FileSink> sink, const PictureFormat& format, std::string& error);
std::unique_ptr<PictureFile> BeginJPEG(std::unique_ptr<FileSink> sink, const PictureFormat& format,
                                       std::string& error);

}  // namespace OV::Host::Detail
