// SPDX-License-Identifier: MIT
// The numbers of open(2) and fcntl(2).
#pragma once
#include <vantle_types.h>

#define O_RDONLY 0x0000
#define O_WRONLY 0x0001
#define O_RDWR 0x0002
#define O_NONBLOCK 0x0004
#define O_APPEND 0x0008
#define O_NOFOLLOW 0x0100
#define O_CREAT 0x0200
#define O_TRUNC 0x0400
#define O_EXCL 0x0800
#define O_NOCTTY 0x00020000
#define O_DIRECTORY 0x00100000
#define O_CLOEXEC 0x01000000

#define AT_FDCWD (-2)
#define AT_SYMLINK_NOFOLLOW 0x0020

#define F_DUPFD 0
#define F_GETFD 1
#define F_SETFD 2
#define F_GETFL 3
#define F_SETFL 4
#define F_GETPATH 50 // the path of what is open, of at most PATH_MAX bytes
#define F_FULLFSYNC 51
#define F_DUPFD_CLOEXEC 67
#define FD_CLOEXEC 1

VANTLE_C_BEGIN
int fcntl(int descriptor, int command, ...);
int open(const char* path, int flags, ...);
int openat(int folder, const char* path, int flags, ...);
VANTLE_C_END
