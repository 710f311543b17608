# Sets the options of every target of the project. Only the presets turn warnings into errors, so that a new warning of
# a user's newer compiler does not stop the build.
function(kx_configure target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
endfunction()

# A program on Windows finds the libraries that are beside it.
if(WIN32 AND top_level)
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
  set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
endif()

# Adds a library kx::<alias>, a shared one unless BUILD_SHARED_LIBS is off. Its sources are compiled with the macro
# <exports>, which exports the declarations of its public interface; those of a static one, and of its users, with
# KX_STATIC.
function(kx_add_module target alias exports)
  set(kind SHARED)
  if(DEFINED BUILD_SHARED_LIBS AND NOT BUILD_SHARED_LIBS)
    set(kind STATIC)
  endif()
  add_library(${target} ${kind} ${ARGN})
  add_library(kx::${alias} ALIAS ${target})
  kx_configure(${target})
  if(kind STREQUAL "STATIC")
    target_compile_definitions(${target} PUBLIC KX_STATIC)
    set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON)
  elseif(NOT WIN32)
    # The library's calls of its own exported functions bind inside the library and may be inlined.
    target_compile_options(${target} PRIVATE -fno-semantic-interposition)
  endif()
  target_include_directories(${target} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/kxcore>)
  set_target_properties(${target} PROPERTIES
    DEFINE_SYMBOL ${exports}
    EXPORT_NAME ${alias}
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR})
  if(WIN32)
    set_target_properties(${target} PROPERTIES PREFIX "")
  endif()
  if(KXCORE_INSTALL)
    install(TARGETS ${target} EXPORT kxcore)
  endif()
endfunction()

# kx_in_link_order(<list variable>): the sources of a program whose static initialisers must run in the order of the
# list. They run against the order in which they are linked on Windows, and wherever GCC optimises the whole program.
function(kx_in_link_order list)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND (CMAKE_INTERPROCEDURAL_OPTIMIZATION OR CMAKE_CXX_FLAGS MATCHES "-flto"))
    set(against ON)
  endif()
  if(MINGW OR against)
    list(REVERSE ${list})
    set(${list} ${${list}} PARENT_SCOPE)
  endif()
endfunction()
