// SPDX-License-Identifier: MIT
#pragma once
#include <vantle_types.h>

VANTLE_C_BEGIN
void* memchr(const void* bytes, int byte, size_t size);
int memcmp(const void* one, const void* other, size_t size);
void* memcpy(void* to, const void* from, size_t size);
void* memmove(void* to, const void* from, size_t size);
void* memset(void* bytes, int byte, size_t size);
char* strcat(char* to, const char* from);
char* strchr(const char* text, int character);
int strcmp(const char* one, const char* other);
int strcoll(const char* one, const char* other);
char* strcpy(char* to, const char* from);
size_t strcspn(const char* text, const char* characters);
char* strdup(const char* text);
char* strerror(int number);
int strerror_r(int number, char* text, size_t size);
size_t strlen(const char* text);
char* strncat(char* to, const char* from, size_t size);
int strncmp(const char* one, const char* other, size_t size);
char* strncpy(char* to, const char* from, size_t size);
size_t strnlen(const char* text, size_t size);
char* strpbrk(const char* text, const char* characters);
char* strrchr(const char* text, int character);
char* strsignal(int number);
size_t strspn(const char* text, const char* characters);
char* strstr(const char* text, const char* wanted);
char* strtok(char* text, const char* separators);
size_t strxfrm(char* to, const char* from, size_t size);
VANTLE_C_END
