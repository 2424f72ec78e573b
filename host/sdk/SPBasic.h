// The suite through which all other suites are had. Acquiring adds a reference, releasing drops one.
#pragma once

#include <cstddef>

typedef int SPErr;
typedef unsigned char SPBoolean;
enum { kSPNoError = 0 };

typedef struct SPBasicSuite
{
    // Leaves null in *suite when the host has no such suite or version.
    SPErr (*AcquireSuite)(char const* name, int version, void const** suite);
    SPErr (*ReleaseSuite)(char const* name, int version);
    SPBoolean (*IsEqual)(char const* token1, char const* token2);
    SPErr (*AllocateBlock)(size_t size, void** block);
    SPErr (*FreeBlock)(void* block);
    SPErr (*ReallocateBlock)(void* block, size_t newSize, void** newblock);
    SPErr (*Undefined)(void);
} SPBasicSuite;

static_assert(sizeof(SPBasicSuite) == 56 && offsetof(SPBasicSuite, AcquireSuite) == 0);
static_assert(offsetof(SPBasicSuite, ReleaseSuite) == 8 && offsetof(SPBasicSuite, IsEqual) == 16);
static_assert(offsetof(SPBasicSuite, AllocateBlock) == 24 && offsetof(SPBasicSuite, FreeBlock) == 32);
static_assert(offsetof(SPBasicSuite, ReallocateBlock) == 40 && offsetof(SPBasicSuite, Undefined) == 48);
