# The man page and the bash completion of tqarchive are printed by the program itself,
# from the same description as its --help, so the three cannot drift apart. They are
# made each time the program is linked, by running it, and installed with it.
#
# Included at the end of cli/CMakeLists.txt, which says the program can print them by
# setting TQ_CLI_GENERATES_DOCS before.
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
add_custom_command(TARGET tqarchive POST_BUILD
    COMMAND ${CMAKE_COMMAND} -E make_directory ${TQ_DOCS_DIR}
    COMMAND ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:tqarchive> -DARGUMENTS=--generate-man
        -DOUTPUT=${TQ_MAN_PAGE} -P ${PROJECT_SOURCE_DIR}/cmake/runToFile.cmake
    COMMAND ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:tqarchive>
        "-DARGUMENTS=--generate-completion bash"
        -DOUTPUT=${TQ_BASH_COMPLETION} -P ${PROJECT_SOURCE_DIR}/cmake/runToFile.cmake
    COMMENT "Generating the man page and the bash completion of tqarchive"
    VERBATIM)

install(FILES ${TQ_MAN_PAGE} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES ${TQ_BASH_COMPLETION}
        DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions
        RENAME tqarchive)
