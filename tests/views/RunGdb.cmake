# gdb shows the library's values as text, by the printers that it loads beside the library.
#   cmake -D GDB=gdb -D PROGRAM=shown -D EXPECTED=Shown.txt -D NATVIS=kelp0lang.natvis -P RunGdb.cmake
execute_process(
  COMMAND ${GDB} -nx -batch -iex "set auto-load safe-path /" -ex "set debuginfod enabled off"
          -ex "set host-charset UTF-8" -ex "set print pretty on" -ex "break Stop" -ex run -ex up
          -ex "print narrow" -ex "print wide" -ex "print nothing" -ex "print values"
          -ex "print file" -ex "print units"
          -ex "python import xml.dom.minidom; xml.dom.minidom.parse('${NATVIS}')" ${PROGRAM}
  OUTPUT_VARIABLE shown ERROR_VARIABLE errors RESULT_VARIABLE result)
if(errors MATCHES "ptrace: Operation not permitted|Could not trace the inferior")
  message("skipped: no process can be looked into here")
  return()
endif()
if(result OR errors MATCHES "Python Exception|Traceback|Error while")
  message(FATAL_ERROR "gdb: ${result}\n${errors}\n${shown}")
endif()
file(STRINGS ${EXPECTED} lines ENCODING UTF-8)
foreach(line IN LISTS lines)
  string(FIND "${shown}" "${line}\n" place)
  if(place EQUAL -1)
    message(FATAL_ERROR "gdb doesn't show ${line}\n${shown}\n${errors}")
  endif()
endforeach()
