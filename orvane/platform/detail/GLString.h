#pragma once

#include <string>

namespace OV::Platform
{

/// What glGetString answers; empty where it answers null, as it does without a context.
std::string GLString(unsigned int name);

/// The same, for whoever has to tell no answer from an empty one.
/// @return false when it was null; text is then empty.
bool ReadGLString(unsigned int name, std::string& text);

}  // namespace OV::Platform
