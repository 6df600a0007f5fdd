# Script: builds and runs the consumer in one of three ways, against an installation that was moved, and runs
# what else the installation holds. See CMakeLists.txt.
function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
        string(REPLACE ";" " " command "${ARGN}")
        message(FATAL_ERROR "failed (${result}): ${command}")
    endif()
endfunction()

file(REMOVE_RECURSE ${SCRATCH})
set(prefix ${SCRATCH}/moved/prefix)
set(consumer ${CMAKE_CURRENT_LIST_DIR}/consumer)
set(flags)
if(SANITIZE)
    set(flags "-fsanitize=address,undefined")
endif()

if(NOT WAY STREQUAL "add_subdirectory")
    run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${SCRATCH}/prefix)
    file(MAKE_DIRECTORY ${SCRATCH}/moved)
    file(RENAME ${SCRATCH}/prefix ${prefix})
    foreach(program orvane-render orvane-view)
        if(EXISTS ${prefix}/bin/${program})
            run(${CMAKE_COMMAND} -E env --unset=LD_LIBRARY_PATH ${prefix}/bin/${program} --version)
        endif()
    endforeach()
    file(GLOB module ${prefix}/lib*/python3*/*-packages/orvane/__init__.py)
    if(module)
        cmake_path(GET module PARENT_PATH package)
        cmake_path(GET package PARENT_PATH packages)
        run(${CMAKE_COMMAND} -E env --unset=LD_LIBRARY_PATH PYTHONPATH=${packages} PYTHONDONTWRITEBYTECODE=1
            ${PYTHON} -c "import orvane; assert orvane.__file__.startswith('${prefix}'); orvane.Model()")
    elseif(PYTHON)
        message(FATAL_ERROR "the package for Python is not in the installation")
    endif()
    file(GLOB pc ${prefix}/lib*/pkgconfig/orvane.pc ${prefix}/lib*/*/pkgconfig/orvane.pc)
    cmake_path(GET pc PARENT_PATH pkgconfig_dir)
    # A system's include folder is shared: nothing may be laid into it beside the two of the project.
    file(GLOB included RELATIVE ${prefix}/include ${prefix}/include/*)
    if(NOT "${included}" STREQUAL "orvane;orvane_host")
        message(FATAL_ERROR "the include folder holds ${included}")
    endif()
    set(ENV{PKG_CONFIG_PATH} ${pkgconfig_dir})
endif()
run(${CMAKE_COMMAND} -S ${consumer} -B ${SCRATCH}/build -G ${GENERATOR}
    -DCMAKE_CXX_COMPILER=${CXX}
    -DCMAKE_BUILD_TYPE=${BUILD_TYPE}
    "-DCMAKE_CXX_FLAGS=${flags}"
    -DCMAKE_PREFIX_PATH=${prefix}
    -DORVANE_SANITIZE=${SANITIZE}
    -DORVANE_WARNINGS_AS_ERRORS=${WARNINGS_AS_ERRORS}
    -DCONSUMER_WAY=${WAY}
    -DORVANE_SOURCE_DIR=${SOURCE_DIR})
run(${CMAKE_COMMAND} --build ${SCRATCH}/build)
run(${SCRATCH}/build/consumer)
