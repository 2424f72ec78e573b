// What the host application is.
#pragma once

#include "PrSDKTypes.h"

#define kPrSDKAppInfoSuite "MediaCore App Info Suite"

#pragma pack(push, 1)

typedef struct PrSDKAppInfoSuite
{
    // The application's code is a number whose highest byte is the first of its four characters.
    enum { kAppInfo_AppFourCC = 0, kAppInfo_Version = 1, kAppInfo_Build = 2, kAppInfo_Language = 3 };

    prSuiteError (*GetAppInfo)(int inInfoSelector, void* outAppInfo);
} PrSDKAppInfoSuite;

#pragma pack(pop)

static_assert(sizeof(PrSDKAppInfoSuite) == 8 && offsetof(PrSDKAppInfoSuite, GetAppInfo) == 0);
