# cmake --install lays out the libraries, their headers under the names that sources use, a CMake
# package (find_package(kelp0lang) gives kelp0lang::kelp0lang) and a file for pkg-config. Its
# components, which are packages of their own where packages are made, are runtime, development and
# programs.
include(CMakePackageConfigHelpers)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/kelp0lang)

set(libraries kelp0lang sarnutils)
if(NOT WIN32)
  list(APPEND libraries winapi)
  install(DIRECTORY common/winapi/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/winapi
          COMPONENT development)
endif()
if(NOT BUILD_SHARED_LIBS)
  # What shared libraries have within themselves.
  list(APPEND libraries kelptext)
  if(KELP_DEBIAN_SOURCES)
    list(APPEND libraries kelp_expat)
  endif()
  if(WIN32)
    list(APPEND libraries kelp0lang_strings)
  endif()
endif()
install(TARGETS ${libraries} EXPORT kelp0langTargets
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime
                NAMELINK_COMPONENT development
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
        OBJECTS DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
if(MINGW AND BUILD_SHARED_LIBS)
  install(FILES ${PROJECT_BINARY_DIR}/kelp0lang.def ${PROJECT_BINARY_DIR}/sarnutils.def
          DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
endif()
if(NOT WIN32)
  # It stands beside the layer's library, or beside the program that has it within itself.
  install(TARGETS winapi_service COMPONENT runtime RUNTIME DESTINATION
          $<IF:$<BOOL:${BUILD_SHARED_LIBS}>,${CMAKE_INSTALL_LIBDIR},${CMAKE_INSTALL_BINDIR}>)
endif()

# What kelp0lang.h names is public; beside it go the headers that those include, and the HTTP family,
# which programs take by itself.
set(included_headers Export.h RegistrationMap.h HttpError.h HttpTool.h HttpEncoder.h HttpClientMap.h
    HttpPostStat.h HttpUrlAnalyzer.h HttpResponse.h HttpClient.h HttpClientRequest.inc
    HttpClientPost.inc FilePath.h FmtText.h)
file(STRINGS common/kelp/kelp0lang/kelp0lang.h includes REGEX "^#include \"kelp0lang/")
list(TRANSFORM includes REPLACE "^#include \"kelp0lang/(.*)\"$" "common/kelp/kelp0lang/\\1")
list(TRANSFORM included_headers PREPEND common/kelp/kelp0lang/)
install(FILES common/kelp/kelp0lang/kelp0lang.h ${includes} ${included_headers}
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kelp0lang COMPONENT development)
install(FILES common/kelptext/Compiler.h common/kelptext/WideChar.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kelptext COMPONENT development)
install(DIRECTORY common/sarnutils DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
        FILES_MATCHING PATTERN "*.h")

# What debuggers show. gdb looks for its file beside the library, or under auto-load by the full name
# of the library's file.
install(FILES views/kelp0lang.natvis DESTINATION ${CMAKE_INSTALL_DATADIR}/kelp0lang
        COMPONENT development)
if(NOT WIN32 AND BUILD_SHARED_LIBS)
  install(FILES views/kelp0lang-gdb.py COMPONENT development
          DESTINATION ${CMAKE_INSTALL_DATADIR}/gdb/auto-load${CMAKE_INSTALL_FULL_LIBDIR}
          RENAME $<TARGET_FILE_NAME:kelp0lang>-gdb.py)
endif()

install(EXPORT kelp0langTargets NAMESPACE kelp0lang:: DESTINATION ${package_folder}
        COMPONENT development)
if(NOT BUILD_SHARED_LIBS AND NOT KELP_DEBIAN_SOURCES)
  set(FIND_EXPAT "find_dependency(EXPAT)")
endif()
configure_package_config_file(cmake/kelp0langConfig.cmake.in
  ${PROJECT_BINARY_DIR}/kelp0langConfig.cmake INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/kelp0langConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/kelp0langConfig.cmake
              ${PROJECT_BINARY_DIR}/kelp0langConfigVersion.cmake
        DESTINATION ${package_folder} COMPONENT development)

# For pkg-config, from where its file stands. It has no word for the strings of static libraries on
# Windows, which are an object file.
if(WIN32 AND NOT BUILD_SHARED_LIBS)
  return()
endif()
file(RELATIVE_PATH PREFIX_FROM_FILE
     ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
set(PC_FLAGS "-I\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
set(PC_LIBRARIES "-lkelp0lang -lsarnutils")
if(WIN32)
  string(APPEND PC_LIBRARIES " -lwininet -lole32")
else()
  string(APPEND PC_FLAGS " -I\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}/winapi")
  string(APPEND PC_LIBRARIES " -lwinapi")
endif()
if(NOT BUILD_SHARED_LIBS)
  string(APPEND PC_FLAGS " -DKELP0LANG_STATIC -DSARNUTILS_STATIC -DWINAPI_STATIC")
  string(PREPEND PC_LIBRARIES "-Wl,-u,kelp0lang_attachment ")
  string(APPEND PC_LIBRARIES " -lkelptext")
  set(PC_NEEDS expat)
endif()
configure_file(cmake/kelp0lang.pc.in ${PROJECT_BINARY_DIR}/kelp0lang.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kelp0lang.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT development)
