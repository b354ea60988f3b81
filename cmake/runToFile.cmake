# Runs PROGRAM with ARGUMENTS (one text, separated by spaces) and writes its standard
# output to OUTPUT; a failing run leaves no OUTPUT behind and fails the build step.
separate_arguments(arguments UNIX_COMMAND "${ARGUMENTS}")
execute_process(COMMAND ${PROGRAM} ${arguments}
    OUTPUT_FILE ${OUTPUT}.part ERROR_VARIABLE errors RESULT_VARIABLE status)
if(NOT status EQUAL 0)
    file(REMOVE ${OUTPUT}.part)
    message(FATAL_ERROR "${PROGRAM} ${ARGUMENTS} failed (${status}):\n${errors}")
endif()
file(RENAME ${OUTPUT}.part ${OUTPUT})
