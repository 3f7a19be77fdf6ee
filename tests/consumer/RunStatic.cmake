# Builds the libraries anew, static, and installs them.
# -D SOURCE
include(${CMAKE_CURRENT_LIST_DIR}/Run.cmake)

begin()
file(REMOVE_RECURSE ${INSTALLED})
run(${CMAKE_COMMAND} -G Ninja -S ${SOURCE} -B build ${OPTIONS} -DBUILD_SHARED_LIBS=OFF
    -DKELP_BUILD_TESTS=OFF -DKELP_BUILD_PROGRAMS=OFF)
run(${CMAKE_COMMAND} --build build)
run(${CMAKE_COMMAND} --install build --prefix ${INSTALLED})
file(GLOB_RECURSE shared ${INSTALLED}/*kelp0lang.so* ${INSTALLED}/*kelp0lang.dll)
if(shared)
  message(FATAL_ERROR "these aren't static: ${shared}")
endif()
