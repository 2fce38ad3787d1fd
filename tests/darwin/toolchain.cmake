# SPDX-License-Identifier: MIT
# Compiles and links for a Mac where there is none: clang and LLVM's C++ library, the declarations beside this file in
# place of the system's headers, and text files in place of its libraries. scripts/check-darwin prepares the rest
# (VANTLE_MAC_PARTS) and says for which processor (VANTLE_MAC_PROCESSOR).
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VANTLE_MAC_PARTS VANTLE_MAC_PROCESSOR)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)

set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_VERSION 23)
set(CMAKE_SYSTEM_PROCESSOR ${VANTLE_MAC_PROCESSOR})
set(CMAKE_OSX_ARCHITECTURES ${VANTLE_MAC_PROCESSOR} CACHE STRING "")
set(CMAKE_OSX_DEPLOYMENT_TARGET 14.0 CACHE STRING "")
set(CMAKE_OSX_SYSROOT ${VANTLE_MAC_PARTS}/sdk CACHE PATH "")

set(llvm /usr/lib/llvm-19)
foreach(language C CXX OBJCXX)
  set(CMAKE_${language}_COMPILER_TARGET ${VANTLE_MAC_PROCESSOR}-apple-macos14)
endforeach()
set(CMAKE_C_COMPILER ${llvm}/bin/clang)
set(CMAKE_CXX_COMPILER ${llvm}/bin/clang++)
set(CMAKE_OBJCXX_COMPILER ${llvm}/bin/clang++)
set(CMAKE_AR ${llvm}/bin/llvm-ar CACHE FILEPATH "")
set(CMAKE_RANLIB ${llvm}/bin/llvm-ranlib CACHE FILEPATH "")
set(CMAKE_INSTALL_NAME_TOOL ${llvm}/bin/llvm-install-name-tool CACHE FILEPATH "")

set(declarations ${CMAKE_CURRENT_LIST_DIR}/declarations)
set(CMAKE_C_FLAGS_INIT "-nostdlibinc -isystem ${declarations}/darwin -isystem ${declarations}/c")
set(CMAKE_CXX_FLAGS_INIT "-nostdlibinc -isystem ${VANTLE_MAC_PARTS}/libcxx -isystem ${llvm}/include/c++/v1 \
-isystem ${declarations}/darwin -isystem ${declarations}/c")
set(CMAKE_OBJCXX_FLAGS_INIT "${CMAKE_CXX_FLAGS_INIT} -isystem ${declarations}/foundation")
set(CMAKE_EXE_LINKER_FLAGS_INIT -fuse-ld=lld)

# What a package manager has on a Mac: nothing of this system's own is looked at.
set(CMAKE_FIND_ROOT_PATH ${VANTLE_MAC_PARTS}/packages)
set(CMAKE_PREFIX_PATH ${VANTLE_MAC_PARTS}/packages)
foreach(kind PACKAGE LIBRARY INCLUDE)
  set(CMAKE_FIND_ROOT_PATH_MODE_${kind} ONLY)
endforeach()
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(ENV{PKG_CONFIG_LIBDIR} ${VANTLE_MAC_PARTS}/packages/lib/pkgconfig)
set(ENV{PKG_CONFIG_PATH} "")
