# find_package(kxcore COMPONENTS base json resource): each component is a target kx::<component>. All of them are defined
# whichever are asked for; a required one that does not exist is an error.
include(${CMAKE_CURRENT_LIST_DIR}/kxcoreTargets.cmake)
foreach(component IN LISTS kxcore_FIND_COMPONENTS)
  if(TARGET kx::${component})
    set(kxcore_${component}_FOUND TRUE)
  elseif(kxcore_FIND_REQUIRED_${component})
    set(kxcore_FOUND FALSE)
    set(kxcore_NOT_FOUND_MESSAGE "kxcore has no component ${component}")
  endif()
endforeach()
