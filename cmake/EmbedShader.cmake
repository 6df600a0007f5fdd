# Script: writes the text of INPUT into OUTPUT as one constant.
get_filename_component(stem ${INPUT} NAME_WE)
get_filename_component(kind ${INPUT} LAST_EXT)
if(kind STREQUAL ".vert")
    set(name ${stem}Vert)
elseif(kind STREQUAL ".frag")
    set(name ${stem}Frag)
else()
    message(FATAL_ERROR "${INPUT}: a shader ends in .vert or .frag")
endif()
file(READ ${INPUT} text)
file(WRITE ${OUTPUT} "#pragma once

namespace OV::Shaders
{

inline constexpr char ${name}[] = R\"GLSL(")
file(APPEND ${OUTPUT} "${text}")
file(APPEND ${OUTPUT} ")GLSL\";

}  // namespace OV::Shaders
")
