#pragma once

#include <stddef.h>
#include <sys/types.h>

__BEGIN_DECLS
void* memchr(void const*, int, size_t);
int memcmp(void const*, void const*, size_t);
void* memcpy(void*, void const*, size_t);
void* memmove(void*, void const*, size_t);
void* memset(void*, int, size_t);
char* strcat(char*, char const*);
char* strchr(char const*, int);
int strcmp(char const*, char const*);
int strcoll(char const*, char const*);
char* strcpy(char*, char const*);
size_t strcspn(char const*, char const*);
char* strdup(char const*);
char* strerror(int);
int strerror_r(int, char*, size_t);
size_t strlcpy(char*, char const*, size_t);
size_t strlen(char const*);
char* strncat(char*, char const*, size_t);
int strncmp(char const*, char const*, size_t);
char* strncpy(char*, char const*, size_t);
size_t strnlen(char const*, size_t);
char* strpbrk(char const*, char const*);
char* strrchr(char const*, int);
size_t strspn(char const*, char const*);
char* strstr(char const*, char const*);
char* strtok(char*, char const*);
size_t strxfrm(char*, char const*, size_t);
__END_DECLS
