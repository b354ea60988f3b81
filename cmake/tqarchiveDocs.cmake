# The man page and the bash completion of tqarchive are printed by the program itself,
# from the same description as its --help, so the three cannot drift apart. They are
# made at build time by running the built program and installed with it.
#
# cli/CMakeLists.txt says the program can print them by setting TQ_CLI_GENERATES_DOCS.
get_directory_property(TQ_CLI_GENERATES_DOCS DIRECTORY cli DEFINITION TQ_CLI_GENERATES_DOCS)
if(NOT TQ_CLI_GENERATES_DOCS)
    return()
endif()
if(CMAKE_CROSSCOMPILING)
    message(STATUS "Cross-compiling: tqarchive cannot run here to print its man page")
    return()
endif()

set(TQ_DOCS_DIR ${PROJECT_BINARY_DIR}/cli/doc)
set(TQ_MAN_PAGE ${TQ_DOCS_DIR}/tqarchive.1)
set(TQ_BASH_COMPLETION ${TQ_DOCS_DIR}/tqarchive.bash)

function(tq_generate_from_program output arguments)
    add_custom_command(OUTPUT ${output}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${TQ_DOCS_DIR}
        COMMAND ${CMAKE_COMMAND}
            -DPROGRAM=$<TARGET_FILE:tqarchive>
            "-DARGUMENTS=${arguments}" -DOUTPUT=${output}
            -P ${PROJECT_SOURCE_DIR}/cmake/runToFile.cmake
        DEPENDS tqarchive ${PROJECT_SOURCE_DIR}/cmake/runToFile.cmake
        COMMENT "Generating ${output} (tqarchive ${arguments})"
        VERBATIM)
endfunction()
tq_generate_from_program(${TQ_MAN_PAGE} "--generate-man")
tq_generate_from_program(${TQ_BASH_COMPLETION} "--generate-completion bash")
add_custom_target(tqarchive_docs ALL DEPENDS ${TQ_MAN_PAGE} ${TQ_BASH_COMPLETION})

install(FILES ${TQ_MAN_PAGE} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${TQ_BASH_COMPLETION}
        DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions
        RENAME tqarchive)
