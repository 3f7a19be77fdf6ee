# run(COMMAND...): what it printed is in output; a failure ends the test.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output
                  WORKING_DIRECTORY ${RUN_IN})
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGN}\ngave ${result}:\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

# build_against(INSTALLED SOURCE BUILD): a project outside this tree, with OPTIONS for its
# configuration.
function(build_against installed source build)
  run(${CMAKE_COMMAND} -G Ninja -S ${source} -B ${build} ${OPTIONS}
      -DCMAKE_PREFIX_PATH=${installed} -DCMAKE_FIND_ROOT_PATH=${installed}
      # A host on Windows keeps the libraries beside its program.
      -DCMAKE_RUNTIME_OUTPUT_DIRECTORY=${installed}/bin)
  run(${CMAKE_COMMAND} --build ${build})
endfunction()
