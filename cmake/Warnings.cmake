# How the project's own code is compiled.

include(CheckLinkerFlag)

# Code generation that every target of the project needs: hidden symbols, no contraction of a product and a sum into
# one rounding (results are fixed to the last bit), and what QUORVANE_SANITIZE, QUORVANE_FUZZ and
# QUORVANE_COVERAGE ask for.
function(quorvane_code_generation target)
    set_target_properties(${target} PROPERTIES
        CXX_EXTENSIONS OFF CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
    if(MSVC)
        target_compile_options(${target} PRIVATE /fp:precise /utf-8)
    else()
        target_compile_options(${target} PRIVATE -ffp-contract=off)
    endif()
    if(QUORVANE_SANITIZE)
        # Instrumented code confuses GCC's search for uninitialised variables inside the standard library.
        target_compile_options(${target} PUBLIC -fsanitize=${QUORVANE_SANITIZE} -fno-omit-frame-pointer
            -fno-sanitize-recover=all $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
        target_link_options(${target} PUBLIC -fsanitize=${QUORVANE_SANITIZE})
    endif()
    if(QUORVANE_FUZZ)
        # The counters that steer libFuzzer; only the fuzzers themselves link its main function.
        target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
    endif()
    if(QUORVANE_COVERAGE)
        target_compile_options(${target} PUBLIC --coverage)
        target_link_options(${target} PUBLIC --coverage)
    endif()
endfunction()

function(quorvane_warnings target)
    if(MSVC)
        # Exported classes hold members of the standard library and of OpenCV; a host is built with the same ones.
        target_compile_options(${target} PRIVATE /W4 /wd4251 /wd4275)
    else()
        target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow ${ARGN})
    endif()
    if(QUORVANE_WARNINGS_AS_ERRORS)
        if(MSVC)
            target_compile_options(${target} PRIVATE /WX)
        else()
            target_compile_options(${target} PRIVATE -Werror)
        endif()
    endif()
endfunction()

# The library's own sources: also every narrowing conversion is to be written down.
function(quorvane_compile_options target)
    quorvane_code_generation(${target})
    if(MSVC)
        quorvane_warnings(${target})
    else()
        quorvane_warnings(${target} -Wconversion)
    endif()
endfunction()

# Inline code of the standard library and of OpenCV that the compiler leaves in our objects is not ours to export.
function(quorvane_hide_foreign_symbols target)
    set(map "${PROJECT_SOURCE_DIR}/cmake/exports.map")
    check_linker_flag(CXX "-Wl,--version-script=${map}" QUORVANE_LINKER_KNOWS_VERSION_SCRIPTS)
    if(QUORVANE_LINKER_KNOWS_VERSION_SCRIPTS)
        target_link_options(${target} PRIVATE "-Wl,--version-script=${map}")
        set_target_properties(${target} PROPERTIES LINK_DEPENDS "${map}")
    endif()
endfunction()
