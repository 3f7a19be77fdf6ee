# What every target of this tree has in common.

add_library(kelp_options INTERFACE)
if(MSVC)
  # Not run. The last one is about attributes of other compilers.
  target_compile_options(kelp_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:
    /W4 /permissive- /utf-8 /Zc:__cplusplus /Zc:preprocessor /EHsc /wd5030>)
  if(KELP_WARNINGS_ARE_ERRORS)
    target_compile_options(kelp_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:/WX>)
  endif()
else()
  target_compile_options(kelp_options INTERFACE
    $<$<COMPILE_LANGUAGE:CXX>:-Wall -Wextra -Wpedantic>)
  if(KELP_WARNINGS_ARE_ERRORS)
    target_compile_options(kelp_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Werror>)
  endif()
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # gcc 12 sees overlaps within std::string's operator+ that aren't there.
  target_compile_options(kelp_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
endif()
if(KELP_SANITIZE)
  target_compile_options(kelp_options INTERFACE
    -fsanitize=${KELP_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(kelp_options INTERFACE -fsanitize=${KELP_SANITIZE})
endif()
if(KELP_COVERAGE)
  # Counters of several threads aren't lost.
  target_compile_options(kelp_options INTERFACE --coverage -fprofile-update=atomic)
  target_link_options(kelp_options INTERFACE --coverage)
endif()
if(WIN32)
  # The SDK headers are read in their wide form and without the old macros min and max.
  target_compile_definitions(kelp_options INTERFACE
    UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0601)
  # A DLL keeps its unadorned name.
  set(CMAKE_SHARED_LIBRARY_PREFIX "")
endif()
if(MINGW AND PROJECT_IS_TOP_LEVEL)
  # Programs of this tree start without a PATH to the compiler's own.
  foreach(dll libgcc_s_seh-1.dll libstdc++-6.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${dll}
                    OUTPUT_VARIABLE dll_path OUTPUT_STRIP_TRAILING_WHITESPACE)
    file(COPY ${dll_path} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY} FOLLOW_SYMLINK_CHAIN)
    install(FILES ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${dll} DESTINATION ${CMAKE_INSTALL_BINDIR}
            COMPONENT runtime)
  endforeach()
endif()

# kelp_library(NAME MACRO): a library of this tree, shared or static as the project is, with the
# alias that programs of other projects name. MACRO_BUILD marks its own sources, and MACRO_STATIC,
# where it is static, all that see its headers.
function(kelp_library name macro)
  add_library(kelp0lang::${name} ALIAS ${name})
  target_compile_features(${name} PUBLIC cxx_std_20)  # for the headers too
  target_compile_definitions(${name} PRIVATE ${macro}_BUILD)
  target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:kelp_options>)
  if(NOT BUILD_SHARED_LIBS)
    target_compile_definitions(${name} PUBLIC ${macro}_STATIC)
  endif()
  if(MINGW AND BUILD_SHARED_LIBS)
    # The names that the DLL exports, for tool chains that don't read a library of this one's.
    target_link_options(${name} PRIVATE -Wl,--output-def,${PROJECT_BINARY_DIR}/${name}.def)
  endif()
  set_target_properties(${name} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
endfunction()
