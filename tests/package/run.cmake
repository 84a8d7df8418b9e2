# Installs the build tree into an empty folder, builds the consumer against it and runs it.
# Needs BUILD_DIR (of zel_algo), SOURCE_DIR (of the consumer), WORK_DIR and CXX_COMPILER.
file(REMOVE_RECURSE "${WORK_DIR}")

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        list(JOIN ARGN " " command)
        message(FATAL_ERROR "Failed: ${command}\n${output}")
    endif()
    set(output "${output}" PARENT_SCOPE)
endfunction()

run("${CMAKE_COMMAND}" --install "${BUILD_DIR}" --prefix "${WORK_DIR}/prefix")
run("${CMAKE_COMMAND}" -S "${SOURCE_DIR}" -B "${WORK_DIR}/build" -G Ninja "-DCMAKE_PREFIX_PATH=${WORK_DIR}/prefix"
    "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}")
run("${CMAKE_COMMAND}" --build "${WORK_DIR}/build")
run("${WORK_DIR}/build/consumer")
message("${output}")
