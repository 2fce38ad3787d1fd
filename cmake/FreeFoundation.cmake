# SPDX-License-Identifier: MIT
# What runs macOS's room in Objective-C where there is no Mac: the free Foundation on GCC's runtime, and a compiler that
# knows blocks. Without all of it those tests are left out. Where it is there, `free_foundation` is to be linked, and
# VANTLE_OBJCXX says with which compiler its sources are read.
find_program(VANTLE_OBJCXX NAMES clang++-19)
find_path(VANTLE_FOUNDATION Foundation/Foundation.h PATH_SUFFIXES GNUstep)
find_library(VANTLE_FOUNDATION_LIBRARY gnustep-base)
find_library(VANTLE_BLOCKS_LIBRARY BlocksRuntime)
find_path(VANTLE_OBJC_HEADERS objc/objc.h PATHS ${CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES} NO_DEFAULT_PATH)
mark_as_advanced(VANTLE_OBJCXX VANTLE_FOUNDATION VANTLE_FOUNDATION_LIBRARY VANTLE_BLOCKS_LIBRARY VANTLE_OBJC_HEADERS)
set(VANTLE_FREE_FOUNDATION FALSE)
if(VANTLE_OBJCXX AND VANTLE_FOUNDATION AND VANTLE_FOUNDATION_LIBRARY AND VANTLE_BLOCKS_LIBRARY AND VANTLE_OBJC_HEADERS)
  set(VANTLE_FREE_FOUNDATION TRUE)
  set(declarations ${PROJECT_SOURCE_DIR}/tests/darwin/declarations)
  add_library(free_foundation INTERFACE)
  target_include_directories(free_foundation SYSTEM INTERFACE $<$<COMPILE_LANGUAGE:OBJCXX>:${declarations}/gnustep>
                                                              $<$<COMPILE_LANGUAGE:OBJCXX>:${VANTLE_FOUNDATION}>)
  target_compile_definitions(free_foundation INTERFACE $<$<COMPILE_LANGUAGE:OBJCXX>:GNUSTEP>
    $<$<COMPILE_LANGUAGE:OBJCXX>:GNUSTEP_BASE_LIBRARY=1> $<$<COMPILE_LANGUAGE:OBJCXX>:_NATIVE_OBJC_EXCEPTIONS>)
  # The compiler's own headers before those of the other one, of which only those of the runtime are meant.
  target_compile_options(free_foundation INTERFACE
    "$<$<COMPILE_LANGUAGE:OBJCXX>:-fobjc-runtime=gcc;-fblocks;-fobjc-exceptions;-fconstant-string-class=NSConstantString>"
    "$<$<COMPILE_LANGUAGE:OBJCXX>:SHELL:-idirafter ${VANTLE_OBJC_HEADERS}>")
  if(VANTLE_SANITIZE) # what the other compiler's library does not know
    target_compile_options(free_foundation INTERFACE $<$<COMPILE_LANGUAGE:OBJCXX>:-fno-sanitize=function>)
  endif()
  # Blocks first: the Foundation has functions of the same names that copy nothing.
  target_link_libraries(free_foundation INTERFACE ${VANTLE_BLOCKS_LIBRARY} ${VANTLE_FOUNDATION_LIBRARY} objc)
endif()
