#pragma once

#include <string>

namespace OV::Test
{

/// A script of orvane-view that does so many things at random, all that there are among them. The
/// same seed gives the same script.
/// @param folder has the models one.obj, two.obj, broken.obj, and watched.obj; pictures are written there.
std::string MakeRandomScript(unsigned seed, int actions, const std::string& folder);

/// Writes the models.
void WriteRandomModels(const std::string& folder);

} // namespace OV::Test
