# SPDX-License-Identifier: MIT
# Fails when a room includes what it may not know of, or asks the preprocessor which system it is on.
# Arrows point one way: app → panel, settings, update → look, engine → ports → base, and platform → ports, base.
cmake_minimum_required(VERSION 3.25)

# Whose headers a room includes as "...".
set(base_rooms base)
set(engine_rooms base engine)
set(platform_rooms base engine/ports platform)
set(update_rooms base engine platform/shared update)
set(look_rooms base look engine)
set(panel_rooms base engine platform/shared look panel)
set(settings_rooms base engine platform/shared look settings update)

# What a room includes as <...>. Headers of the C++ standard have no dot in their names; those of every system have,
# and the toolkit's begin with a Q.
set(standard "[a-z0-9_]+")
set(toolkit "(Qt[A-Za-z]+/)?[Qq][A-Za-z_]+(\\.h)?")
set(base_headers "${standard}")
set(engine_headers "${standard}")
set(platform_headers "${standard}|[a-z0-9_/-]+\\.h")
set(update_headers "${standard}|${toolkit}|unicode/[a-z0-9]+\\.h")
set(look_headers "${standard}|${toolkit}")
set(panel_headers "${standard}|${toolkit}")
set(settings_headers "${standard}|${toolkit}")
# The one source of all that knows the JSON library; what still asks the system from a room of the toolkit; and the
# engine's own knowledge that a platform still uses.
set(exceptions "base/Json.cpp <nlohmann/json.hpp>" "look/HeapTrim.cpp <malloc.h>"
    "look/LookEngine.cpp <private/qfont_p.h>" "panel/Compositing.cpp <xcb/xcb.h>"
    "panel/tray/XEmbedIcon.h <xcb/xcb.h>" "platform/linux/LinuxMachine.cpp <engine/AppTrees.h>"
    "platform/linux/catalog/DesktopCatalog.cpp <engine/Protection.h>"
    "platform/simulated/SimulatedProcesses.h <engine/ProcessIdentity.h>")

set(system_questions
    "__linux__|__APPLE__|_WIN32|__unix__|__FreeBSD__|__MACH__|Q_OS_|TARGET_OS_")

foreach(room base engine platform look update panel settings app)
  file(GLOB_RECURSE sources ${ROOT}/${room}/*.cpp ${ROOT}/${room}/*.h ${ROOT}/${room}/*.mm)
  if(NOT sources)
    message(SEND_ERROR "${room}/ holds no source: the check would see nothing")
  endif()
  foreach(source IN LISTS sources)
    file(RELATIVE_PATH name ${ROOT} ${source})
    file(STRINGS ${source} directives REGEX "^[ \t]*#")
    foreach(line IN LISTS directives)
      if(line MATCHES "#[ \t]*(el)?if" AND line MATCHES "${system_questions}")
        message(SEND_ERROR "${name} asks which system it is on: ${line}")
      endif()
      if(line MATCHES "#[ \t]*include[ \t]*\"([^\"]+)\"" AND DEFINED ${room}_rooms)
        set(included ${CMAKE_MATCH_1})
        set(allowed FALSE)
        foreach(prefix IN LISTS ${room}_rooms)
          if(included MATCHES "^${prefix}/" OR NOT included MATCHES "/")
            set(allowed TRUE)
          endif()
        endforeach()
        if(NOT allowed AND NOT "${name} <${included}>" IN_LIST exceptions)
          message(SEND_ERROR "${name} may not know of ${included}")
        endif()
        list(REMOVE_ITEM exceptions "${name} <${included}>")
      endif()
      if(line MATCHES "#[ \t]*include[ \t]*<([^>]+)>" AND DEFINED ${room}_headers)
        set(included ${CMAKE_MATCH_1})
        if(NOT included MATCHES "^(${${room}_headers})$" AND NOT "${name} <${included}>" IN_LIST exceptions)
          message(SEND_ERROR "${name} may not know of <${included}>")
        endif()
        list(REMOVE_ITEM exceptions "${name} <${included}>")
      endif()
    endforeach()
  endforeach()
endforeach()
foreach(unused IN LISTS exceptions)
  message(SEND_ERROR "no longer an exception: ${unused}")
endforeach()
