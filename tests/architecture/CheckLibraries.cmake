# SPDX-License-Identifier: MIT
# Fails when the program needs a shared library that is neither the compiler's own nor named in ALSO (a regular
# expression).
execute_process(COMMAND ${READELF} -d ${PROGRAM} OUTPUT_VARIABLE dynamic COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "NEEDED[^\n]*\\[[^]]+\\]" needed "${dynamic}")
if(NOT needed)
  message(FATAL_ERROR "${PROGRAM} names no library at all: the check would see nothing")
endif()
foreach(line IN LISTS needed)
  string(REGEX REPLACE ".*\\[([^]]+)\\]" "\\1" library "${line}")
  if(ALSO AND library MATCHES "^(${ALSO})\\.so")
    continue()
  endif()
  if(NOT library MATCHES "^(libstdc\\+\\+|libc\\+\\+|libc\\+\\+abi|libm|libgcc_s|libc|libasan|libubsan|libtsan|ld-linux[^.]*)\\.so")
    message(SEND_ERROR "${PROGRAM} needs ${library}")
  endif()
endforeach()
