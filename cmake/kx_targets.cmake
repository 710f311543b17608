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

# Adds a shared library kx::<alias>. Its sources are compiled with the macro <exports>, which exports the declarations of
# its public interface.
function(kx_add_module target alias exports)
  add_library(${target} SHARED ${ARGN})
  add_library(kx::${alias} ALIAS ${target})
  kx_configure(${target})
  # The library's calls of its own exported functions bind inside the library and may be inlined.
  target_compile_options(${target} PRIVATE -fno-semantic-interposition)
  target_include_directories(${target} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/kxcore>)
  set_target_properties(${target} PROPERTIES
    DEFINE_SYMBOL ${exports}
    EXPORT_NAME ${alias}
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR})
  install(TARGETS ${target} EXPORT kxcore)
endfunction()
