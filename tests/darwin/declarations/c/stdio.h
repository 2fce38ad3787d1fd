// SPDX-License-Identifier: MIT
#pragma once
#include <vantle_types.h>

typedef struct __sFILE FILE;
typedef long long fpos_t;

#define EOF (-1)
#define BUFSIZ 1024
#define FILENAME_MAX 1024
#define FOPEN_MAX 20
#define L_tmpnam 1024
#define TMP_MAX 308915776
#define SEEK_SET 0
#define SEEK_CUR 1
#define SEEK_END 2
#define _IOFBF 0
#define _IOLBF 1
#define _IONBF 2

VANTLE_C_BEGIN
extern FILE* __stderrp;
extern FILE* __stdinp;
extern FILE* __stdoutp;
int asprintf(char** result, const char* format, ...);
void clearerr(FILE* file);
int fclose(FILE* file);
FILE* fdopen(int descriptor, const char* mode);
int feof(FILE* file);
int ferror(FILE* file);
int fflush(FILE* file);
int fgetc(FILE* file);
int fgetpos(FILE* file, fpos_t* place);
char* fgets(char* text, int size, FILE* file);
int fileno(FILE* file);
FILE* fopen(const char* path, const char* mode);
int fprintf(FILE* file, const char* format, ...);
int fputc(int character, FILE* file);
int fputs(const char* text, FILE* file);
size_t fread(void* bytes, size_t size, size_t count, FILE* file);
FILE* freopen(const char* path, const char* mode, FILE* file);
int fscanf(FILE* file, const char* format, ...);
int fseek(FILE* file, long offset, int from);
int fseeko(FILE* file, off_t offset, int from);
int fsetpos(FILE* file, const fpos_t* place);
long ftell(FILE* file);
off_t ftello(FILE* file);
size_t fwrite(const void* bytes, size_t size, size_t count, FILE* file);
int getc(FILE* file);
int getchar(void);
void perror(const char* text);
int printf(const char* format, ...);
int putc(int character, FILE* file);
int putchar(int character);
int puts(const char* text);
int remove(const char* path);
int rename(const char* path, const char* newPath);
int renameat(int folder, const char* path, int newFolder, const char* newPath);
void rewind(FILE* file);
int scanf(const char* format, ...);
void setbuf(FILE* file, char* buffer);
int setvbuf(FILE* file, char* buffer, int mode, size_t size);
int snprintf(char* text, size_t size, const char* format, ...);
int sprintf(char* text, const char* format, ...);
int sscanf(const char* text, const char* format, ...);
FILE* tmpfile(void);
char* tmpnam(char* name);
int ungetc(int character, FILE* file);
int vasprintf(char** result, const char* format, va_list arguments);
int vfprintf(FILE* file, const char* format, va_list arguments);
int vfscanf(FILE* file, const char* format, va_list arguments);
int vprintf(const char* format, va_list arguments);
int vscanf(const char* format, va_list arguments);
int vsnprintf(char* text, size_t size, const char* format, va_list arguments);
int vsprintf(char* text, const char* format, va_list arguments);
int vsscanf(const char* text, const char* format, va_list arguments);
VANTLE_C_END

#define stderr __stderrp
#define stdin __stdinp
#define stdout __stdoutp
