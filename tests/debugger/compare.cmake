# Lets GDB print one of each thing that it has a view of, and compares that with the transcript.
#
#   cmake -DGDB=<gdb> -DPROGRAM=<program> -DPLACE=build|installed -DBUILD=<build tree of the library> -P compare.cmake
set(here ${CMAKE_CURRENT_LIST_DIR})
set(place ${BUILD})
if(PLACE STREQUAL "installed")
  set(place ${BUILD}/debugger)
  execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${place} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  file(GLOB_RECURSE library ${place}/libkxbase.so)
  get_filename_component(folder ${library} DIRECTORY)
  set(environment -ex "set environment LD_LIBRARY_PATH ${folder}")
endif()
execute_process(COMMAND ${GDB} -nx -batch -iex "add-auto-load-safe-path ${place}" ${environment}
  -x ${here}/commands.gdb ${PROGRAM}
  OUTPUT_VARIABLE printed ERROR_VARIABLE errors)
# What is before the first command that is shown has addresses in it.
string(FIND "${printed}" "+print" first)
string(SUBSTRING "${printed}" ${first} -1 transcript)
# The views' own errors follow. GDB writes other things to the same stream.
string(REGEX MATCHALL "There is no [^\n]*\n" refusals "${errors}")
string(APPEND transcript ${refusals})
file(READ ${here}/transcript.txt expected)
if(NOT transcript STREQUAL expected)
  get_filename_component(folder ${PROGRAM} DIRECTORY)
  file(WRITE ${folder}/debugger.txt "${transcript}")
  message(FATAL_ERROR "${printed}${errors}\nThis is not ${here}/transcript.txt; it has been written to ${folder}/debugger.txt")
endif()
