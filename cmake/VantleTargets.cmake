# SPDX-License-Identifier: MIT
# How every target of this project is built: one place for warnings, sanitizers and the include root.

function(vantle_target name)
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_compile_options(${name} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor
                                         -Wold-style-cast -Woverloaded-virtual $<$<BOOL:${VANTLE_STRICT}>:-Werror>
                                         $<$<CXX_COMPILER_ID:Clang,AppleClang>:-Wno-sign-conversion> # not in g++'s -Wconversion
                                         $<$<COMPILE_LANG_AND_ID:OBJCXX,Clang,AppleClang>:-Wno-sign-conversion>)
  if(VANTLE_SANITIZE)
    target_compile_options(${name} PUBLIC -fsanitize=${VANTLE_SANITIZE} -fno-sanitize-recover=all
                                          -fno-omit-frame-pointer)
    target_link_options(${name} PUBLIC -fsanitize=${VANTLE_SANITIZE})
  endif()
endfunction()

# A room: every source of this folder (and of its folders) in one static library, with those of the folders that are
# named besides.
function(vantle_room name)
  set(patterns)
  foreach(folder IN LISTS ARGN ITEMS ${CMAKE_CURRENT_SOURCE_DIR})
    list(APPEND patterns ${folder}/*.cpp ${folder}/*.mm ${folder}/*.h)
  endforeach()
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${patterns})
  add_library(${name} STATIC ${sources})
  set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX)
  vantle_target(${name})
endfunction()

# The toolkit's headers and those of the tests take most of the time of every source that uses them, so a target reads
# them once; the rooms with windows share one reading (`vantle_precompile_toolkit`). The standard library's headers pay
# too little for it. The preset "lint" does without, and so shows that each source includes what it uses.
set(VANTLE_TOOLKIT_HEADERS <QGuiApplication> <QQmlEngine> <QQuickItem> <QQuickWindow> <functional> <memory> <string>
                           <vector>)
set(VANTLE_TEST_HEADERS <filesystem> <functional> <gmock/gmock.h> <gtest/gtest.h> <memory> <string> <vector>)
function(vantle_precompile name)
  if(VANTLE_PRECOMPILE)
    target_precompile_headers(${name} PRIVATE ${ARGN})
  endif()
endfunction()

# The reading belongs to a target that defines nothing besides: the compiler refuses one whose definitions are not all
# those of the reader.
function(vantle_precompile_toolkit name)
  if(NOT VANTLE_PRECOMPILE)
    return()
  endif()
  if(NOT TARGET vantle_toolkit)
    set(source ${PROJECT_BINARY_DIR}/vantle_toolkit.cpp)
    file(CONFIGURE OUTPUT ${source} CONTENT "")
    add_library(vantle_toolkit OBJECT ${source})
    vantle_target(vantle_toolkit)
    target_link_libraries(vantle_toolkit PRIVATE Qt6::Quick)
    vantle_precompile(vantle_toolkit ${VANTLE_TOOLKIT_HEADERS})
  endif()
  target_precompile_headers(${name} REUSE_FROM vantle_toolkit)
endfunction()

# A test program: built without optimizing, which would take longer than running it.
function(vantle_test_target name)
  vantle_target(${name})
  target_compile_options(${name} PRIVATE -O0)
  target_link_libraries(${name} PRIVATE GTest::gtest GTest::gmock)
endfunction()

# Gives a room its views: every *.qml of the room's own folder, compiled, as the module `uri`. There is no plugin:
# the room's register function makes the module known (a static library's initialisers do not run by themselves).
function(vantle_qml_module name uri)
  file(GLOB views RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.qml)
  string(REPLACE . / folder ${uri})
  set(options)
  if(VANTLE_SANITIZE)
    # Compiling the views takes longer than everything else of the windows, and is not what is looked at there.
    set(options NO_CACHEGEN)
    set(stub ${CMAKE_CURRENT_BINARY_DIR}/${name}_without_cache.cpp)
    set(function "int qInitResources_qmlcache_${name}()")
    file(CONFIGURE OUTPUT ${stub} CONTENT "@function@;\n@function@ { return 0; }\n" @ONLY)
    target_sources(${name} PRIVATE ${stub})
  endif()
  qt_add_qml_module(${name} URI ${uri} VERSION 1.0 NO_PLUGIN RESOURCE_PREFIX /qt/qml ${options}
                    OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/${folder} QML_FILES ${views} ${ARGN})
  # The collector of types looks again at files that changed, but never at one that is new: its stamp must go then.
  get_target_property(sources ${name} SOURCES)
  set(listing ${CMAKE_CURRENT_BINARY_DIR}/${name}_sources.txt)
  set(listed)
  if(EXISTS ${listing})
    file(READ ${listing} listed)
  endif()
  if(NOT "${listed}" STREQUAL "${sources}")
    file(WRITE ${listing} "${sources}")
    file(REMOVE ${CMAKE_CURRENT_BINARY_DIR}/${name}_autogen/timestamp)
  endif()
  # The compiler of views writes C++ that is not ours to keep free of warnings. Nearly all of its time goes into the same
  # headers of the toolkit, so that all views of a room in one source take as long as two by themselves.
  list(FILTER sources INCLUDE REGEX "/qmlcache/")
  set(views ${sources})
  list(FILTER views EXCLUDE REGEX "_loader\\.cpp$")
  if(views)
    set(together ${CMAKE_CURRENT_BINARY_DIR}/${name}_views.cpp)
    list(TRANSFORM views REPLACE "(.+)" "#include \"\\1\"" OUTPUT_VARIABLE includes)
    list(JOIN includes "\n" includes)
    file(CONFIGURE OUTPUT ${together} CONTENT "@includes@\n" @ONLY)
    set_source_files_properties(${views} PROPERTIES HEADER_FILE_ONLY ON)
    set_source_files_properties(${together} PROPERTIES OBJECT_DEPENDS "${views}" SKIP_AUTOGEN ON)
    target_sources(${name} PRIVATE ${together})
    list(APPEND sources ${together})
  endif()
  set_source_files_properties(${sources} PROPERTIES COMPILE_OPTIONS "-w;-O1")
endfunction()

# The client's side of a Wayland protocol as a library, from its description; its header is NAME-client.h. Written when the
# build is configured, so that static checks find it without a build.
function(vantle_wayland_protocol name description)
  pkg_get_variable(scanner wayland-scanner wayland_scanner)
  set(folder ${CMAKE_CURRENT_BINARY_DIR}/${name})
  file(MAKE_DIRECTORY ${folder})
  execute_process(COMMAND ${scanner} client-header ${description} ${folder}/${name}-client.h COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND ${scanner} private-code ${description} ${folder}/${name}-protocol.c COMMAND_ERROR_IS_FATAL ANY)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${description})
  add_library(vantle_wayland_${name} STATIC ${folder}/${name}-protocol.c)
  target_include_directories(vantle_wayland_${name} SYSTEM PUBLIC ${folder})
endfunction()
