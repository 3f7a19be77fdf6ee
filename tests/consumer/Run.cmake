cmake_minimum_required(VERSION 3.25)  # its policies

# What the tests of the package share. They take
#   OPTIONS   for the configuration of a project outside this tree
#   EMULATOR  what runs its programs, SUFFIX what their names end in
#   README    README.md, whose project is built as it stands
#   INSTALLED where the library is, WORK_DIR a folder of the test's own

# run(COMMAND...): what it printed is in output; a failure ends the test.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output
                  WORKING_DIRECTORY ${RUN_IN})
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGN}\ngave ${result}:\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

# begin(): the folder of the test, empty.
function(begin)
  file(REMOVE_RECURSE ${WORK_DIR})
  file(MAKE_DIRECTORY ${WORK_DIR})
  set(RUN_IN ${WORK_DIR} PARENT_SCOPE)
endfunction()

# build_against(INSTALLED SOURCE BUILD): a project that finds the library by CMake.
function(build_against installed source build)
  run(${CMAKE_COMMAND} -G Ninja -S ${source} -B ${build} ${OPTIONS}
      -DCMAKE_PREFIX_PATH=${installed} -DCMAKE_FIND_ROOT_PATH=${installed}
      # A host on Windows keeps the libraries beside its program.
      -DCMAKE_RUNTIME_OUTPUT_DIRECTORY=${installed}/bin)
  run(${CMAKE_COMMAND} --build ${build})
endfunction()

# What README.md has between two marks.
function(take_from_readme result begin end)
  file(READ ${README} readme)
  if(NOT "${readme}" MATCHES "${begin}([^`]*)${end}")
    message(FATAL_ERROR "README.md has no text between ${begin} and ${end}")
  endif()
  set(${result} "${CMAKE_MATCH_1}" PARENT_SCOPE)
endfunction()

# write_readme_project([LINES]): the project that README.md shows, in WORK_DIR/source; with lines of
# CMake that bring the library in another way than by find_package, with these.
function(write_readme_project)
  take_from_readme(program "```cpp\n" "```")
  take_from_readme(lines "```cmake\n" "```")
  if(ARGC GREATER 0)
    string(REGEX REPLACE "find_package[^\n]*\n" "${ARGV0}" lines "${lines}")
  endif()
  file(WRITE ${WORK_DIR}/source/main.cpp "${program}")
  file(WRITE ${WORK_DIR}/source/CMakeLists.txt
       "cmake_minimum_required(VERSION 3.25)\nproject(mine LANGUAGES CXX)\n"
       "add_executable(mine main.cpp)\n${lines}"
       "add_executable(early ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/Early.cpp)\n"
       "target_link_libraries(early PRIVATE kelp0lang::kelp0lang)\n")
endfunction()

# run_expecting(PROGRAM TEXT): it prints the text.
function(run_expecting program expected)
  run(${EMULATOR} ${program}${SUFFIX})
  string(REPLACE "\r" "" printed "${output}")
  string(STRIP "${printed}" printed)
  if(NOT "${printed}" STREQUAL "${expected}")
    message(FATAL_ERROR "the consumer printed: ${printed}")
  endif()
  message("${printed}")
endfunction()

# run_programs(FOLDER): README.md's prints what README.md says.
function(run_programs folder)
  take_from_readme(expected "prints `" "`")
  run_expecting(${folder}/mine "${expected}")
  run_expecting(${folder}/early
    "before main: OstrandAdmin, C\nprinters: there\nbehind main: OstrandAdmin, C")
endfunction()
