# Installation: the shared library, the exported headers, the CMake package and the pkg-config file.

include(CMakePackageConfigHelpers)

install(TARGETS QuorvaneVision EXPORT QuorvaneVisionTargets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)

# Each folder lists its exported headers in the global property QUORVANE_PUBLIC_HEADERS, relative to the root.
get_property(public_headers GLOBAL PROPERTY QUORVANE_PUBLIC_HEADERS)
foreach(header IN LISTS public_headers)
    cmake_path(GET header PARENT_PATH folder)
    install(FILES "${PROJECT_SOURCE_DIR}/${header}" COMPONENT development
        DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/QuorvaneVision/${folder}")
endforeach()
install(FILES QuorvaneVision.h QuorvaneExport.h COMPONENT development
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/QuorvaneVision)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/QuorvaneVision)
install(EXPORT QuorvaneVisionTargets NAMESPACE QuorvaneVision:: DESTINATION ${package_folder} COMPONENT development)
configure_package_config_file(cmake/QuorvaneVisionConfig.cmake.in QuorvaneVisionConfig.cmake
    INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(QuorvaneVisionConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/QuorvaneVisionConfig.cmake" "${PROJECT_BINARY_DIR}/QuorvaneVisionConfigVersion.cmake"
    DESTINATION ${package_folder} COMPONENT development)

# Where pkg-config is to look for OpenCV when that is not among the system's own packages is the host's affair;
# the file names the library, the headers and the package it stands on.
file(RELATIVE_PATH quorvane_pc_to_prefix "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" quorvane_pc_to_prefix "${quorvane_pc_to_prefix}")
configure_file(cmake/quorvanevision.pc.in quorvanevision.pc @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/quorvanevision.pc" DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
