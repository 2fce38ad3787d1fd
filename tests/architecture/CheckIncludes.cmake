# SPDX-License-Identifier: MIT
# Fails when a room includes what it may not know of, or asks the preprocessor which system it is on.
# Arrows point one way: app → panel, settings, update → look, engine → ports → base, and platform → ports, base; a system
# of the Unix family also uses platform/posix, which asks it where only it can answer.
cmake_minimum_required(VERSION 3.25)

# Whose headers a room includes as "...".
set(base_rooms base)
set(engine_rooms base engine)
set(engine/ports_rooms base engine/ports)
set(platform_rooms base engine/ports platform/OwnedMachine.h platform/shared) # Platform.h itself, and OwnedMachine.h
set(platform/shared_rooms base engine/ports platform/shared)
set(platform/posix_rooms base engine/ports platform/OwnedMachine.h platform/Platform.h platform/shared platform/posix)
set(platform/linux_rooms base engine/ports platform/OwnedMachine.h platform/Platform.h platform/shared platform/posix
    platform/linux)
set(platform/darwin_rooms base engine/ports platform/OwnedMachine.h platform/Platform.h platform/shared platform/posix platform/darwin)
set(platform/simulated_rooms base engine/ports platform/shared platform/simulated)
set(status_rooms base status)
set(command_rooms base status command)
set(command/linux_rooms base status command)
set(command/ports_rooms base status command/ports)
set(remote_rooms base engine platform/shared status remote)
set(remote/ports_rooms base status remote/ports)
set(update_rooms base engine platform/shared update)
set(look_rooms base look engine)
set(panel_rooms base engine platform/shared look panel)
set(settings_rooms base engine platform/shared look settings update)
set(look/ports_rooms base look/ports)
set(panel/ports_rooms base panel/ports)
set(settings/ports_rooms base settings/ports)
set(desktop_rooms base look/ports panel/ports settings/ports remote/ports platform/shared desktop/Desktop.h desktop/QtEventLoop.h)
set(desktop/linux_rooms base status look/ports panel/ports settings/ports remote/ports platform/shared
    platform/linux/files platform/linux/sockets platform/linux/x11 platform/posix/files integrations/gnome-shell desktop/Desktop.h
    desktop/PressElsewhere.h desktop/linux)
set(desktop/darwin_rooms base look/ports panel/ports settings/ports remote/ports platform/shared platform/darwin/cocoa
    desktop/Desktop.h desktop/PressElsewhere.h desktop/darwin)
# Of the system that the program was built for, the headers that all systems have.
set(app_rooms base engine platform/OwnedMachine.h platform/Platform.h platform/shared look panel settings update remote desktop/Desktop.h
    desktop/QtEventLoop.h app)
# What tests look at the program with must not be the program itself.
set(tests/support_rooms base/Pid.h tests/support)

# What a room includes as <...>. Headers of the C++ standard have no dot in their names; those of every system have,
# and the toolkit's begin with a Q.
set(standard "[a-z0-9_]+")
set(toolkit "(Qt[A-Za-z]+/)?[Qq][A-Za-z_]+(\\.h)?")
# Of these only one room may know: they are of a system themselves.
set(toolkit_of_systems "include[ \t]*<[^>]*(DBus|_platform\\.h|qpa/)")
set(base_headers "${standard}")
set(engine_headers "${standard}")
set(engine/ports_headers "${standard}")
set(platform_headers "${standard}")
set(platform/shared_headers "${standard}|unicode/[a-z0-9]+\\.h|poll\\.h")
# What every Unix has: POSIX, and the lock of a whole file.
set(platform/posix_headers
    "${standard}|(fcntl|poll|pthread|spawn|unistd|sys/(file|resource|stat|wait))\\.h")
set(platform/linux_headers "${standard}|[a-z0-9_/-]+\\.h")
# POSIX, and the system's own libraries in C and in Objective-C.
set(platform/darwin_headers
    "${standard}|(fcntl|libproc|poll|pthread|spawn|unistd)\\.h|sys/(resource|stat|sysctl|time|wait)\\.h|dispatch/dispatch\\.h"
    "(AppKit/AppKit|CoreAudio/CoreAudio|CoreFoundation/CoreFoundation|CoreGraphics/CoreGraphics)\\.h"
    "(Foundation/Foundation|IOKit/pwr_mgt/IOPMLib)\\.h"
    "(ServiceManagement/ServiceManagement|UserNotifications/UserNotifications)\\.h")
string(JOIN "|" platform/darwin_headers ${platform/darwin_headers})
set(platform/simulated_headers "${standard}")
set(status_headers "${standard}")
set(command_headers "${standard}")
set(command/ports_headers "${standard}")
set(command/linux_headers "${standard}|systemd/sd-bus\\.h|(fcntl|poll|unistd)\\.h")
set(remote_headers "${standard}")
set(remote/ports_headers "${standard}")
set(update_headers "${standard}|${toolkit}|unicode/[a-z0-9]+\\.h")
set(look_headers "${standard}|${toolkit}")
set(panel_headers "${standard}|${toolkit}")
set(settings_headers "${standard}|${toolkit}")
set(look/ports_headers "${standard}|${toolkit}")
set(panel/ports_headers "${standard}|${toolkit}")
set(settings/ports_headers "${standard}|${toolkit}")
set(desktop_headers "${standard}|${toolkit}")
set(desktop/linux_headers "${standard}|${toolkit}|xcb/xcb\\.h|malloc\\.h|wayland-client\\.h|qpa/(qplatform(nativeinterface|screen)|qwindowsysteminterface)\\.h|private/qhighdpiscaling_p\\.h|poll\\.h|unistd\\.h|sys/(mman|socket|un)\\.h")
set(desktop/darwin_headers "${standard}|${toolkit}|AppKit/AppKit\\.h|UniformTypeIdentifiers/UniformTypeIdentifiers\\.h|malloc/malloc\\.h")
set(app_headers "${standard}|${toolkit}")
# The one source of all that knows the JSON library, and the engine's own knowledge that a platform still uses.
set(exceptions "base/Json.cpp <nlohmann/json.hpp>" "platform/linux/LinuxMachine.cpp <engine/AppTrees.h>")

set(system_questions
    "__linux__|__APPLE__|_WIN32|__unix__|__FreeBSD__|__MACH__|Q_OS_|TARGET_OS_")

foreach(room base engine engine/ports platform platform/shared platform/posix platform/linux platform/darwin
             platform/simulated look look/ports update panel panel/ports settings settings/ports status command command/ports command/linux remote
             remote/ports desktop
             desktop/linux desktop/darwin app tests/support)
  set(globbing GLOB_RECURSE)
  if(room MATCHES "^(platform|desktop|command)$")
    set(globbing GLOB) # what stands in its folders are rooms of their own
  endif()
  file(${globbing} sources ${ROOT}/${room}/*.cpp ${ROOT}/${room}/*.h ${ROOT}/${room}/*.mm)
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
      if(line MATCHES "${toolkit_of_systems}" AND NOT room STREQUAL desktop/linux)
        message(SEND_ERROR "${name} asks a system through the toolkit: ${line}")
      endif()
      if(line MATCHES "#[ \t]*(include|import)[ \t]*\"([^\"]+)\"" AND DEFINED ${room}_rooms)
        set(included ${CMAKE_MATCH_2})
        set(allowed FALSE)
        foreach(prefix IN LISTS ${room}_rooms)
          if(included MATCHES "^${prefix}(/|$)" OR NOT included MATCHES "/")
            set(allowed TRUE)
          endif()
        endforeach()
        if(NOT allowed AND NOT "${name} <${included}>" IN_LIST exceptions)
          message(SEND_ERROR "${name} may not know of ${included}")
        endif()
        list(REMOVE_ITEM exceptions "${name} <${included}>")
      endif()
      if(line MATCHES "#[ \t]*(include|import)[ \t]*<([^>]+)>" AND DEFINED ${room}_headers)
        set(included ${CMAKE_MATCH_2})
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
