# What an installation holds: the libraries, their headers with the folders kept, a CMake
# package and a pkg-config file for each library.
include(CMakePackageConfigHelpers)

set(ORVANE_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Orvane)

function(_orvane_install_headers)
    foreach(header IN LISTS ARGN)
        cmake_path(RELATIVE_PATH header BASE_DIRECTORY ${PROJECT_SOURCE_DIR} OUTPUT_VARIABLE relative)
        cmake_path(GET relative PARENT_PATH folder)
        install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${folder})
    endforeach()
endfunction()

get_property(headers GLOBAL PROPERTY ORVANE_HEADERS)
_orvane_install_headers(${headers})
install(TARGETS orvane EXPORT OrvaneTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})

if(ORVANE_BUILD_HOST)
    get_property(headers GLOBAL PROPERTY ORVANE_HOST_HEADERS)
    _orvane_install_headers(${headers})
    install(TARGETS orvane_host EXPORT OrvaneTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
endif()
foreach(program orvane-render orvane-view)
    if(TARGET ${program})
        install(TARGETS ${program} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    endif()
endforeach()

install(EXPORT OrvaneTargets NAMESPACE Orvane:: DESTINATION ${ORVANE_CMAKE_DIR})
configure_package_config_file(
    ${PROJECT_SOURCE_DIR}/cmake/OrvaneConfig.cmake.in
    ${PROJECT_BINARY_DIR}/OrvaneConfig.cmake
    INSTALL_DESTINATION ${ORVANE_CMAKE_DIR})
write_basic_package_version_file(
    ${PROJECT_BINARY_DIR}/OrvaneConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/OrvaneConfig.cmake
    ${PROJECT_BINARY_DIR}/OrvaneConfigVersion.cmake
    DESTINATION ${ORVANE_CMAKE_DIR})

# The prefix is told relative to the file, so that an installation may be moved.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
    BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig OUTPUT_VARIABLE ORVANE_PC_TO_PREFIX)
function(_orvane_install_pkgconfig name)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()

_orvane_install_pkgconfig(orvane)
if(ORVANE_BUILD_HOST)
    _orvane_install_pkgconfig(orvane-host)
endif()
