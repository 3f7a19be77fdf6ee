# Installs the build into a folder of its own, then configures, builds and runs the consumer there.
# -D BUILD_DIR, SOURCE_DIR, WORK_DIR, OPTIONS (for the consumer's configuration), EMULATOR, SUFFIX
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGN}\ngave ${result}:\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/installed)
run(${CMAKE_COMMAND} -G Ninja -S ${SOURCE_DIR} -B ${WORK_DIR}/build ${OPTIONS}
    -DCMAKE_PREFIX_PATH=${WORK_DIR}/installed -DCMAKE_FIND_ROOT_PATH=${WORK_DIR}/installed
    # A host on Windows keeps the libraries beside its program.
    -DCMAKE_RUNTIME_OUTPUT_DIRECTORY=${WORK_DIR}/installed/bin)
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run(${EMULATOR} ${WORK_DIR}/installed/bin/consumer${SUFFIX})
if(NOT output MATCHES "^30°30'07.5\", 328.083 ft")
  message(FATAL_ERROR "the consumer printed: ${output}")
endif()
