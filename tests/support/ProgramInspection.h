#pragma once

#include <set>
#include <string>

namespace OV::Test
{

/// The prelude of a device that has precisions.
inline constexpr char EsPrelude[] = "#version 100\n"
                                    "#define PRECISION_DEFAULT_HIGHP(t) precision highp t;\n"
                                    "#define PRECISION_DEFAULT_MEDIUMP(t) precision mediump t;\n"
                                    "#define PRECISION_DEFAULT_LOWP(t) precision lowp t;\n"
                                    "#define HIGHP highp\n"
                                    "#define LOWP lowp\n"
                                    "#define MEDIUMP mediump\n";

/// Compiles a text and gives the log, which is empty when there is nothing to complain about.
/// @param type the GL enumerator of the kind of shader.
std::string CompileLog(unsigned int type, const std::string& text);

/// What the driver kept of a linked program.
std::set<std::string> ActiveUniforms(unsigned int program);
std::set<std::string> ActiveAttributes(unsigned int program);

} // namespace OV::Test
