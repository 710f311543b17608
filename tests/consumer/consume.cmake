# Configures, builds and runs the consumer as its author would.
#
#   cmake -DROAD=package|subdirectory|pkgconfig|wrong_version|lld|static|tar|deb|vcpkg|conan
#     -DBUILD=<build tree of the library> -DSOURCE=<its source> -DCOMPILER=<compiler> -DFLAGS=<compiler flags>
#     -DTOOLCHAIN=<toolchain file, if any> -DEMULATOR=<what runs a program, if anything> -P consume.cmake
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

# A toolchain file chooses the compiler itself.
set(common -G Ninja -DCMAKE_CXX_COMPILER=${COMPILER})
if(TOOLCHAIN)
  set(common -G Ninja -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN})
endif()
set(configure ${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${work}/build ${common} -DCMAKE_BUILD_TYPE=Release
  -DCMAKE_CXX_FLAGS=${FLAGS})
if(ROAD STREQUAL "subdirectory")
  # Without a build type, because this compiles the whole library again, and optimising it would only take longer.
  run(${configure} -DKXCORE_SOURCE=${SOURCE} -DCMAKE_BUILD_TYPE=)
elseif(ROAD STREQUAL "static")
  # The library alone, as static libraries, and not optimised for the same reason.
  run(${CMAKE_COMMAND} -S ${SOURCE} -B ${work}/library ${common} -DCMAKE_BUILD_TYPE= -DCMAKE_CXX_FLAGS=${FLAGS}
    -DBUILD_SHARED_LIBS=OFF -DKXCORE_TESTS=OFF -DKXCORE_EXAMPLES=OFF -DKXCORE_JSON=OFF)
  run(${CMAKE_COMMAND} --build ${work}/library)
  run(${CMAKE_COMMAND} --install ${work}/library --prefix ${prefix})
  run(${configure} -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_FIND_ROOT_PATH=${prefix})
else()
  unpack()
  if(ROAD STREQUAL "pkgconfig")
    file(GLOB_RECURSE file ${prefix}/kxcore.pc)
    get_filename_component(folder ${file} DIRECTORY)
    set(ENV{PKG_CONFIG_PATH} ${folder})
    execute_process(COMMAND pkg-config --cflags --libs kxcore OUTPUT_VARIABLE options COMMAND_ERROR_IS_FATAL ANY)
    # The package must not replace the standard that its user has chosen.
    separate_arguments(options UNIX_COMMAND "${FLAGS} -std=c++2b -DCONSUMER_STANDARD=202002L ${options}")
    if("${options}" MATCHES "runtime.json")
      list(APPEND options -DCONSUMER_READS_JSON)
    endif()
    list(APPEND options -Wl,-rpath,${folder}/.. -Wl,-rpath,${work}/build)
    file(MAKE_DIRECTORY ${work}/build)
    set(corner ${work}/build/libcorner.so)
    run(${COMPILER} -shared -fPIC ${CMAKE_CURRENT_LIST_DIR}/corner.cpp -o ${corner} ${options})
    run(${COMPILER} ${CMAKE_CURRENT_LIST_DIR}/main.cpp ${corner} -o ${work}/build/consumer ${options})
    run(${work}/build/consumer)
    return()
  endif()
  set(version 1.0)
  if(ROAD STREQUAL "wrong_version")
    set(version 2.0)
  endif()
  # An archive has a folder around what it installs.
  file(GLOB_RECURSE package ${prefix}/*kxcoreConfig.cmake)
  get_filename_component(prefix ${package}/../../../.. ABSOLUTE)
  if(ROAD STREQUAL "lld")
    # Drops what no code refers to: what the modules announce of their types must stay.
    set(drop "-fuse-ld=lld -Wl,--gc-sections")
    list(APPEND configure "-DCMAKE_CXX_FLAGS=${FLAGS} -ffunction-sections -fdata-sections"
      -DCMAKE_EXE_LINKER_FLAGS=${drop} -DCMAKE_SHARED_LINKER_FLAGS=${drop})
  endif()
  run(${configure} -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_FIND_ROOT_PATH=${prefix} -DKXCORE_VERSION=${version}
    -DKXCORE_INSTALLED=${prefix})
endif()
run(${CMAKE_COMMAND} --build ${work}/build)
file(GLOB program ${work}/build/consumer ${work}/build/consumer.exe)
run(${EMULATOR} ${program})
