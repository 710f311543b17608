# Configures, builds and runs the consumer as its author would.
#
#   cmake -DROAD=package|subdirectory|pkgconfig|wrong_version -DBUILD=<build tree of the library> -DSOURCE=<its source>
#     -DCOMPILER=<compiler> -DFLAGS=<compiler flags> -P consume.cmake
set(work ${BUILD}/consumer/${ROAD})
file(REMOVE_RECURSE ${work})
set(prefix ${work}/installed)

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

set(configure ${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${work}/build -G Ninja -DCMAKE_BUILD_TYPE=Release
  -DCMAKE_CXX_COMPILER=${COMPILER} -DCMAKE_CXX_FLAGS=${FLAGS})
if(ROAD STREQUAL "subdirectory")
  # Without a build type, because this compiles the whole library again, and optimising it would only take longer.
  run(${configure} -DKXCORE_SOURCE=${SOURCE} -DCMAKE_BUILD_TYPE=)
else()
  run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})
  if(ROAD STREQUAL "pkgconfig")
    file(GLOB_RECURSE file ${prefix}/kxcore.pc)
    get_filename_component(folder ${file} DIRECTORY)
    set(ENV{PKG_CONFIG_PATH} ${folder})
    execute_process(COMMAND pkg-config --cflags --libs kxcore OUTPUT_VARIABLE options COMMAND_ERROR_IS_FATAL ANY)
    # The package must not replace the standard that its user has chosen.
    separate_arguments(options UNIX_COMMAND "${FLAGS} -std=c++2b -DCONSUMER_STANDARD=202002L ${options}")
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
  run(${configure} -DCMAKE_PREFIX_PATH=${prefix} -DKXCORE_VERSION=${version} -DKXCORE_INSTALLED=${prefix})
endif()
run(${CMAKE_COMMAND} --build ${work}/build)
run(${work}/build/consumer)
