# What every target of this tree has in common.

add_library(kelp_options INTERFACE)
if(MSVC)
  # Not run. The last one is about attributes of other compilers.
  target_compile_options(kelp_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:
    /W4 /WX /permissive- /utf-8 /Zc:__cplusplus /Zc:preprocessor /EHsc /wd5030>)
else()
  target_compile_options(kelp_options INTERFACE
    $<$<COMPILE_LANGUAGE:CXX>:-Wall -Wextra -Wpedantic -Werror>)
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
if(WIN32)
  # The SDK headers are read in their wide form and without the old macros min and max.
  target_compile_definitions(kelp_options INTERFACE
    UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0601)
  # A DLL keeps its unadorned name, and programs of this tree start without a PATH to the compiler's.
  set(CMAKE_SHARED_LIBRARY_PREFIX "")
  foreach(dll libgcc_s_seh-1.dll libstdc++-6.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${dll}
                    OUTPUT_VARIABLE dll_path OUTPUT_STRIP_TRAILING_WHITESPACE)
    file(COPY ${dll_path} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY} FOLLOW_SYMLINK_CHAIN)
    install(FILES ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${dll} DESTINATION ${CMAKE_INSTALL_BINDIR})
  endforeach()
endif()
