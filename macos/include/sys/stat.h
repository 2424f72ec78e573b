#pragma once

#include <sys/types.h>
#include <time.h>

struct stat
{
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
    __uint32_t st_flags;
    __uint32_t st_gen;
    int st_lspare;
    long long st_qspare[2];
};

#define S_IFMT 0170000
#define S_IFIFO 0010000
#define S_IFCHR 0020000
#define S_IFDIR 0040000
#define S_IFBLK 0060000
#define S_IFREG 0100000
#define S_IFLNK 0120000
#define S_IFSOCK 0140000
#define S_ISDIR(mode) (((mode)&S_IFMT) == S_IFDIR)
#define S_ISLNK(mode) (((mode)&S_IFMT) == S_IFLNK)
#define S_ISREG(mode) (((mode)&S_IFMT) == S_IFREG)
#define S_ISSOCK(mode) (((mode)&S_IFMT) == S_IFSOCK)

__BEGIN_DECLS
int chmod(char const*, mode_t);
int fstat(int, struct stat*) __QUILLO_INODE64(fstat);
int lstat(char const*, struct stat*) __QUILLO_INODE64(lstat);
int mkdir(char const*, mode_t);
int stat(char const*, struct stat*) __QUILLO_INODE64(stat);
mode_t umask(mode_t);
__END_DECLS
