// SPDX-License-Identifier: MIT
// What a library's headers ask about the system that they are compiled for.
#pragma once

#define TARGET_OS_MAC 1
#define TARGET_OS_OSX 1
#define TARGET_OS_IPHONE 0
#define TARGET_OS_IOS 0
#define TARGET_OS_TV 0
#define TARGET_OS_WATCH 0
#define TARGET_OS_VISION 0
#define TARGET_OS_SIMULATOR 0
#define TARGET_OS_EMBEDDED 0
#define TARGET_OS_WIN32 0
#define TARGET_OS_LINUX 0
#define TARGET_OS_UNIX 0
