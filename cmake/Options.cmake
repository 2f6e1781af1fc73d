# The switches of the build.

if(PROJECT_IS_TOP_LEVEL)
    set(quorvane_top_level ON)
else()
    set(quorvane_top_level OFF)
endif()

option(QUORVANE_BUILD_TESTS "Build the tests" ${quorvane_top_level})
option(QUORVANE_BUILD_BENCHMARKS "Build the benchmarks" ${quorvane_top_level})
option(QUORVANE_BUILD_EXAMPLES "Build the example host programs" ${quorvane_top_level})
option(QUORVANE_WARNINGS_AS_ERRORS "Treat every compiler warning as an error" OFF)
set(QUORVANE_SANITIZE "" CACHE STRING "Sanitizers to build with, for example 'address,undefined' or 'thread'")
option(QUORVANE_COVERAGE "Build with coverage counters" OFF)
option(QUORVANE_FUZZ "Build the fuzzers with libFuzzer; needs Clang" OFF)

if(PROJECT_IS_TOP_LEVEL)
    if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
        set(CMAKE_BUILD_TYPE Release CACHE STRING "Kind of build" FORCE)
    endif()
    set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
endif()
