# Runs PROGRAM, which must print output.txt.
execute_process(COMMAND ${PROGRAM} OUTPUT_FILE containers.tmp COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files containers.tmp ${FOLDER}/output.txt
  COMMAND_ERROR_IS_FATAL ANY)
