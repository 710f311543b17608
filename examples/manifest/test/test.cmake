# Runs PROGRAM on assets.txt. It must print output.txt, with its exit status at the end.
execute_process(COMMAND ${PROGRAM} assets.txt WORKING_DIRECTORY ${FOLDER} OUTPUT_VARIABLE printed RESULT_VARIABLE status
  ERROR_VARIABLE printed)
string(APPEND printed "status ${status}\n")
string(REPLACE "\r" "" printed "${printed}")
file(READ ${FOLDER}/output.txt expected)
if(NOT printed STREQUAL expected)
  message(FATAL_ERROR "${printed}")
endif()
