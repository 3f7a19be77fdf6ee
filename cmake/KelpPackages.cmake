# cpack: Debian packages on Linux (run time, development, programs), one .zip for Windows. A package of
# Debian's is made of a build whose prefix is /usr, as the preset "packages" has it.
set(CPACK_PACKAGE_NAME kelp0lang)
set(CPACK_PACKAGE_VENDOR kelp0lang)
set(CPACK_PACKAGE_CONTACT "kelp0lang maintainers <maintainers@kelp0lang.invalid>")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_SOURCE_DIR}/build/packages)
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)

if(WIN32)
  set(CPACK_GENERATOR ZIP)
  set(CPACK_PACKAGE_FILE_NAME kelp0lang-${PROJECT_VERSION}-windows-x64)
  set(CPACK_INCLUDE_TOPLEVEL_DIRECTORY OFF)
  set(CPACK_MONOLITHIC_INSTALL ON)
  install(FILES packaging/windows.txt DESTINATION . RENAME README.txt COMPONENT development)
  install(FILES LICENSE DESTINATION . RENAME LICENSE.txt COMPONENT runtime)
  include(CPack)
  return()
endif()

# kelp_debian_package(COMPONENT NAME SECTION SUMMARY TEXT DEPENDS RECOMMENDS)
macro(kelp_debian_package component name section summary text depends recommends)
  string(TOUPPER ${component} prefix)
  set(CPACK_DEBIAN_${prefix}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${prefix}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${prefix}_DESCRIPTION "${summary}\n${text}")
  set(CPACK_DEBIAN_${prefix}_PACKAGE_DEPENDS "${depends}")
  set(CPACK_DEBIAN_${prefix}_PACKAGE_RECOMMENDS "${recommends}")
  install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} RENAME copyright
          COMPONENT ${component})
  install(FILES ${debian_files}/changelog.gz ${debian_files}/NEWS.gz
          DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${component})
endmacro()

# kelp_pack(SOURCE TARGET): as Debian wants it, as far as it goes and without a time in it.
find_program(GZIP gzip REQUIRED)
function(kelp_pack source target)
  execute_process(COMMAND ${GZIP} -9nc ${source} OUTPUT_FILE ${target} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# Debian's own form of a change log; what has changed is in NEWS.
set(debian_files ${PROJECT_BINARY_DIR}/debian-files)
string(TIMESTAMP now "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${debian_files}/changelog "kelp0lang (${PROJECT_VERSION}) unstable; urgency=medium

  * Version ${PROJECT_VERSION}, see NEWS.gz.

 -- ${CPACK_PACKAGE_CONTACT}  ${now}
")
kelp_pack(${debian_files}/changelog ${debian_files}/changelog.gz)
kelp_pack(${PROJECT_SOURCE_DIR}/CHANGELOG.md ${debian_files}/NEWS.gz)
# The pages of the programs.
foreach(section 1 8)
  file(GLOB pages ${PROJECT_SOURCE_DIR}/docs/man/*.${section})
  foreach(page ${pages})
    cmake_path(GET page FILENAME name)
    kelp_pack(${page} ${debian_files}/${name}.gz)
    install(FILES ${debian_files}/${name}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section}
            COMPONENT programs)
  endforeach()
endforeach()

# The libraries, for packages that need them, and for the loader's cache.
set(runtime libkelp0lang${PROJECT_VERSION_MAJOR})
file(REMOVE ${debian_files}/shlibs)
foreach(library kelp0lang sarnutils winapi)
  file(APPEND ${debian_files}/shlibs
       "lib${library} ${PROJECT_VERSION_MAJOR} ${runtime} (>= ${PROJECT_VERSION})\n")
endforeach()
file(WRITE ${debian_files}/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${debian_files}/shlibs ${debian_files}/triggers)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own
set(CPACK_COMPONENTS_ALL runtime development programs)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(same_version "${runtime} (= ${PROJECT_VERSION})")
# What only some machines have, and the layer looks for while a program runs.
kelp_debian_package(runtime ${runtime} libs
  "foundation library of surveying programs"
  "Units, angles, text, settings, changes with undo, files, threads, XML\ndifferences and an HTTP client, with the layer that stands in for the\nWindows API."
  "" "libcurl4, libcups2, libxcb-randr0")
kelp_debian_package(development libkelp0lang-dev libdevel
  "foundation library of surveying programs, for development"
  "Headers, a CMake package and a file for pkg-config."
  "${same_version}, libboost-dev" "")
kelp_debian_package(programs kelp0lang-tools science
  "surveyors' points files and ribbon layouts on the command line"
  "fieldbook shows, checks, converts and changes points files, ribbon carries\nchanges of a layout over to another, and fieldwatch is a service that\ncopies points files which can be read."
  "${same_version}" "")
include(CPack)
