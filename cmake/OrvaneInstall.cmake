# What an installation holds: the libraries, their headers with the folders kept, a CMake
# package, a pkg-config file for each library, the programs with their manual, and the package for Python. The components
# are those of the packages: liborvane, dev, tools, python.
include(CMakePackageConfigHelpers)

set(ORVANE_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Orvane)

function(_orvane_install_headers)
    foreach(header IN LISTS ARGN)
        cmake_path(RELATIVE_PATH header BASE_DIRECTORY ${PROJECT_SOURCE_DIR} OUTPUT_VARIABLE relative)
        cmake_path(GET relative PARENT_PATH folder)
        install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${folder} COMPONENT dev)
    endforeach()
endfunction()

# Finds the library beside it, wherever the installation is moved to.
function(_orvane_find_library_from target folder)
    cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR
        BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX}/${folder} OUTPUT_VARIABLE way)
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN/${way}")
endfunction()

get_property(headers GLOBAL PROPERTY ORVANE_HEADERS)
_orvane_install_headers(${headers})
install(TARGETS orvane EXPORT OrvaneEngine
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT liborvane NAMELINK_COMPONENT dev
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)

if(ORVANE_BUILD_HOST)
    get_property(headers GLOBAL PROPERTY ORVANE_HOST_HEADERS)
    _orvane_install_headers(${headers})
    install(TARGETS orvane_host EXPORT OrvaneHost
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
endif()
foreach(program orvane-render orvane-view)
    if(TARGET ${program})
        _orvane_find_library_from(${program} ${CMAKE_INSTALL_BINDIR})
        install(TARGETS ${program} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
        get_target_property(manual ${program} ORVANE_MANUAL)
        get_target_property(completion ${program} ORVANE_COMPLETION)
        get_target_property(zsh_completion ${program} ORVANE_ZSH_COMPLETION)
        install(FILES ${manual} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
        install(FILES ${completion} DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
            RENAME ${program} COMPONENT tools)
        # Where Debian's zsh looks for what packages bring.
        install(FILES ${zsh_completion} DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT tools)
    endif()
endforeach()
if(TARGET orvane_python)
    _orvane_find_library_from(orvane_python ${ORVANE_PYTHON_DIR}/orvane)
    install(TARGETS orvane_python LIBRARY DESTINATION ${ORVANE_PYTHON_DIR}/orvane COMPONENT python)
    get_property(files GLOBAL PROPERTY ORVANE_PYTHON_FILES)
    install(FILES ${files} DESTINATION ${ORVANE_PYTHON_DIR}/orvane COMPONENT python)
endif()

foreach(part Engine Host)
    if(part STREQUAL "Engine" OR ORVANE_BUILD_HOST)
        install(EXPORT Orvane${part} NAMESPACE Orvane:: FILE Orvane${part}Targets.cmake
            DESTINATION ${ORVANE_CMAKE_DIR} COMPONENT dev)
    endif()
endforeach()
configure_package_config_file(
    ${PROJECT_SOURCE_DIR}/cmake/OrvaneConfig.cmake.in
    ${PROJECT_BINARY_DIR}/OrvaneConfig.cmake
    INSTALL_DESTINATION ${ORVANE_CMAKE_DIR})
write_basic_package_version_file(
    ${PROJECT_BINARY_DIR}/OrvaneConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/OrvaneConfig.cmake
    ${PROJECT_BINARY_DIR}/OrvaneConfigVersion.cmake
    DESTINATION ${ORVANE_CMAKE_DIR} COMPONENT dev)

# The prefix is told relative to the file, so that an installation may be moved.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
    BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig OUTPUT_VARIABLE ORVANE_PC_TO_PREFIX)
function(_orvane_install_pkgconfig name)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
endfunction()

# Whoever links a static library links what it stands on.
set(ORVANE_PC_REQUIRES glm)
if(NOT BUILD_SHARED_LIBS)
    set(ORVANE_PC_REQUIRES "glm, glew, opengl, libpng, libjpeg, fontconfig, freetype2, raqm, harfbuzz")
    set(ORVANE_PC_LIBS "-pthread")
endif()
_orvane_install_pkgconfig(orvane)
if(ORVANE_BUILD_HOST)
    _orvane_install_pkgconfig(orvane-host)
endif()
