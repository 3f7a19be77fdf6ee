# The sources are those of the tree that the port stands in. On Linux the headers of CUPS and of XCB's
# RandR come from the system (libcups2-dev, libxcb-randr0-dev).
get_filename_component(SOURCE_PATH "${CMAKE_CURRENT_LIST_DIR}/../../../.." ABSOLUTE)

vcpkg_cmake_configure(
  SOURCE_PATH "${SOURCE_PATH}"
  OPTIONS
    -DKELP_BUILD_PROGRAMS=OFF
    -DKELP_BUILD_TESTS=OFF
    -DKELP_DEBIAN_SOURCES=OFF
    -DKELP_WARNINGS_ARE_ERRORS=OFF)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(CONFIG_PATH lib/cmake/kelp0lang)
if(NOT VCPKG_TARGET_IS_WINDOWS OR VCPKG_LIBRARY_LINKAGE STREQUAL "dynamic")
  vcpkg_fixup_pkgconfig()
endif()
if(VCPKG_TARGET_IS_LINUX AND VCPKG_LIBRARY_LINKAGE STREQUAL "static")
  vcpkg_copy_tools(TOOL_NAMES winapi-service AUTO_CLEAN)
endif()

file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include" "${CURRENT_PACKAGES_DIR}/debug/share")
file(INSTALL "${CMAKE_CURRENT_LIST_DIR}/usage" DESTINATION "${CURRENT_PACKAGES_DIR}/share/${PORT}")
vcpkg_install_copyright(FILE_LIST "${SOURCE_PATH}/LICENSE")
