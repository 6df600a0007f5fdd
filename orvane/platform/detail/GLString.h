#pragma once

#include <string>

namespace OV::Platform
{

/// What glGetString answers; empty where it answers null, as it does without a context.
std::string GLString(unsigned int name);

}  // namespace OV::Platform
