# What cmake --install puts in place beside the two libraries: the headers, as a tree of their own so that includes read
# the same as in here, the package files for find_package(kxcore), and one for pkg-config.
include(CMakePackageConfigHelpers)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/core ${PROJECT_SOURCE_DIR}/runtime
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kxcore
  FILES_MATCHING PATTERN "*.h")
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})

set(package ${CMAKE_INSTALL_LIBDIR}/cmake/kxcore)
install(EXPORT kxcore FILE kxcoreConfig.cmake NAMESPACE kx:: DESTINATION ${package})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/kxcoreConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/kxcoreConfigVersion.cmake DESTINATION ${package})

# Paths relative to the file itself, so that the installed tree can be moved.
file(RELATIVE_PATH KX_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(${CMAKE_CURRENT_LIST_DIR}/kxcore.pc.in ${PROJECT_BINARY_DIR}/kxcore.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kxcore.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
