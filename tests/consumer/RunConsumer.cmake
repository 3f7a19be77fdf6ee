# Installs the build into a folder of its own, then configures, builds and runs there the project
# that README.md shows to its readers.
# -D BUILD_DIR, README, WORK_DIR, OPTIONS (for the consumer's configuration), EMULATOR, SUFFIX
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGN}\ngave ${result}:\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

# What README.md has between two marks.
function(take_from_readme result begin end)
  file(READ ${README} readme)
  if(NOT "${readme}" MATCHES "${begin}([^`]*)${end}")
    message(FATAL_ERROR "README.md has no text between ${begin} and ${end}")
  endif()
  set(${result} "${CMAKE_MATCH_1}" PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
take_from_readme(program "```cpp\n" "```")
take_from_readme(lines "```cmake\n" "```")
take_from_readme(expected "prints `" "`")
file(WRITE ${WORK_DIR}/source/main.cpp "${program}")
file(WRITE ${WORK_DIR}/source/CMakeLists.txt
     "cmake_minimum_required(VERSION 3.25)\nproject(mine LANGUAGES CXX)\n"
     "add_executable(mine main.cpp)\n${lines}")

run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/installed)
run(${CMAKE_COMMAND} -G Ninja -S ${WORK_DIR}/source -B ${WORK_DIR}/build ${OPTIONS}
    -DCMAKE_PREFIX_PATH=${WORK_DIR}/installed -DCMAKE_FIND_ROOT_PATH=${WORK_DIR}/installed
    # A host on Windows keeps the libraries beside its program.
    -DCMAKE_RUNTIME_OUTPUT_DIRECTORY=${WORK_DIR}/installed/bin)
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run(${EMULATOR} ${WORK_DIR}/installed/bin/mine${SUFFIX})
string(STRIP "${output}" printed)
if(NOT "${printed}" STREQUAL "${expected}")
  message(FATAL_ERROR "the consumer printed: ${printed}")
endif()
