# Configures, builds and runs the consumer as its author would. An archive has both kinds of library, so the consumer is
# built with each of them, by CMake and by pkg-config.
#
#   cmake -DROAD=package|subdirectory|pkgconfig|wrong_version|wrong_component|lld|static|tar|deb|vcpkg|conan
#     -DBUILD=<build tree of the library> -DSOURCE=<its source> -DCOMPILER=<compiler> -DFLAGS=<compiler flags>
#     -DTOOLCHAIN=<toolchain file, if any> -DEMULATOR=<what runs a program, if anything> -P consume.cmake
cmake_minimum_required(VERSION 3.20)
set(work ${BUILD}/consumer/${ROAD})
file(REMOVE_RECURSE ${work})
set(prefix ${work}/installed)

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# Makes the package of that kind and unpacks it below the prefix.
function(unpack)
  if(ROAD STREQUAL "tar")
    run(${CMAKE_CPACK_COMMAND} -G TGZ --config ${BUILD}/CPackConfig.cmake -B ${work}/packed)
    file(GLOB archive ${work}/packed/*.tar.gz)
    file(ARCHIVE_EXTRACT INPUT ${archive} DESTINATION ${prefix})
  elseif(ROAD STREQUAL "deb")
    run(${CMAKE_CPACK_COMMAND} -G DEB --config ${BUILD}/CPackConfig.cmake -B ${work}/packed)
    file(GLOB archive ${work}/packed/*.deb)
    run(dpkg-deb --extract ${archive} ${prefix})
    run(dpkg-deb --field ${archive} Version Depends)
  elseif(ROAD STREQUAL "vcpkg")
    run(${CMAKE_COMMAND} -DSOURCE=${SOURCE} -DBUILD=${BUILD} -DWORK=${work} -P ${CMAKE_CURRENT_LIST_DIR}/vcpkg.cmake)
  elseif(ROAD STREQUAL "conan")
    run(python3 ${CMAKE_CURRENT_LIST_DIR}/conan.py ${SOURCE} ${BUILD} ${work})
  else()
    run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})
  endif()
endfunction()

# Builds with what pkg-config says of that package.
function(consume_by_pkgconfig package)
  file(GLOB_RECURSE file ${prefix}/${package}.pc)
  get_filename_component(folder ${file} DIRECTORY)
  set(ENV{PKG_CONFIG_PATH} ${folder})
  execute_process(COMMAND pkg-config --cflags --libs ${package} OUTPUT_VARIABLE options COMMAND_ERROR_IS_FATAL ANY)
  # The package must not replace the standard that its user has chosen.
  separate_arguments(options UNIX_COMMAND "${FLAGS} -std=c++2b -DCONSUMER_STANDARD=202002L ${options}")
  if("${options}" MATCHES "runtime.json")
    list(APPEND options -DCONSUMER_READS_JSON)
  endif()
  set(build ${work}/${package})
  file(MAKE_DIRECTORY ${build})
  set(corner ${CMAKE_CURRENT_LIST_DIR}/corner.cpp)
  if(NOT package MATCHES "static") # else the program must be one module
    list(APPEND options -Wl,-rpath,${folder}/.. -Wl,-rpath,${build})
    run(${COMPILER} -shared -fPIC ${corner} -o ${build}/libcorner.so ${options})
    set(corner ${build}/libcorner.so)
  endif()
  run(${COMPILER} ${CMAKE_CURRENT_LIST_DIR}/main.cpp ${corner} -o ${build}/consumer ${options})
  run(${build}/consumer)
endfunction()

# A toolchain file chooses the compiler itself.
set(common -G Ninja -DCMAKE_CXX_COMPILER=${COMPILER})
if(TOOLCHAIN)
  set(common -G Ninja -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN})
endif()
function(consume_by_cmake build)
  run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${work}/${build} ${common} -DCMAKE_BUILD_TYPE=Release
    -DCMAKE_CXX_FLAGS=${FLAGS} ${ARGN})
  run(${CMAKE_COMMAND} --build ${work}/${build})
  file(GLOB program ${work}/${build}/consumer ${work}/${build}/consumer.exe)
  run(${EMULATOR} ${program})
endfunction()

if(ROAD STREQUAL "subdirectory")
  # Without a build type, because this compiles the whole library again, and optimising it would only take longer.
  consume_by_cmake(build -DKXCORE_SOURCE=${SOURCE} -DCMAKE_BUILD_TYPE=)
  return()
elseif(ROAD STREQUAL "static")
  # The library alone, as static libraries, and not optimised for the same reason.
  run(${CMAKE_COMMAND} -S ${SOURCE} -B ${work}/library ${common} -DCMAKE_BUILD_TYPE= -DCMAKE_CXX_FLAGS=${FLAGS}
    -DBUILD_SHARED_LIBS=OFF -DKXCORE_TESTS=OFF -DKXCORE_EXAMPLES=OFF -DKXCORE_JSON=OFF)
  run(${CMAKE_COMMAND} --build ${work}/library)
  run(${CMAKE_COMMAND} --install ${work}/library --prefix ${prefix})
  consume_by_cmake(build -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_FIND_ROOT_PATH=${prefix})
  return()
endif()

unpack()
# An archive has a folder around what it installs.
file(GLOB_RECURSE file ${prefix}/*kxcoreConfig.cmake)
get_filename_component(prefix ${file}/../../../.. ABSOLUTE)
set(package -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_FIND_ROOT_PATH=${prefix} -DKXCORE_INSTALLED=${prefix})
file(GLOB kinds RELATIVE ${prefix}/lib/pkgconfig ${prefix}/lib/pkgconfig/kxcore*.pc)
list(TRANSFORM kinds REPLACE "\\.pc$" "")
if(ROAD STREQUAL "pkgconfig")
  consume_by_pkgconfig(${kinds})
elseif(ROAD STREQUAL "wrong_version")
  consume_by_cmake(build ${package} -DKXCORE_VERSION=2.0)
elseif(ROAD STREQUAL "wrong_component")
  consume_by_cmake(build ${package} -DKXCORE_KIND=engine)
elseif(ROAD STREQUAL "lld")
  # Drops what no code refers to: what the modules announce of their types must stay.
  set(drop "-fuse-ld=lld -Wl,--gc-sections")
  consume_by_cmake(build ${package} "-DCMAKE_CXX_FLAGS=${FLAGS} -ffunction-sections -fdata-sections"
    -DCMAKE_EXE_LINKER_FLAGS=${drop} -DCMAKE_SHARED_LINKER_FLAGS=${drop})
else()
  consume_by_cmake(build ${package})
  if(ROAD MATCHES "^(tar|deb)$" AND "kxcore" IN_LIST kinds)
    consume_by_pkgconfig(kxcore)
    consume_by_pkgconfig(kxcore-static)
    consume_by_cmake(build_static ${package} -DKXCORE_KIND=static)
  endif()
endif()
