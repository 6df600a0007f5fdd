#pragma once

#include <string>
#include <vector>

namespace OV::Test
{

// Calls as GLCall::ToString writes them, for comparison with what a recorder noted.

std::string Enable(unsigned int capability);
std::string Disable(unsigned int capability);

/// Selects a texture unit, counted from 0.
std::string Unit(unsigned int unit);

/// Binds a texture of two dimensions.
std::string BindTexture(unsigned int texture);

/// Selects a program, binds textures of two dimensions to the units from 0 on, and goes back to
/// unit 0.
std::vector<std::string> ProgramAndTextures(unsigned int program, const std::vector<unsigned int>& textures);

} // namespace OV::Test
