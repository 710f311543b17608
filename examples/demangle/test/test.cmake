# Runs PROGRAM with OPTIONS on input.txt, which must print output.txt.
execute_process(COMMAND ${PROGRAM} ${OPTIONS} INPUT_FILE ${FOLDER}/input.txt
  OUTPUT_FILE output${OPTIONS}.tmp COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files --ignore-eol output${OPTIONS}.tmp ${FOLDER}/output${OPTIONS}.txt
  COMMAND_ERROR_IS_FATAL ANY)
