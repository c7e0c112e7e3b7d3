# Runs COMMAND (words separated by spaces) and compares its standard output
# with the file GOLDEN. On a difference prints `diff -u GOLDEN OUTPUT` and
# fails; when the change is intended, review the diff and copy OUTPUT over
# GOLDEN in the same commit.
separate_arguments(command UNIX_COMMAND "${COMMAND}")
execute_process(COMMAND ${command} OUTPUT_FILE ${OUTPUT} RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "${COMMAND} failed: ${result}")
endif()
execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${GOLDEN} ${OUTPUT} RESULT_VARIABLE differs)
if(differs)
    execute_process(COMMAND diff -u ${GOLDEN} ${OUTPUT})
    message(FATAL_ERROR "the output of '${COMMAND}' differs from ${GOLDEN} (diff above)")
endif()
