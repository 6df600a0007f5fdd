# What every target of the project shares, and the lists that the folders fill.

# Compiler settings of our own targets. Private: nothing of it reaches a consumer.
function(orvane_target_defaults target)
    target_compile_options(${target} PRIVATE -Wall -Wextra)
    if(ORVANE_WARNINGS_AS_ERRORS)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
    set_target_properties(${target} PROPERTIES
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
    if(ORVANE_SANITIZE)
        # Library and programs are watched for all. The code of the tests is watched for addresses and
        # is not optimised, which compiles in a quarter of the time.
        set(tests ${PROJECT_SOURCE_DIR}/tests)
        cmake_path(IS_PREFIX tests ${CMAKE_CURRENT_SOURCE_DIR} NORMALIZE is_test)
        # Conversions of floats that no integer has are undefined too, and not among `undefined`.
        set(watched -fsanitize=address,undefined,float-cast-overflow
            -fno-sanitize-recover=undefined,float-cast-overflow)
        if(is_test)
            set(watched -O0 -fsanitize=address)
        endif()
        target_compile_options(${target} PRIVATE ${watched} -fno-omit-frame-pointer)
        target_link_options(${target} PRIVATE -fsanitize=address,undefined,float-cast-overflow)
    endif()
endfunction()

function(_orvane_append_absolute property)
    foreach(file IN LISTS ARGN)
        cmake_path(ABSOLUTE_PATH file BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
        set_property(GLOBAL APPEND PROPERTY ${property} ${file})
    endforeach()
endfunction()

# Sources and public headers of the engine, listed by the folder that holds them.
function(orvane_sources)
    _orvane_append_absolute(ORVANE_SOURCES ${ARGN})
endfunction()

function(orvane_headers)
    _orvane_append_absolute(ORVANE_HEADERS ${ARGN})
endfunction()

# The same for the host kit.
function(orvane_host_sources)
    _orvane_append_absolute(ORVANE_HOST_SOURCES ${ARGN})
endfunction()

function(orvane_host_headers)
    _orvane_append_absolute(ORVANE_HOST_HEADERS ${ARGN})
endfunction()

# Proves that each of the given headers compiles alone: one source a header that includes
# it twice and nothing else.
function(orvane_check_headers target)
    cmake_parse_arguments(ARG "" "LINK" "HEADERS" ${ARGN})
    set(sources)
    foreach(header IN LISTS ARG_HEADERS)
        cmake_path(RELATIVE_PATH header BASE_DIRECTORY ${PROJECT_SOURCE_DIR} OUTPUT_VARIABLE relative)
        string(MAKE_C_IDENTIFIER ${relative} stem)
        set(source ${CMAKE_CURRENT_BINARY_DIR}/headers/${stem}.cpp)
        set(text "#include \"${relative}\"\n#include \"${relative}\"\n")
        file(CONFIGURE OUTPUT ${source} CONTENT "${text}" @ONLY)
        list(APPEND sources ${source})
    endforeach()
    add_library(${target} OBJECT ${sources})
    orvane_target_defaults(${target})
    target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
    if(ARG_LINK)
        target_link_libraries(${target} PRIVATE ${ARG_LINK})
    endif()
endfunction()
