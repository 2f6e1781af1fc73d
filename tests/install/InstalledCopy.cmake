# Installs the library into a scratch prefix and builds a stranger's program against the installed copy.
# STEP is install, cmake, pkg-config or headers.
cmake_minimum_required(VERSION 3.22)

set(prefix "${SCRATCH}/prefix")

function(run)
    execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

function(run_host program)
    execute_process(COMMAND ${program} OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
    message(STATUS "the host says: ${output}")
    if(NOT output MATCHES "status 0, dots 8 x 8\n")
        message(FATAL_ERROR "the host did not get its dots")
    endif()
endfunction()

if(STEP STREQUAL "install")
    file(REMOVE_RECURSE "${SCRATCH}")
    run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})
elseif(STEP STREQUAL "cmake")
    run(${CMAKE_COMMAND} -G ${GENERATOR} -S ${HOST} -B ${SCRATCH}/with-cmake -D CMAKE_BUILD_TYPE=Release
        -D CMAKE_CXX_COMPILER=${CXX} -D CMAKE_PREFIX_PATH=${prefix})
    run(${CMAKE_COMMAND} --build ${SCRATCH}/with-cmake)
    run_host(${SCRATCH}/with-cmake/host)
elseif(STEP STREQUAL "pkg-config")
    # OpenCV's own pkg-config file lies beside its libraries where it was not installed with the system.
    cmake_path(SET opencv_pc NORMALIZE "${OPENCV_DIR}/../../pkgconfig")
    set(ENV{PKG_CONFIG_PATH} "${prefix}/${LIBDIR}/pkgconfig:${opencv_pc}:$ENV{PKG_CONFIG_PATH}")
    find_program(PKG_CONFIG pkg-config REQUIRED)
    execute_process(COMMAND ${PKG_CONFIG} --cflags --libs quorvanevision OUTPUT_VARIABLE flags
        OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    separate_arguments(flags UNIX_COMMAND "${flags}")
    # OpenCV's libraries are found at run time through the installed library, which remembers where they are.
    execute_process(COMMAND ${PKG_CONFIG} --variable=libdir opencv4 OUTPUT_VARIABLE opencv_libraries
        OUTPUT_STRIP_TRAILING_WHITESPACE)
    file(MAKE_DIRECTORY ${SCRATCH}/with-pkg-config)
    run(${CXX} -std=c++17 ${HOST}/host.cpp -o ${SCRATCH}/with-pkg-config/host ${flags}
        -Wl,-rpath,${prefix}/${LIBDIR} -Wl,-rpath,${opencv_libraries})
    run_host(${SCRATCH}/with-pkg-config/host)
elseif(STEP STREQUAL "headers")
    set(root "${prefix}/${INCLUDEDIR}/QuorvaneVision")
    file(GLOB_RECURSE headers RELATIVE ${root} "${root}/*")
    foreach(internal algorithms/ Includes/ EdgeCaliper tests/)
        if("${headers}" MATCHES "${internal}")
            message(FATAL_ERROR "${internal} is internal but was installed: ${headers}")
        endif()
    endforeach()
    # Whatever an installed header includes is installed, too (that each stands alone is tested in portability/).
    list(TRANSFORM headers REPLACE "(.+)" "#include \"\\1\"\n" OUTPUT_VARIABLE includes)
    list(JOIN includes "" includes)
    file(WRITE ${SCRATCH}/all.cpp "${includes}")
    run(${CXX} -std=c++17 -fsyntax-only -Wall -Wextra -Wpedantic -Werror -I${root} -isystem ${OPENCV_INCLUDE} ${SCRATCH}/all.cpp)
    list(LENGTH headers count)
    message(STATUS "${count} headers installed: ${headers}")
endif()
