# Builds the examples of the documentation against the installed library, and runs each: it prints
# what the file NAME.txt beside NAME.cpp says, which is what its page shows.
# -D EXAMPLES
include(${CMAKE_CURRENT_LIST_DIR}/Run.cmake)

begin()
build_against(${INSTALLED} ${EXAMPLES} ${WORK_DIR}/build)

file(GLOB sources ${EXAMPLES}/*.cpp)
if(NOT sources)
  message(FATAL_ERROR "there are no examples in ${EXAMPLES}")
endif()
foreach(source IN LISTS sources)
  get_filename_component(name ${source} NAME_WE)
  # A folder of its own, since some write files where they run.
  set(RUN_IN ${WORK_DIR}/${name})
  file(MAKE_DIRECTORY ${RUN_IN})
  run(${EMULATOR} ${INSTALLED}/bin/${name}${SUFFIX})
  file(READ ${EXAMPLES}/${name}.txt expected)
  string(REPLACE "\r" "" printed "${output}")
  if(NOT "${printed}" STREQUAL "${expected}")
    message(FATAL_ERROR "${name} printed:\n${printed}")
  endif()
endforeach()
