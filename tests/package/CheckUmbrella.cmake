# Script: the umbrella header includes every public header of its library.
file(READ ${SOURCE_DIR}/${UMBRELLA} text)
foreach(header IN LISTS HEADERS)
    cmake_path(RELATIVE_PATH header BASE_DIRECTORY ${SOURCE_DIR} OUTPUT_VARIABLE relative)
    if(NOT relative STREQUAL UMBRELLA AND NOT relative STREQUAL "orvane/Export.h"
       AND NOT text MATCHES "#include \"${relative}\"")
        list(APPEND missing ${relative})
    endif()
endforeach()
if(missing)
    list(JOIN missing " " missing)
    message(FATAL_ERROR "${UMBRELLA} does not include ${missing}")
endif()
