# Packages for Debian's family (`cpack`: a runtime and a development package) and a source archive
# (`cpack --config CPackSourceConfig.cmake`). scripts/package.sh makes all of them; docs/packages.md tells what is in them.

set(CPACK_PACKAGE_NAME quorvanevision)
set(CPACK_PACKAGE_VENDOR QuorvaneVision)
set(CPACK_PACKAGE_CONTACT "QuorvaneVision maintainers <maintainers@quorvanevision.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_STRIP_FILES ON)
set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_VERBATIM_VARIABLES ON)

# --- Where the packages' OpenCV comes from --------------------------------------------------------------------------
# Either the distribution's packages, which ours then depend on; or, where OpenCV was built privately, a copy inside
# our packages: no package of that distribution has it, and no other place exists on the machine they go to.

get_target_property(quorvane_opencv_core opencv_core IMPORTED_LOCATION_RELEASE)
if(NOT quorvane_opencv_core)
    get_target_property(quorvane_opencv_core opencv_core LOCATION)
endif()
cmake_path(GET quorvane_opencv_core PARENT_PATH quorvane_opencv_libraries)
execute_process(COMMAND dpkg-query --search "${quorvane_opencv_core}"
    RESULT_VARIABLE quorvane_opencv_unowned OUTPUT_QUIET ERROR_QUIET)
if(quorvane_opencv_unowned EQUAL 0)
    set(quorvane_bundle_opencv OFF)
    set(quorvane_opencv_development ", libopencv-dev (>= 4.9)")
else()
    set(quorvane_bundle_opencv ON)
    set(quorvane_opencv_development "")
endif()

# --- The two Debian packages ----------------------------------------------------------------------------------------

set(quorvane_runtime_package libquorvanevision${PROJECT_VERSION_MAJOR})
set(quorvane_development_package libquorvanevision-dev)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# Packages of hosts that are built against the library find out from this file which package to depend on. (CPack could
# make it, but would name OpenCV's libraries, too, which are for nobody else.)
set(quorvane_control_files "${PROJECT_BINARY_DIR}/packaging")
file(WRITE "${quorvane_control_files}/shlibs"
    "libQuorvaneVision ${PROJECT_VERSION_MAJOR} ${quorvane_runtime_package} (>= ${PROJECT_VERSION})\n")

set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
    "The shared library that host programs load: laser dots, mark points, filling,\n camera calibration and sub-pixel measurement.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${quorvane_runtime_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${quorvane_control_files}/shlibs")

set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "Headers, CMake package and pkg-config file, to build host programs with.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${quorvane_development_package})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "${quorvane_runtime_package} (= ${PROJECT_VERSION})${quorvane_opencv_development}")

# What only a package needs is added to the staged files: documents, and OpenCV where it goes along.
configure_file(cmake/StagePackages.cmake.in "${quorvane_control_files}/StagePackages.cmake" @ONLY)
set(CPACK_PRE_BUILD_SCRIPTS "${quorvane_control_files}/StagePackages.cmake")

# --- The source archive ---------------------------------------------------------------------------------------------

set(CPACK_SOURCE_GENERATOR TXZ)
set(CPACK_SOURCE_PACKAGE_FILE_NAME "quorvanevision-${PROJECT_VERSION}")
set(CPACK_SOURCE_IGNORE_FILES
    "/\\.git/" "/\\.git$" "^${PROJECT_SOURCE_DIR}/build/" "^${PROJECT_SOURCE_DIR}/build-" "/\\.cache/"
    "/\\.vscode/" "/\\.idea/" "\\.swp$" "/compile_commands\\.json$")

include(CPack)
