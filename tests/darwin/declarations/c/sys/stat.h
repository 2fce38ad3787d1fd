// SPDX-License-Identifier: MIT
// The layout and the numbers of stat(2).
#pragma once
#include <vantle_types.h>

#define S_IFMT 0170000
#define S_IFDIR 0040000
#define S_IFREG 0100000
#define S_IFLNK 0120000
#define S_ISDIR(mode) (((mode)&S_IFMT) == S_IFDIR)
#define S_ISREG(mode) (((mode)&S_IFMT) == S_IFREG)
#define S_ISLNK(mode) (((mode)&S_IFMT) == S_IFLNK)
#define S_ISVTX 0001000
#define S_IWGRP 0000020
#define S_IWOTH 0000002

struct stat {
  dev_t st_dev;
  mode_t st_mode;
  nlink_t st_nlink;
  ino_t st_ino;
  uid_t st_uid;
  gid_t st_gid;
  dev_t st_rdev;
  struct timespec st_atimespec;
  struct timespec st_mtimespec;
  struct timespec st_ctimespec;
  struct timespec st_birthtimespec;
  off_t st_size;
  blkcnt_t st_blocks;
  blksize_t st_blksize;
  uint32_t st_flags;
  uint32_t st_gen;
  int32_t st_lspare;
  int64_t st_qspare[2];
};

VANTLE_C_BEGIN
int chmod(const char* path, mode_t mode);
int fchmod(int descriptor, mode_t mode);
int fstat(int descriptor, struct stat* about);
int fstatat(int folder, const char* path, struct stat* about, int flags);
int lstat(const char* path, struct stat* about);
int mkdir(const char* path, mode_t mode);
int mkdirat(int folder, const char* path, mode_t mode);
int stat(const char* path, struct stat* about);
mode_t umask(mode_t mask);
VANTLE_C_END
