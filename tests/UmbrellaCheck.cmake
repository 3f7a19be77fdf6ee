# Every header that exports something is in kelp0lang.h.
#   cmake -D FOLDER=common/kelp/kelp0lang -P UmbrellaCheck.cmake
get_filename_component(FOLDER ${FOLDER} ABSOLUTE)
file(READ ${FOLDER}/kelp0lang.h umbrella)
file(GLOB headers RELATIVE ${FOLDER} ${FOLDER}/*.h)
set(missing)
foreach(header ${headers})
  file(READ ${FOLDER}/${header} text)
  if(text MATCHES "KELP0LANG_API" AND NOT header STREQUAL "Export.h"
     AND NOT umbrella MATCHES "\"kelp0lang/${header}\"")
    list(APPEND missing ${header})
  endif()
endforeach()
if(missing)
  message(FATAL_ERROR "kelp0lang.h lacks ${missing}")
endif()
