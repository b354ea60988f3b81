# Installs the build into a scratch prefix and moves the prefix elsewhere, then checks it as
# a user meets it: the headers installed, what the libraries export, the pkg-config link
# line, tqarchive, and the README's embedding example taken from README.md, built through
# find_package and through the README's pkg-config line and run in an empty environment.
#   BUILD_DIR README WORK_DIR CXX EXTRA_FLAGS VERSION LIBDIR EXPECT_CLI EXPECT_DOCS
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})
set(PREFIX ${WORK_DIR}/moved)

# Runs a command in a folder; fails with its output unless it succeeds. Its standard
# output is left in run_output.
function(run folder)
    execute_process(COMMAND ${ARGN} WORKING_DIRECTORY ${folder}
        RESULT_VARIABLE status OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "failed (${status}) in ${folder}: ${ARGN}\n${out}\n${err}")
    endif()
    set(run_output "${out}" PARENT_SCOPE)
endfunction()

run(${WORK_DIR} ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/installed)
file(RENAME ${WORK_DIR}/installed ${PREFIX})

# Headers: whatever an installed header includes from the project is installed too, and
# archive/core holds only what archivecore.hpp and version.hpp reach (internal headers
# stay home).
set(pending archive/core/archivecore.hpp archive/core/version.hpp host/host.hpp)
set(reached "")
while(pending)
    list(POP_FRONT pending header)
    if(header IN_LIST reached)
        continue()
    endif()
    list(APPEND reached ${header})
    if(NOT EXISTS ${PREFIX}/include/${header})
        message(FATAL_ERROR "include/${header} is not installed, though an installed header "
                            "includes it (reached so far: ${reached})")
    endif()
    file(STRINGS ${PREFIX}/include/${header} includes REGEX "^#include <(archive|host)/")
    foreach(line IN LISTS includes)
        string(REGEX REPLACE "^#include <([^>]+)>.*" "\\1" included "${line}")
        list(APPEND pending ${included})
    endforeach()
endwhile()
file(GLOB_RECURSE installed RELATIVE ${PREFIX}/include ${PREFIX}/include/archive/*)
foreach(header IN LISTS installed)
    if(NOT header IN_LIST reached)
        message(FATAL_ERROR "include/${header} is installed, but no public header includes it")
    endif()
endforeach()

file(STRINGS ${PREFIX}/include/archive/core/version.hpp version_string
     REGEX "^#define TQARCHIVECORE_VERSION_STRING ")
if(NOT version_string STREQUAL "#define TQARCHIVECORE_VERSION_STRING \"${VERSION}\"")
    message(FATAL_ERROR "archive/core/version.hpp says: ${version_string}")
endif()

# Libraries: the SONAME follows the major version, and only the public API is exported.
string(REGEX MATCH "^[0-9]+" major ${VERSION})
foreach(library tqarchivecore tqhost)
    set(file ${PREFIX}/${LIBDIR}/lib${library}.so)
    run(${WORK_DIR} readelf -d ${file})
    if(NOT run_output MATCHES "Library soname: \\[lib${library}\\.so\\.${major}\\]")
        message(FATAL_ERROR "lib${library}.so's SONAME is not lib${library}.so.${major}:\n${run_output}")
    endif()
    run(${WORK_DIR} nm -D --defined-only -C ${file})
    # Brackets ([abi:cxx11]) would hold list elements together.
    string(REGEX REPLACE "[][]" "|" symbols "${run_output}")
    string(REGEX MATCHALL "[^\n]+" symbols "${symbols}")
    set(public "^((typeinfo|typeinfo name|vtable) for )?tessel::io::archive::core::|^[A-Za-z]+Builtin\\(int, ")
    if(library STREQUAL "tqhost")
        set(public "^((typeinfo|typeinfo name|vtable) for |(non-virtual|virtual) thunk to )?tessel::host::")
    endif()
    set(stray "")
    foreach(symbol IN LISTS symbols)
        string(REGEX REPLACE "^[0-9a-f]* *[A-Za-z] " "" name "${symbol}")
        if(NOT name MATCHES "${public}")
            string(APPEND stray "\n  ${name}")
        endif()
    endforeach()
    if(stray)
        message(FATAL_ERROR "lib${library}.so exports more than its API:${stray}")
    endif()
endforeach()

set(ENV{PKG_CONFIG_PATH} ${PREFIX}/${LIBDIR}/pkgconfig)
run(${WORK_DIR} pkg-config --libs tqarchivecore)
if(run_output MATCHES "-larchive|boost")
    message(FATAL_ERROR "libarchive or Boost is on a consumer's link line: ${run_output}")
endif()

if(EXPECT_CLI)
    run(${WORK_DIR} env -i ${PREFIX}/bin/tqarchive --version)
    if(NOT run_output MATCHES "^tqarchive ${VERSION}\n(.*\n)?libarchive [0-9]")
        message(FATAL_ERROR "tqarchive --version printed: ${run_output}")
    endif()
endif()
if(EXPECT_DOCS)
    file(READ ${PREFIX}/share/man/man1/tqarchive.1 man)
    if(NOT man MATCHES "(^|\n)\\.TH ")
        message(FATAL_ERROR "share/man/man1/tqarchive.1 is no man page")
    endif()
    file(READ ${PREFIX}/share/bash-completion/completions/tqarchive completion)
    if(NOT completion MATCHES "complete .*tqarchive")
        message(FATAL_ERROR "share/bash-completion/completions/tqarchive registers no completion")
    endif()
endif()

# The README's embedding example: its CMakeLists.txt, its program and its pkg-config line.
file(READ ${README} readme)
string(FIND "${readme}" "\n## Embedding the library from another CMake project\n" start)
if(start EQUAL -1)
    message(FATAL_ERROR "README.md has no embedding section")
endif()
math(EXPR start "${start} + 1")
string(SUBSTRING "${readme}" ${start} -1 section)
string(FIND "${section}" "\n## " end)
if(end GREATER -1)
    string(SUBSTRING "${section}" 0 ${end} section)
endif()

function(code_block language out)
    string(FIND "${section}" "\n```${language}\n" begin)
    if(begin EQUAL -1)
        message(FATAL_ERROR "the README's embedding section has no ${language} block")
    endif()
    string(LENGTH "\n```${language}\n" fence)
    math(EXPR begin "${begin} + ${fence}")
    string(SUBSTRING "${section}" ${begin} -1 rest)
    string(FIND "${rest}" "\n```" length)
    math(EXPR length "${length} + 1")
    string(SUBSTRING "${rest}" 0 ${length} block)
    set(${out} "${block}" PARENT_SCOPE)
endfunction()
code_block(cmake cmake_lists)
code_block(cpp program)
code_block(sh pkg_config_lines)

# Runs the example in an empty environment in a folder holding report.txt: it should zip
# that file and say so.
function(run_example program)
    set(folder ${WORK_DIR}/run-${program})
    file(MAKE_DIRECTORY ${folder})
    file(WRITE ${folder}/report.txt "quarterly figures\n")
    run(${folder} env -i ${WORK_DIR}/${program})
    if(NOT run_output STREQUAL "1 entries written\n")
        message(FATAL_ERROR "${program} printed \"${run_output}\"")
    endif()
    run(${folder} ${CMAKE_COMMAND} -E tar tf report.zip)
    if(NOT run_output STREQUAL "report.txt\n")
        message(FATAL_ERROR "${program}'s report.zip holds: ${run_output}")
    endif()
endfunction()

file(WRITE ${WORK_DIR}/cmake-example/CMakeLists.txt "${cmake_lists}")
file(WRITE ${WORK_DIR}/cmake-example/myapp.cpp "${program}")
run(${WORK_DIR} ${CMAKE_COMMAND} -S ${WORK_DIR}/cmake-example -B ${WORK_DIR}/cmake-example/build
    -DCMAKE_PREFIX_PATH=${PREFIX} -DCMAKE_CXX_COMPILER=${CXX}
    "-DCMAKE_CXX_FLAGS=${EXTRA_FLAGS}" "-DCMAKE_EXE_LINKER_FLAGS=${EXTRA_FLAGS}")
run(${WORK_DIR} ${CMAKE_COMMAND} --build ${WORK_DIR}/cmake-example/build)
file(RENAME ${WORK_DIR}/cmake-example/build/myapp ${WORK_DIR}/myapp-cmake)
run_example(myapp-cmake)

# The pkg-config lines as printed, with the README's prefix replaced by the moved one and
# `c++` standing for this build's compiler.
file(WRITE ${WORK_DIR}/pkg-config-example/myapp.cpp "${program}")
file(WRITE ${WORK_DIR}/compiler/c++ "#!/bin/sh\nexec ${CXX} ${EXTRA_FLAGS} \"$@\"\n")
file(CHMOD ${WORK_DIR}/compiler/c++ PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
string(REPLACE "/opt/tqarchive/lib/" "${PREFIX}/${LIBDIR}/" pkg_config_lines "${pkg_config_lines}")
string(REPLACE "/opt/tqarchive" "${PREFIX}" pkg_config_lines "${pkg_config_lines}")
run(${WORK_DIR}/pkg-config-example
    ${CMAKE_COMMAND} -E env "PATH=${WORK_DIR}/compiler:$ENV{PATH}" --unset=PKG_CONFIG_PATH
    sh -ec "${pkg_config_lines}")
file(RENAME ${WORK_DIR}/pkg-config-example/myapp ${WORK_DIR}/myapp-pkg-config)
run_example(myapp-pkg-config)
