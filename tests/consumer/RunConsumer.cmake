# The project that README.md shows to its readers, against the installed library. With BUILD_DIR that
# build is installed first.
include(${CMAKE_CURRENT_LIST_DIR}/Run.cmake)

begin()
if(BUILD_DIR)
  file(REMOVE_RECURSE ${INSTALLED})
  run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${INSTALLED})
endif()
write_readme_project()
build_against(${INSTALLED} ${WORK_DIR}/source ${WORK_DIR}/build)
run_programs(${INSTALLED}/bin)
