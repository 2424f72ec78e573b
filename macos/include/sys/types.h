#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/cdefs.h>

typedef unsigned int __uint32_t;

typedef long ssize_t;
typedef long long off_t;
typedef int pid_t;
typedef unsigned int uid_t;
typedef unsigned int gid_t;
typedef int dev_t;
typedef unsigned short mode_t;
typedef unsigned short nlink_t;
typedef unsigned long long ino_t;
typedef long long blkcnt_t;
typedef int blksize_t;
typedef unsigned int useconds_t;
typedef int suseconds_t;
typedef long time_t;
typedef unsigned long clock_t;
