# find_package(kxcore COMPONENTS base json resource): each component is a target kx::<component>. All of them are defined
# whichever are asked for; a required one that does not exist is an error. The component shared or static says which kind
# of library these targets are; without it, they are shared if such libraries are installed.
set(kxcore_kind shared)
if("${kxcore_FIND_COMPONENTS}" MATCHES "(^|;)static(;|$)" OR NOT EXISTS ${CMAKE_CURRENT_LIST_DIR}/kxcore-shared.cmake)
  set(kxcore_kind static)
endif()
if(TARGET kx::base) # found before
  get_target_property(kxcore_kind kx::base TYPE)
  string(REGEX REPLACE "_LIBRARY$" "" kxcore_kind ${kxcore_kind})
  string(TOLOWER ${kxcore_kind} kxcore_kind)
elseif(kxcore_kind STREQUAL "static")
  find_package(simdjson 3.0 QUIET) # what the static module for JSON is linked with
endif()
include(${CMAKE_CURRENT_LIST_DIR}/kxcore-${kxcore_kind}.cmake OPTIONAL)
foreach(component IN LISTS kxcore_FIND_COMPONENTS)
  if(TARGET kx::${component} OR (component STREQUAL kxcore_kind AND TARGET kx::base))
    set(kxcore_${component}_FOUND TRUE)
  elseif(kxcore_FIND_REQUIRED_${component})
    set(kxcore_FOUND FALSE)
    set(kxcore_NOT_FOUND_MESSAGE "the ${kxcore_kind} libraries of kxcore have no component ${component}")
  endif()
endforeach()
