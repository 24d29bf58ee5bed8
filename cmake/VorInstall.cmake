# The installed files: headers in their directories, the library, a CMake package, a
# pkg-config file, the tool and binary packages (cpack -G DEB, cpack -G TGZ).

include(CMakePackageConfigHelpers)

set(vor_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/VorToolsInfrastructure)
# Made relative if the user chose an absolute one, because file sets export that wrongly.
set(vor_headers ${CMAKE_INSTALL_INCLUDEDIR})
if(IS_ABSOLUTE "${vor_headers}")
  cmake_path(RELATIVE_PATH vor_headers BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX})
endif()
set(vor_include_dir ${vor_headers}/VorToolsInfrastructure)

install(TARGETS VorToolsInfrastructure
  EXPORT VorToolsInfrastructureTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  FILE_SET HEADERS DESTINATION ${vor_include_dir}
  INCLUDES DESTINATION ${vor_include_dir} ${vor_headers})
install(EXPORT VorToolsInfrastructureTargets NAMESPACE Vor:: DESTINATION ${vor_package_dir})

configure_package_config_file(cmake/VorToolsInfrastructureConfig.cmake.in
  ${PROJECT_BINARY_DIR}/VorToolsInfrastructureConfig.cmake
  INSTALL_DESTINATION ${vor_package_dir})
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/VorToolsInfrastructureConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
# The .pc file computes the prefix from its own place, so that an installed tree can be moved.  That
# is not possible if the library directory is absolute.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(vor_pc_prefix ${CMAKE_INSTALL_PREFIX})
else()
  file(RELATIVE_PATH vor_pc_to_prefix /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
  set(vor_pc_prefix "\${pcfiledir}/${vor_pc_to_prefix}")
endif()
cmake_path(APPEND vor_pc_libdir "\${prefix}" "${CMAKE_INSTALL_LIBDIR}")
cmake_path(APPEND vor_pc_includedir "\${prefix}" "${CMAKE_INSTALL_INCLUDEDIR}")
configure_file(cmake/VorToolsInfrastructure.pc.in
  ${PROJECT_BINARY_DIR}/VorToolsInfrastructure.pc @ONLY)
install(FILES
  ${PROJECT_BINARY_DIR}/VorToolsInfrastructureConfig.cmake
  ${PROJECT_BINARY_DIR}/VorToolsInfrastructureConfigVersion.cmake
  DESTINATION ${vor_package_dir})
install(FILES ${PROJECT_BINARY_DIR}/VorToolsInfrastructure.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(TARGET campaign)
  # The tool finds the library relative to itself, wherever the tree is moved.
  if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}" OR IS_ABSOLUTE "${CMAKE_INSTALL_BINDIR}")
    set_target_properties(campaign PROPERTIES INSTALL_RPATH ${CMAKE_INSTALL_FULL_LIBDIR})
  else()
    file(RELATIVE_PATH vor_bin_to_lib
      /prefix/${CMAKE_INSTALL_BINDIR} /prefix/${CMAKE_INSTALL_LIBDIR})
    set_target_properties(campaign PROPERTIES INSTALL_RPATH "$ORIGIN/${vor_bin_to_lib}")
  endif()
  install(TARGETS campaign RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

set(CPACK_PACKAGE_VENDOR "VorToolsInfrastructure")
set(CPACK_PACKAGE_CONTACT "VorToolsInfrastructure maintainers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_GENERATOR TGZ DEB)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
include(CPack)
