# The target expat: the XML parser beneath sarnutils. Debian's package serves Linux; for Windows it is
# compiled here, into sarnutils, from the source that scripts/setup.sh fetches.
if(NOT WIN32)
  find_package(EXPAT REQUIRED)
  add_library(expat ALIAS EXPAT::EXPAT)
  return()
endif()

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
add_library(expat STATIC ${lib}/xmlparse.c ${lib}/xmlrole.c ${lib}/xmltok.c)
target_include_directories(expat SYSTEM PUBLIC ${lib})
# As Debian builds it: with what a document type declares, and its guard against entities that grow.
target_compile_definitions(expat PUBLIC XML_STATIC PRIVATE XML_DTD XML_CONTEXT_BYTES=1024)
