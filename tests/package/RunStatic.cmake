# Script: builds the libraries and programs statically, installs them, and has the consumer use them in both
# ways. See CMakeLists.txt.
function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
        string(REPLACE ";" " " command "${ARGN}")
        message(FATAL_ERROR "failed (${result}): ${command}")
    endif()
endfunction()

run(${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${SCRATCH}/library -G ${GENERATOR}
    -DCMAKE_CXX_COMPILER=${CXX}
    -DCMAKE_BUILD_TYPE=${BUILD_TYPE}
    -DBUILD_SHARED_LIBS=OFF
    -DORVANE_BUILD_TESTS=OFF
    -DORVANE_BUILD_EXAMPLES=OFF
    -DORVANE_BUILD_PYTHON=OFF
    -DORVANE_WARNINGS_AS_ERRORS=${WARNINGS_AS_ERRORS})
run(${CMAKE_COMMAND} --build ${SCRATCH}/library)
file(GLOB shared ${SCRATCH}/library/lib/*.so*)
if(shared)
    message(FATAL_ERROR "a static build made ${shared}")
endif()
foreach(way find_package pkg_config)
    run(${CMAKE_COMMAND}
        -DWAY=${way}
        -DSOURCE_DIR=${SOURCE_DIR}
        -DBUILD_DIR=${SCRATCH}/library
        -DSCRATCH=${SCRATCH}/${way}
        -DGENERATOR=${GENERATOR}
        -DCXX=${CXX}
        -DBUILD_TYPE=${BUILD_TYPE}
        -DSANITIZE=OFF
        -DWARNINGS_AS_ERRORS=${WARNINGS_AS_ERRORS}
        -P ${CMAKE_CURRENT_LIST_DIR}/RunConsumer.cmake)
endforeach()
