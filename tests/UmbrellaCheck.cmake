cmake_minimum_required(VERSION 3.25)  # its policies
# Every header that exports something is in kelp0lang.h, but for the one that brings <filesystem>.
#   cmake -D FOLDER=common/kelp/kelp0lang -P UmbrellaCheck.cmake
get_filename_component(FOLDER ${FOLDER} ABSOLUTE)
file(READ ${FOLDER}/kelp0lang.h umbrella)
file(GLOB headers RELATIVE ${FOLDER} ${FOLDER}/*.h)
set(apart Export.h FilePath.h)
set(missing)
foreach(header ${headers})
  file(READ ${FOLDER}/${header} text)
  if(text MATCHES "KELP0LANG_API" AND NOT header IN_LIST apart
     AND NOT umbrella MATCHES "\"kelp0lang/${header}\"")
    list(APPEND missing ${header})
  endif()
endforeach()
if(missing)
  message(FATAL_ERROR "kelp0lang.h lacks ${missing}")
endif()
