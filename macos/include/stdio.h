#pragma once

#include <stdarg.h>
#include <stddef.h>
#include <sys/types.h>

typedef struct __sFILE FILE;
typedef off_t fpos_t;

extern FILE* __stdinp;
extern FILE* __stdoutp;
extern FILE* __stderrp;
#define stdin __stdinp
#define stdout __stdoutp
#define stderr __stderrp

#define EOF (-1)
#define BUFSIZ 1024
#define FOPEN_MAX 20
#define FILENAME_MAX 1024
#define L_tmpnam 1024
#define TMP_MAX 308915776
#define SEEK_SET 0
#define SEEK_CUR 1
#define SEEK_END 2
#define _IOFBF 0
#define _IOLBF 1
#define _IONBF 2

__BEGIN_DECLS
FILE* fopen(char const*, char const*);
FILE* freopen(char const*, char const*, FILE*);
FILE* fdopen(int, char const*);
FILE* tmpfile(void);
char* tmpnam(char*);
int fclose(FILE*);
int fflush(FILE*);
int fileno(FILE*);
void setbuf(FILE*, char*);
int setvbuf(FILE*, char*, int, size_t);
size_t fread(void*, size_t, size_t, FILE*);
size_t fwrite(void const*, size_t, size_t, FILE*);
int fgetc(FILE*);
int getc(FILE*);
int getchar(void);
char* fgets(char*, int, FILE*);
int fputc(int, FILE*);
int putc(int, FILE*);
int putchar(int);
int fputs(char const*, FILE*);
int puts(char const*);
int ungetc(int, FILE*);
int fseek(FILE*, long, int);
long ftell(FILE*);
int fseeko(FILE*, off_t, int);
off_t ftello(FILE*);
void rewind(FILE*);
int fgetpos(FILE*, fpos_t*);
int fsetpos(FILE*, fpos_t const*);
void clearerr(FILE*);
int feof(FILE*);
int ferror(FILE*);
void perror(char const*);
int remove(char const*);
int rename(char const*, char const*);

int printf(char const*, ...) __attribute__((__format__(__printf__, 1, 2)));
int fprintf(FILE*, char const*, ...) __attribute__((__format__(__printf__, 2, 3)));
int dprintf(int, char const*, ...) __attribute__((__format__(__printf__, 2, 3)));
int sprintf(char*, char const*, ...) __attribute__((__format__(__printf__, 2, 3)));
int snprintf(char*, size_t, char const*, ...) __attribute__((__format__(__printf__, 3, 4)));
int asprintf(char**, char const*, ...) __attribute__((__format__(__printf__, 2, 3)));
int vprintf(char const*, va_list) __attribute__((__format__(__printf__, 1, 0)));
int vfprintf(FILE*, char const*, va_list) __attribute__((__format__(__printf__, 2, 0)));
int vdprintf(int, char const*, va_list) __attribute__((__format__(__printf__, 2, 0)));
int vsprintf(char*, char const*, va_list) __attribute__((__format__(__printf__, 2, 0)));
int vsnprintf(char*, size_t, char const*, va_list) __attribute__((__format__(__printf__, 3, 0)));
int vasprintf(char**, char const*, va_list) __attribute__((__format__(__printf__, 2, 0)));
int scanf(char const*, ...);
int fscanf(FILE*, char const*, ...);
int sscanf(char const*, char const*, ...);
int vscanf(char const*, va_list);
int vfscanf(FILE*, char const*, va_list);
int vsscanf(char const*, char const*, va_list);
__END_DECLS
