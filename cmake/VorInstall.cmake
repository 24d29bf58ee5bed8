# What a user of the library gets: headers in their folders, the shared library, a CMake package,
# a pkg-config file and binary packages (cpack -G DEB, cpack -G TGZ).

include(CMakePackageConfigHelpers)

set(vor_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/VorToolsInfrastructure)
set(vor_include_dir ${CMAKE_INSTALL_INCLUDEDIR}/VorToolsInfrastructure)

install(TARGETS VorToolsInfrastructure
  EXPORT VorToolsInfrastructureTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  FILE_SET HEADERS DESTINATION ${vor_include_dir}
  INCLUDES DESTINATION ${vor_include_dir})
install(EXPORT VorToolsInfrastructureTargets NAMESPACE Vor:: DESTINATION ${vor_package_dir})

configure_package_config_file(cmake/VorToolsInfrastructureConfig.cmake.in
  ${PROJECT_BINARY_DIR}/VorToolsInfrastructureConfig.cmake
  INSTALL_DESTINATION ${vor_package_dir})
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/VorToolsInfrastructureConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
# The .pc file finds the prefix from where it stands, so that an installed tree can be moved.
file(RELATIVE_PATH vor_pc_to_prefix
  /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/VorToolsInfrastructure.pc.in
  ${PROJECT_BINARY_DIR}/VorToolsInfrastructure.pc @ONLY)
install(FILES
  ${PROJECT_BINARY_DIR}/VorToolsInfrastructureConfig.cmake
  ${PROJECT_BINARY_DIR}/VorToolsInfrastructureConfigVersion.cmake
  DESTINATION ${vor_package_dir})
install(FILES ${PROJECT_BINARY_DIR}/VorToolsInfrastructure.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(TARGET campaign)
  install(TARGETS campaign RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

set(CPACK_PACKAGE_VENDOR "VorToolsInfrastructure")
set(CPACK_PACKAGE_CONTACT "VorToolsInfrastructure maintainers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_GENERATOR TGZ DEB)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
include(CPack)
