# Lets GDB or LLDB show one of each thing that it has a view of, and compares that with the transcript.
#
#   cmake -DDEBUGGER=gdb|lldb -DEXECUTABLE=<debugger> -DPROGRAM=<program> -DPLACE=build|installed
#     -DBUILD=<build tree of the library> -P compare.cmake
set(here ${CMAKE_CURRENT_LIST_DIR})
set(place ${BUILD})
set(views ${here}/../../tools/lldb/kxcore.py)
if(PLACE STREQUAL "installed")
  set(place ${BUILD}/debugger.${DEBUGGER})
  execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${place} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  file(GLOB_RECURSE library ${place}/libkxbase.so)
  get_filename_component(folder ${library} DIRECTORY)
  set(environment -ex "set environment LD_LIBRARY_PATH ${folder}")
  set(views ${place}/share/kxcore/lldb/kxcore.py)
endif()
if(DEBUGGER STREQUAL "gdb")
  set(run ${EXECUTABLE} -nx -batch -iex "add-auto-load-safe-path ${place}" ${environment} -x ${here}/commands.gdb ${PROGRAM})
  set(first_command "+print")
else()
  set(run ${EXECUTABLE} --no-lldbinit --batch --one-line "command script import ${views}" --source ${here}/commands.lldb
    ${PROGRAM})
  set(first_command "(lldb) frame variable")
endif()
execute_process(COMMAND ${run} OUTPUT_VARIABLE printed ERROR_VARIABLE errors)
# What is before the first command that is shown has addresses in it.
string(FIND "${printed}" "${first_command}" first)
string(SUBSTRING "${printed}" ${first} -1 transcript)
string(REGEX REPLACE "0x[0-9a-f]+" "<address>" transcript "${transcript}")
# The compilers describe the same type by different names.
string(REGEX REPLACE "\n\\([^\n=]*\\) ([a-zA-Z]+) = " "\n\\1 = " transcript "${transcript}")
# The views' own errors follow. The debuggers write other things to the same stream.
string(REGEX MATCHALL "(There is no |Traceback)[^\n]*\n" refusals "${errors}")
string(APPEND transcript ${refusals})
file(READ ${here}/transcript.${DEBUGGER}.txt expected)
if(NOT transcript STREQUAL expected)
  get_filename_component(folder ${PROGRAM} DIRECTORY)
  set(file ${folder}/debugger.${DEBUGGER}.txt)
  file(WRITE ${file} "${transcript}")
  message(FATAL_ERROR "${printed}${errors}\nThis is not transcript.${DEBUGGER}.txt; it has been written to ${file}")
endif()
