# Installs the build and builds the consumer against the installed prefix.
file(REMOVE_RECURSE ${WORK_DIR})
set(PREFIX ${WORK_DIR}/prefix)

function(run)
    execute_process(COMMAND ${ARGV} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(NOT rc EQUAL 0)
        message(FATAL_ERROR "failed (${rc}): ${ARGV}\n${out}\n${err}")
    endif()
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${PREFIX})
run(${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR}/consumer -DCMAKE_PREFIX_PATH=${PREFIX}
    -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_BUILD_TYPE=Release "-DCMAKE_CXX_FLAGS=${EXTRA_FLAGS}"
    "-DCMAKE_EXE_LINKER_FLAGS=${EXTRA_FLAGS}")
run(${CMAKE_COMMAND} --build ${WORK_DIR}/consumer)
run(${WORK_DIR}/consumer/consumer ${WORK_DIR})

# The pkg-config file gives a working compile and link line too.
set(ENV{PKG_CONFIG_PATH} ${PREFIX}/lib/pkgconfig)
execute_process(COMMAND pkg-config --cflags --libs tqarchivecore
    OUTPUT_VARIABLE flags RESULT_VARIABLE rc OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT rc EQUAL 0)
    message(FATAL_ERROR "pkg-config does not know tqarchivecore")
endif()
separate_arguments(flags UNIX_COMMAND "${flags}")
separate_arguments(extra UNIX_COMMAND "${EXTRA_FLAGS}")
run(${CXX} -std=c++20 ${extra} ${SOURCE_DIR}/main.cpp -o ${WORK_DIR}/consumer-pc ${flags}
    -Wl,-rpath,${PREFIX}/lib)
run(${WORK_DIR}/consumer-pc ${WORK_DIR})
