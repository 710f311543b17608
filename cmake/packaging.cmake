# The version in core/version.h, and archives: cpack --config build/release/CPackConfig.cmake writes a tar archive and a
# Debian package of what is installed, with the static libraries beside the shared ones.
file(STRINGS ${PROJECT_SOURCE_DIR}/core/version.h lines REGEX "^#define KXCORE_VERSION_")
string(REGEX MATCHALL "(MAJOR|MINOR|PATCH|STRING) [^;]+" lines "${lines}")
set(expected "MAJOR ${PROJECT_VERSION_MAJOR};MINOR ${PROJECT_VERSION_MINOR};PATCH ${PROJECT_VERSION_PATCH}")
if(NOT lines STREQUAL "${expected};STRING \"${PROJECT_VERSION}\"")
  message(FATAL_ERROR "core/version.h does not have the version of CMakeLists.txt, ${PROJECT_VERSION}: ${lines}")
endif()

if(NOT CMAKE_SOURCE_DIR STREQUAL PROJECT_SOURCE_DIR)
  return() # the project around this one packs its own files
endif()
set(CPACK_GENERATOR TGZ)
set(CPACK_PACKAGE_VENDOR "the kxcore developers")
set(CPACK_PACKAGE_CONTACT "the kxcore developers <kxcore@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGE_FILE_NAME kxcore-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR})
find_program(KX_DPKG_SHLIBDEPS dpkg-shlibdeps)
if(KX_DPKG_SHLIBDEPS)
  list(APPEND CPACK_GENERATOR DEB)
  set(CPACK_DEBIAN_PACKAGE_NAME libkxcore-dev)
  set(CPACK_DEBIAN_PACKAGE_SECTION libdevel)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
  # The modules find each other here while the dependencies are searched.
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/core)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_SUGGESTS libsimdjson-dev) # to link with the static module for JSON
endif()

# cpack first builds the static libraries, in a tree of their own that has the options of this one.
if(KXCORE_INSTALL AND (BUILD_SHARED_LIBS OR NOT DEFINED BUILD_SHARED_LIBS))
  set(tree ${PROJECT_BINARY_DIR}/static)
  set(options "-DBUILD_SHARED_LIBS=OFF -DKXCORE_TESTS=OFF -DKXCORE_EXAMPLES=OFF")
  foreach(name CMAKE_TOOLCHAIN_FILE CMAKE_CXX_COMPILER CMAKE_CXX_FLAGS CMAKE_BUILD_TYPE CMAKE_INSTALL_LIBDIR
      CMAKE_PREFIX_PATH CMAKE_OSX_ARCHITECTURES KXCORE_JSON)
    if(NOT "${${name}}" STREQUAL "")
      string(APPEND options " [==[-D${name}=${${name}}]==]")
    endif()
  endforeach()
  file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/static_libraries.cmake CONTENT [=[
execute_process(COMMAND "@CMAKE_COMMAND@" -S "@PROJECT_SOURCE_DIR@" -B "@tree@" -G "@CMAKE_GENERATOR@" @options@
  COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND "@CMAKE_COMMAND@" --build "@tree@" --config Release COMMAND_ERROR_IS_FATAL ANY)
]=] @ONLY)
  set(CPACK_INSTALL_SCRIPTS ${PROJECT_BINARY_DIR}/static_libraries.cmake)
  set(CPACK_INSTALL_CMAKE_PROJECTS "${PROJECT_BINARY_DIR};kxcore;ALL;/;${tree};kxcore;ALL;/")
endif()
include(CPack)
