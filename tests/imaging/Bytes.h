#pragma once

#include <vector>

namespace OV::Test
{

using Bytes = std::vector<unsigned char>;

}  // namespace OV::Test
