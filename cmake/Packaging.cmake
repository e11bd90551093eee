# Installing the libraries: with their headers, the CMake package zuCIM and the pkg-config files. An
# installed tree may be moved.
include(CMakePackageConfigHelpers)

if(NOT ZUCIM_INSTALL)
  return()
endif()

# libzuCIM finds libzuBRQ beside itself, wherever both lie.
set_target_properties(zuCIM_shared PROPERTIES INSTALL_RPATH "$ORIGIN")

install(TARGETS zuBRQ_shared zuBRQ_static zuCIM_shared zuCIM_static EXPORT zuCIMTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ ${PROJECT_SOURCE_DIR}/BRQ/include/
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/zuCIM)
configure_package_config_file(cmake/zuCIMConfig.cmake.in zuCIMConfig.cmake
                              INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(zuCIMConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(EXPORT zuCIMTargets NAMESPACE zuCIM:: DESTINATION ${package_folder})
install(FILES ${PROJECT_BINARY_DIR}/zuCIMConfig.cmake
              ${PROJECT_BINARY_DIR}/zuCIMConfigVersion.cmake
        DESTINATION ${package_folder})

# The pkg-config files name the prefix relative to their own place.
set(pkgconfig_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH prefix_from_pkgconfig "/${pkgconfig_folder}" "/")
foreach(package zuBRQ zuCIM zuCIM-static)
  configure_file(cmake/${package}.pc.in ${package}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${package}.pc DESTINATION ${pkgconfig_folder})
endforeach()
