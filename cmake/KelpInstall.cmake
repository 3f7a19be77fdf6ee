# cmake --install lays out the libraries, their headers under the names that sources use, and a CMake
# package: find_package(kelp0lang) gives kelp0lang::kelp0lang.
include(CMakePackageConfigHelpers)

set(libraries kelp0lang sarnutils)
if(NOT WIN32)
  list(APPEND libraries winapi)
  install(DIRECTORY common/winapi/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/winapi)
endif()
install(TARGETS ${libraries} EXPORT kelp0langTargets
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
if(NOT WIN32)
  # It stands beside the layer's library.
  install(TARGETS winapi_service RUNTIME DESTINATION ${CMAKE_INSTALL_LIBDIR})
endif()
# What kelp0lang.h names is public; beside it go the headers that those include, and the HTTP family,
# which programs take by itself.
set(included_headers Export.h RegistrationMap.h HttpError.h HttpTool.h HttpEncoder.h HttpClientMap.h
    HttpPostStat.h HttpUrlAnalyzer.h HttpResponse.h HttpClient.h HttpClientRequest.inc
    HttpClientPost.inc)
file(STRINGS common/kelp/kelp0lang/kelp0lang.h includes REGEX "^#include \"kelp0lang/")
list(TRANSFORM includes REPLACE "^#include \"kelp0lang/(.*)\"$" "common/kelp/kelp0lang/\\1")
list(TRANSFORM included_headers PREPEND common/kelp/kelp0lang/)
install(FILES common/kelp/kelp0lang/kelp0lang.h ${includes} ${included_headers}
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kelp0lang)
# gdb looks for its file beside the library, or under auto-load by the library's full name.
install(FILES common/kelp/kelp0lang/FmtText.h common/kelp/kelp0lang/FilePath.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kelp0lang)
install(FILES views/kelp0lang.natvis DESTINATION ${CMAKE_INSTALL_DATADIR}/kelp0lang)
if(NOT WIN32)
  install(FILES views/kelp0lang-gdb.py
          DESTINATION ${CMAKE_INSTALL_DATADIR}/gdb/auto-load${CMAKE_INSTALL_FULL_LIBDIR}
          RENAME $<TARGET_FILE_NAME:kelp0lang>-gdb.py)
endif()
install(FILES common/kelptext/Compiler.h common/kelptext/WideChar.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kelptext)
install(DIRECTORY common/sarnutils DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILES_MATCHING PATTERN "*.h")
install(EXPORT kelp0langTargets NAMESPACE kelp0lang::
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/kelp0lang)

configure_package_config_file(cmake/kelp0langConfig.cmake.in
  ${PROJECT_BINARY_DIR}/kelp0langConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/kelp0lang)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/kelp0langConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/kelp0langConfig.cmake
              ${PROJECT_BINARY_DIR}/kelp0langConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/kelp0lang)
