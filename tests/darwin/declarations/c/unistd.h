// SPDX-License-Identifier: MIT
#pragma once
#include <vantle_types.h>

#define STDIN_FILENO 0
#define STDOUT_FILENO 1
#define STDERR_FILENO 2
#define F_OK 0
#define R_OK 4
#define W_OK 2
#define X_OK 1
#define _SC_OPEN_MAX 5
#define _SC_NPROCESSORS_ONLN 58

VANTLE_C_BEGIN
__attribute__((noreturn)) void _exit(int status);
int access(const char* path, int mode);
int close(int descriptor);
int dup(int descriptor);
int dup2(int descriptor, int number);
int execv(const char* path, char* const arguments[]);
int execve(const char* path, char* const arguments[], char* const environment[]);
pid_t fork(void);
int fsync(int descriptor);
int ftruncate(int descriptor, off_t size);
gid_t getegid(void);
uid_t geteuid(void);
int getdtablesize(void);
pid_t getpid(void);
pid_t getppid(void);
int pause(void);
uid_t getuid(void);
int isatty(int descriptor);
int pipe(int ends[2]);
ssize_t read(int descriptor, void* bytes, size_t size);
ssize_t readlink(const char* path, char* target, size_t size);
ssize_t readlinkat(int folder, const char* path, char* target, size_t size);
int rmdir(const char* path);
pid_t setsid(void);
long sysconf(int name);
int unlink(const char* path);
int unlinkat(int folder, const char* path, int flags);
int usleep(useconds_t micros);
ssize_t write(int descriptor, const void* bytes, size_t size);
VANTLE_C_END
