#pragma once

#include <string>

namespace OV::RenderApp
{

/// A text in the caller's encoding as UTF-8; what is none in it becomes question marks.
std::string ToUtf8(const std::string& text);

} // namespace OV::RenderApp
