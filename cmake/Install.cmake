# What `cmake --install` lays out for host applications: headers, library, CMake package, pkg-config file, pages. The
# simulator and the tool install themselves. The components are runtime, development, tools, simulator, documentation.
include(CMakePackageConfigHelpers)

install(
  TARGETS MVX2Interfaces
  EXPORT MVX2InterfacesTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
          COMPONENT runtime
          NAMELINK_COMPONENT development)
install(DIRECTORY include/mvx2 DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT development)

set(mvx2_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/MVX2Interfaces")
install(
  EXPORT MVX2InterfacesTargets
  NAMESPACE MVX2Interfaces::
  DESTINATION "${mvx2_package_dir}"
  COMPONENT development)
configure_package_config_file(cmake/MVX2InterfacesConfig.cmake.in MVX2InterfacesConfig.cmake
                              INSTALL_DESTINATION "${mvx2_package_dir}")
write_basic_package_version_file(MVX2InterfacesConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(
  FILES "${PROJECT_BINARY_DIR}/MVX2InterfacesConfig.cmake" "${PROJECT_BINARY_DIR}/MVX2InterfacesConfigVersion.cmake"
  DESTINATION "${mvx2_package_dir}"
  COMPONENT development)

# From the file's own place, so that an installed tree can be moved.
file(RELATIVE_PATH MVX2_PC_PREFIX "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
configure_file(cmake/libMVX2Interfaces.pc.in libMVX2Interfaces.pc @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/libMVX2Interfaces.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
        COMPONENT development)

file(GLOB pages CONFIGURE_DEPENDS docs/*.md)
install(FILES README.md CHANGELOG.md ${pages} DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT documentation)
