# Runs the recipe of vcpkg: its functions are here, as far as the recipe uses them. Configuring is done for real, so every
# option of the recipe must be one of the project; what is installed comes from the build tree.
#
#   cmake -DSOURCE=<source> -DBUILD=<build tree> -DWORK=<folder> -P vcpkg.cmake     installs to WORK/installed
set(CURRENT_PORT_DIR ${SOURCE}/packaging/vcpkg/kxcore)
set(CURRENT_PACKAGES_DIR ${WORK}/installed)

function(vcpkg_cmake_configure)
  cmake_parse_arguments(PARSE_ARGV 0 arg "" "SOURCE_PATH" "OPTIONS")
  execute_process(COMMAND ${CMAKE_COMMAND} -S ${arg_SOURCE_PATH} -B ${WORK}/configured -G Ninja ${arg_OPTIONS}
    OUTPUT_QUIET ERROR_VARIABLE errors COMMAND_ERROR_IS_FATAL ANY)
  if(errors MATCHES "not used by the project")
    message(FATAL_ERROR "${errors}")
  endif()
endfunction()
function(vcpkg_cmake_install)
  execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${CURRENT_PACKAGES_DIR} COMMAND_ERROR_IS_FATAL ANY)
endfunction()
# Moves the package files to share, where vcpkg has those of every package.
function(vcpkg_cmake_config_fixup)
  cmake_parse_arguments(PARSE_ARGV 0 arg "" "CONFIG_PATH" "")
  if(NOT EXISTS ${CURRENT_PACKAGES_DIR}/${arg_CONFIG_PATH}/kxcoreConfig.cmake)
    message(FATAL_ERROR "There is no package file in ${arg_CONFIG_PATH}")
  endif()
endfunction()
function(vcpkg_fixup_pkgconfig)
endfunction()
function(vcpkg_install_copyright)
  cmake_parse_arguments(PARSE_ARGV 0 arg "" "" "FILE_LIST")
  file(COPY ${arg_FILE_LIST} DESTINATION ${CURRENT_PACKAGES_DIR}/share/kxcore)
endfunction()

file(READ ${CURRENT_PORT_DIR}/vcpkg.json manifest)
string(JSON version GET "${manifest}" version)
file(STRINGS ${SOURCE}/CMakeLists.txt project REGEX "^project\\(kxcore VERSION ${version} ")
if(NOT project)
  message(FATAL_ERROR "vcpkg.json has version ${version}, the project another one")
endif()
include(${CURRENT_PORT_DIR}/portfile.cmake)
