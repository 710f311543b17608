# The user's project again, with the library from each kind of package.
if(CMAKE_CROSSCOMPILING OR WIN32)
  return() # what the packages hold is the same, and the tools that make them are not there
endif()
foreach(road tar deb vcpkg conan)
  if(road STREQUAL "deb" AND NOT KX_DPKG_SHLIBDEPS)
    continue()
  endif()
  add_test(NAME consumer.${road} COMMAND ${CMAKE_COMMAND} -DROAD=${road} -DBUILD=${PROJECT_BINARY_DIR}
    -DSOURCE=${PROJECT_SOURCE_DIR} -DCOMPILER=${CMAKE_CXX_COMPILER} -DFLAGS=${CMAKE_CXX_FLAGS}
    -P ${CMAKE_CURRENT_SOURCE_DIR}/consumer/consume.cmake)
  if(road MATCHES "^(tar|deb)$") # both build the static libraries in the same folder
    set_tests_properties(consumer.${road} PROPERTIES RESOURCE_LOCK static_libraries TIMEOUT 900)
  endif()
endforeach()
