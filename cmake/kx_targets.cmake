# What every target of the project is built with. Warnings are shown here; the presets turn them into errors, so that a
# user's newer compiler does not stop the build for one.
function(kx_configure target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
endfunction()

# A shared library kx::<alias> whose public interface is what <exports> marks.
function(kx_add_module target alias exports)
  add_library(${target} SHARED ${ARGN})
  add_library(kx::${alias} ALIAS ${target})
  kx_configure(${target})
  # Its own calls of what it exports stay inside, and may be inlined.
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
