# What only the tests need: Google Test, and a JSON library that has nothing but headers.

# Google Test as the system has it. A build for another system or standard library needs one of its own, from the sources
# that KXCORE_GTEST_SOURCE names.
set(KXCORE_GTEST_SOURCE "" CACHE PATH "The sources of Google Test, to be built with the project")
if(KXCORE_GTEST_SOURCE)
  set(warnings_are_errors ${CMAKE_COMPILE_WARNING_AS_ERROR})
  set(shared ${BUILD_SHARED_LIBS})
  set(CMAKE_COMPILE_WARNING_AS_ERROR OFF)
  set(BUILD_SHARED_LIBS OFF)
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  add_subdirectory(${KXCORE_GTEST_SOURCE} ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
  set(CMAKE_COMPILE_WARNING_AS_ERROR ${warnings_are_errors})
  set(BUILD_SHARED_LIBS ${shared})
else()
  find_package(GTest REQUIRED)
endif()

# A cross compiler must not see the other headers beside it, so it gets a folder that has this library alone.
find_path(KX_NLOHMANN_JSON nlohmann/json.hpp REQUIRED PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH)
set(KX_JSON_MODEL ${PROJECT_BINARY_DIR}/headers)
file(MAKE_DIRECTORY ${KX_JSON_MODEL})
file(CREATE_LINK ${KX_NLOHMANN_JSON}/nlohmann ${KX_JSON_MODEL}/nlohmann SYMBOLIC)
