# Debian packages of an installation, by cpack -G DEB: liborvane0, liborvane-dev, orvane-tools and
# python3-orvane. What a package's binaries link, dpkg-shlibdeps finds; the rest is told here.
set(CPACK_PACKAGE_NAME orvane)
set(CPACK_PACKAGE_VENDOR Orvane)
set(CPACK_PACKAGE_CONTACT "The developers of Orvane <orvane@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_GENERATOR DEB)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)

set(CPACK_COMPONENTS_ALL dev)
if(BUILD_SHARED_LIBS)
    list(APPEND CPACK_COMPONENTS_ALL liborvane)
endif()
if(ORVANE_BUILD_APPS AND ORVANE_BUILD_HOST)
    list(APPEND CPACK_COMPONENTS_ALL tools)
endif()
if(TARGET orvane_python)
    list(APPEND CPACK_COMPONENTS_ALL python)
endif()

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})

# Where the soname changes, so does the name, so that both can be installed.
set(library liborvane${PROJECT_VERSION_MAJOR})
set(same_version "${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")
set(on_library)
if(BUILD_SHARED_LIBS)
    set(on_library "${library} (= ${same_version}), ")
endif()
set(fonts_and_driver "fonts-dejavu-core, libgl1-mesa-dri")

set(CPACK_DEBIAN_LIBORVANE_PACKAGE_NAME ${library})
set(CPACK_DEBIAN_LIBORVANE_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBORVANE_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_LIBORVANE_PACKAGE_GENERATE_SHLIBS_POLICY "=")
set(CPACK_DEBIAN_LIBORVANE_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_DEBIAN_LIBORVANE_PACKAGE_RECOMMENDS "fonts-dejavu-core")
set(CPACK_COMPONENT_LIBORVANE_DESCRIPTION "The engine as a shared library.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME liborvane-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_SHLIBDEPS OFF)
set(dev_depends libglm-dev)
if(ORVANE_BUILD_HOST)
    # The CMake files of libassimp-dev name zlib, which it does not depend on.
    list(APPEND dev_depends libassimp-dev zlib1g-dev libegl-dev libopengl-dev libpng-dev libjpeg62-turbo-dev libwebp-dev)
endif()
if(NOT BUILD_SHARED_LIBS)
    list(APPEND dev_depends libglew-dev libopengl-dev libpng-dev libjpeg62-turbo-dev libfontconfig-dev
        libfreetype-dev libraqm-dev libharfbuzz-dev)
endif()
list(REMOVE_DUPLICATES dev_depends)
list(JOIN dev_depends ", " dev_depends)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "${on_library}${dev_depends}")
set(CPACK_COMPONENT_DEV_DESCRIPTION "Headers of the engine and of the host kit, the kit as a static library, and
 files for CMake and pkg-config.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME orvane-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS ${fonts_and_driver})
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "orvane-render draws a model file into a picture, orvane-view shows it in a
 window.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-orvane)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS ${fonts_and_driver})
set(CPACK_COMPONENT_PYTHON_DESCRIPTION "Model files and scenes of NumPy arrays as pictures, from Python.")
if(TARGET orvane_python)
    math(EXPR next "${Python3_VERSION_MINOR} + 1")
    set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS
        "python3 (>= 3.${Python3_VERSION_MINOR}), python3 (<< 3.${next}), python3-numpy")
endif()
# The programs and the module take what they stand on from dpkg-shlibdeps, which knows nothing of a
# library that is not installed.
foreach(part TOOLS PYTHON)
    string(JOIN ", " CPACK_DEBIAN_${part}_PACKAGE_DEPENDS ${CPACK_DEBIAN_${part}_PACKAGE_DEPENDS})
    if(BUILD_SHARED_LIBS)
        string(PREPEND CPACK_DEBIAN_${part}_PACKAGE_DEPENDS "${on_library}")
        string(REGEX REPLACE ", $" "" CPACK_DEBIAN_${part}_PACKAGE_DEPENDS "${CPACK_DEBIAN_${part}_PACKAGE_DEPENDS}")
    endif()
endforeach()

include(CPack)
