# Installs the build into a folder of its own, then configures, builds and runs there the project
# that README.md shows to its readers.
# -D BUILD_DIR, README, WORK_DIR, OPTIONS (for the consumer's configuration), EMULATOR, SUFFIX
include(${CMAKE_CURRENT_LIST_DIR}/Run.cmake)

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

set(RUN_IN ${WORK_DIR})
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/installed)
build_against(${WORK_DIR}/installed ${WORK_DIR}/source ${WORK_DIR}/build)
run(${EMULATOR} ${WORK_DIR}/installed/bin/mine${SUFFIX})
string(STRIP "${output}" printed)
if(NOT "${printed}" STREQUAL "${expected}")
  message(FATAL_ERROR "the consumer printed: ${printed}")
endif()
