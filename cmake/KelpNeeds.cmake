# What the libraries take from elsewhere: Boost (headers alone) and Expat, the XML parser beneath
# sarnutils, which is the target kelp_expat. Both are found, but in a cross build for Windows, for which
# Debian has neither.
set(is_for_windows OFF)
if(WIN32 AND CMAKE_CROSSCOMPILING)
  set(is_for_windows ON)
endif()
option(KELP_DEBIAN_SOURCES
  "Boost's headers of this machine, and Expat from the source of Debian's package" ${is_for_windows})

if(NOT KELP_DEBIAN_SOURCES)
  find_package(Boost REQUIRED GLOBAL)
  find_package(EXPAT REQUIRED GLOBAL)
  add_library(kelp_expat ALIAS EXPAT::EXPAT)
  return()
endif()

# Debian's headers serve Windows too, through a folder that holds nothing else.
set(Boost_INCLUDE_DIR ${PROJECT_BINARY_DIR}/boost-headers)
file(MAKE_DIRECTORY ${Boost_INCLUDE_DIR})
file(CREATE_LINK /usr/include/boost ${Boost_INCLUDE_DIR}/boost SYMBOLIC)
find_package(Boost REQUIRED GLOBAL)

enable_language(C)
set(version 2.5.0)
set(archive ${PROJECT_SOURCE_DIR}/build/expat/expat_${version}.orig.tar.gz)
set(folder ${PROJECT_BINARY_DIR}/expat-${version})
if(NOT EXISTS ${archive})
  execute_process(COMMAND bash -c ". scripts/setup.sh; need_expat_source"
                  WORKING_DIRECTORY ${PROJECT_SOURCE_DIR} COMMAND_ERROR_IS_FATAL ANY)
endif()
if(NOT EXISTS ${folder})
  file(ARCHIVE_EXTRACT INPUT ${archive} DESTINATION ${folder} PATTERNS */expat/lib/*)
endif()
file(GLOB lib ${folder}/*/expat/lib)
# What its own configuration would find out; the rest are definitions below.
file(WRITE ${lib}/expat_config.h "#define BYTEORDER 1234\n")
add_library(kelp_expat STATIC ${lib}/xmlparse.c ${lib}/xmlrole.c ${lib}/xmltok.c)
target_include_directories(kelp_expat SYSTEM PUBLIC $<BUILD_INTERFACE:${lib}>)
# As Debian builds it: with what a document type declares, and its guard against entities that grow.
target_compile_definitions(kelp_expat PUBLIC XML_STATIC PRIVATE XML_DTD XML_CONTEXT_BYTES=1024)
