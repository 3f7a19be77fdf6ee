# The tests of the library as others take it: by find_package, by pkg-config, and as a part of their
# own project, shared and static. Those that take this build's own libraries run every day; those that
# compile the libraries anew, which takes minutes, have the label "packages", which the presets leave
# out, and "./test.sh packages" runs them.
set(consumer_options -DCMAKE_CXX_FLAGS=${CMAKE_CXX_FLAGS})
set(consumer_flags ${CMAKE_CXX_FLAGS})
if(KELP_SANITIZE)
  set(consumer_options -DCMAKE_CXX_FLAGS=-fsanitize=${KELP_SANITIZE})
  set(consumer_flags -fsanitize=${KELP_SANITIZE})
endif()
if(WIN32)
  list(APPEND consumer_options -DCMAKE_TOOLCHAIN_FILE=${CMAKE_TOOLCHAIN_FILE}
       -DBoost_INCLUDE_DIR=${PROJECT_BINARY_DIR}/boost-headers)
  list(APPEND consumer_flags -I${PROJECT_BINARY_DIR}/boost-headers)
else()
  list(APPEND consumer_options -DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER})
endif()
string(REPLACE ";" " " consumer_flags "${consumer_flags}")

# kelp_add_consumer_test(NAME SCRIPT INSTALLED [NAME=VALUE...])
function(kelp_add_consumer_test name script installed)
  list(TRANSFORM ARGN PREPEND -D OUTPUT_VARIABLE arguments)
  add_test(NAME ${name} COMMAND ${CMAKE_COMMAND}
    -D README=${PROJECT_SOURCE_DIR}/README.md
    -D INSTALLED=${PROJECT_BINARY_DIR}/${installed}
    -D WORK_DIR=${PROJECT_BINARY_DIR}/consumers/${name}
    -D "OPTIONS=${consumer_options}"
    -D EMULATOR=${CMAKE_CROSSCOMPILING_EMULATOR}
    -D SUFFIX=${CMAKE_EXECUTABLE_SUFFIX}
    ${arguments}
    -P ${PROJECT_SOURCE_DIR}/tests/consumer/${script}.cmake)
endfunction()

set(examples EXAMPLES=${PROJECT_SOURCE_DIR}/examples)
set(compiler COMPILER=${CMAKE_CXX_COMPILER} "FLAGS=${consumer_flags}")

kelp_add_consumer_test(consumer RunConsumer consumers/installed BUILD_DIR=${PROJECT_BINARY_DIR})
kelp_add_consumer_test(consumer_pkg_config RunPkgConfig consumers/installed ${compiler})
kelp_add_consumer_test(examples RunExamples consumers/installed ${examples})
set_tests_properties(consumer PROPERTIES FIXTURES_SETUP installed)
set_tests_properties(consumer_pkg_config examples PROPERTIES FIXTURES_REQUIRED installed)

# Quickly compiled, and the same for all of them, so that a compiler cache serves the others.
list(APPEND consumer_options -DCMAKE_BUILD_TYPE=None)
set(source SOURCE=${PROJECT_SOURCE_DIR})
kelp_add_consumer_test(static_library RunStatic consumers/installed-static ${source})
kelp_add_consumer_test(consumer_static RunConsumer consumers/installed-static)
kelp_add_consumer_test(examples_static RunExamples consumers/installed-static ${examples})
set(static_tests consumer_static examples_static)
if(NOT WIN32)
  kelp_add_consumer_test(pkg_config_static RunPkgConfig consumers/installed-static ${compiler})
  list(APPEND static_tests pkg_config_static)
endif()
set_tests_properties(static_library PROPERTIES FIXTURES_SETUP installed_static)
set_tests_properties(${static_tests} PROPERTIES FIXTURES_REQUIRED installed_static)
set(long_tests static_library ${static_tests})
set(within ${source} PROGRAMS=${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
foreach(how add_subdirectory FetchContent)
  kelp_add_consumer_test(${how}_shared RunWithin nowhere ${within} HOW=${how} SHARED=ON)
  kelp_add_consumer_test(${how}_static RunWithin nowhere ${within} HOW=${how} SHARED=OFF)
  list(APPEND long_tests ${how}_shared ${how}_static)
endforeach()
set_tests_properties(${long_tests} PROPERTIES LABELS packages TIMEOUT 1800)
