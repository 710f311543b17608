# Installs everything except the libraries: the headers, the package files for find_package(kxcore), the one for
# pkg-config, and the debugger views. The headers keep their folders, so that includes read the same as in this project.
include(CMakePackageConfigHelpers)

# The public headers, in order and relative to the root. A header whose first line begins with "// Inside" is for the
# sources of its module only and is not installed.
file(GLOB_RECURSE headers CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR} core/*.h runtime/*.h)
set(KX_PUBLIC_HEADERS)
foreach(header IN LISTS headers)
  file(STRINGS ${header} first LIMIT_COUNT 1)
  if(first MATCHES "^// Inside" OR (header MATCHES "^runtime/json/" AND NOT KXCORE_JSON))
    continue()
  endif()
  list(APPEND KX_PUBLIC_HEADERS ${header})
  if(KXCORE_INSTALL)
    get_filename_component(folder ${header} DIRECTORY)
    install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kxcore/${folder})
  endif()
endforeach()
# GDB loads the debugger views from a file of this name when it loads the library, from the build tree or the installed
# one.
file(GENERATE OUTPUT $<TARGET_FILE:kxbase>-gdb.py INPUT ${PROJECT_SOURCE_DIR}/tools/gdb/kxcore.py)
# What must be built before it can be installed.
add_custom_target(modules DEPENDS kxbase runtime.resource)
if(KXCORE_JSON)
  add_dependencies(modules runtime.json)
endif()
if(NOT KXCORE_INSTALL)
  return()
endif()
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})

# Shared and static libraries can be installed to the same prefix, so each kind has its own files for CMake and pkg-config.
get_target_property(kind kxbase TYPE)
string(REGEX REPLACE "_LIBRARY$" "" kind ${kind})
string(TOLOWER ${kind} kind)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/kxcore)
install(EXPORT kxcore FILE kxcore-${kind}.cmake NAMESPACE kx:: DESTINATION ${package})
install(FILES ${CMAKE_CURRENT_LIST_DIR}/kxcoreConfig.cmake DESTINATION ${package})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/kxcoreConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/kxcoreConfigVersion.cmake DESTINATION ${package})

# The paths are relative to the file itself, so that the installed tree can be moved.
file(RELATIVE_PATH KX_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
set(KX_PC_CFLAGS "")
set(KX_PC_REQUIRES "")
set(modules runtime.resource kxbase)
if(KXCORE_JSON)
  list(PREPEND modules runtime.json)
endif()
if(kind STREQUAL "static")
  # By file, because -lkxbase prefers a shared library. Only users of the static module need the parser.
  set(pc kxcore-static.pc)
  set(KX_PC_CFLAGS " -DKX_STATIC")
  get_target_property(KX_PC_LIBS kxbase INTERFACE_LINK_OPTIONS)
  list(TRANSFORM modules REPLACE "(.+)" "\${libdir}/$<TARGET_FILE_NAME:\\1>")
  list(APPEND KX_PC_LIBS ${modules})
  if(KXCORE_JSON)
    set(KX_PC_REQUIRES "Requires: simdjson\n")
    set_property(TARGET runtime.json PROPERTY INTERFACE_LINK_LIBRARIES kx::base $<LINK_ONLY:simdjson::simdjson>)
  endif()
else()
  set(pc kxcore.pc)
  list(TRANSFORM modules PREPEND -l)
  set(KX_PC_LIBS -L\${libdir} ${modules})
endif()
list(JOIN KX_PC_LIBS " " KX_PC_LIBS)
configure_file(${CMAKE_CURRENT_LIST_DIR}/kxcore.pc.in ${PROJECT_BINARY_DIR}/${pc}.in @ONLY)
file(GENERATE OUTPUT ${PROJECT_BINARY_DIR}/${pc} INPUT ${PROJECT_BINARY_DIR}/${pc}.in)
install(FILES ${PROJECT_BINARY_DIR}/${pc} DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# The debugger views: for GDB also beside the shared library, where it looks for them.
if(kind STREQUAL "shared")
  set(beside ${CMAKE_INSTALL_LIBDIR})
  if(WIN32)
    set(beside ${CMAKE_INSTALL_BINDIR})
  endif()
  install(FILES ${PROJECT_SOURCE_DIR}/tools/gdb/kxcore.py
    DESTINATION ${beside}
    RENAME $<TARGET_FILE_NAME:kxbase>-gdb.py)
endif()
install(FILES ${PROJECT_SOURCE_DIR}/tools/gdb/kxcore.py DESTINATION ${CMAKE_INSTALL_DATADIR}/kxcore/gdb)
install(FILES ${PROJECT_SOURCE_DIR}/tools/lldb/kxcore.py DESTINATION ${CMAKE_INSTALL_DATADIR}/kxcore/lldb)
install(FILES ${PROJECT_SOURCE_DIR}/tools/kxcore.natvis DESTINATION ${CMAKE_INSTALL_DATADIR}/kxcore)
