// Declarations of the macOS C library that the project's sources and libc++ need, so that the module can be built where
// Apple's headers are not to be had. Declarations only; a program built on a Mac never sees this folder.
#pragma once

#ifdef __cplusplus
#define __BEGIN_DECLS extern "C" {
#define __END_DECLS }
#else
#define __BEGIN_DECLS
#define __END_DECLS
#endif

// 64-bit inodes: the names that carry a mark on x86-64 and none on arm64.
#ifdef __x86_64__
#define __QUILLO_INODE64(name) __asm("_" #name "$INODE64")
#else
#define __QUILLO_INODE64(name) __asm("_" #name)
#endif
