#pragma once

#include "tests/effects/EffectStage.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace OV::Test
{

/// What one call of Apply makes once its program is compiled, as ReadCalls gives it.
std::vector<std::string> ReadApply(GLRecorder& gl, EffectStage& stage, MaterialEffectES20& effect);

/// The names of an effect's uniforms in their order; expects that they are counted from 0
/// without a gap.
std::vector<std::string> UniformTable(const std::map<unsigned int, std::string>& names);

/// The attributes that were given a location, as in "0a_position".
std::vector<std::string> BoundAttributes(const GLRecorder& gl);

/// The options that a program was compiled for; all bits when it is none of these.
std::uint64_t OptionsOf(unsigned int program, const std::map<std::uint64_t, unsigned int>& programsByOptions);

/// Expects that an attribute was pointed at floats of the mesh, and enabled, that many times.
void ExpectStream(const GLRecorder& gl, const MeshES20& mesh, unsigned int attribute, int components, int offset,
                  std::size_t times = 1);

/// Expects of an effect over the whole screen, whose program is in use, that it reads the
/// positions of a mesh with these streams as attribute 0 and its texture coordinates, where it
/// has them, as the one given; and that it disables both in any case.
void ExpectScreenStreams(GLRecorder& gl, EffectStage& stage, EffectES20& effect, EffectStage::Streams streams,
                         unsigned int textureAttribute);

} // namespace OV::Test
