#include "tools/stand_in_host/suites/suites.h"

#include <cstdlib>
#include <cstring>
#include <malloc.h>

namespace quillo::stand_in {

namespace {

// A handle is the address of a block's address, so that the block may move.
PrMemoryHandle handle_to(void* block)
{
    auto* const handle = static_cast<PrMemoryHandle>(std::malloc(sizeof(PrMemoryPtr)));
    if (handle != nullptr)
        *handle = static_cast<PrMemoryPtr>(block);
    return handle;
}

void resize(PrMemoryPtr* block, csSDK_uint32 size)
{
    if (void* const moved = std::realloc(*block, size))
        *block = static_cast<PrMemoryPtr>(moved);
}

csSDK_int32 size_of(PrMemoryPtr block) { return static_cast<csSDK_int32>(malloc_usable_size(block)); }

} // namespace

PlugMemoryFuncs* memory_functions()
{
    static PlugMemoryFuncs table = [] {
        PlugMemoryFuncs t{};
        t.newPtr = [](csSDK_uint32 size) { return static_cast<PrMemoryPtr>(std::malloc(size)); };
        t.setPtrSize = resize;
        t.getPtrSize = size_of;
        t.disposePtr = [](PrMemoryPtr block) { std::free(block); };
        t.newHandle = [](csSDK_uint32 size) { return handle_to(std::malloc(size)); };
        t.setHandleSize = [](PrMemoryHandle handle, csSDK_uint32 size) {
            resize(handle, size);
            return csSDK_int32{malNoError};
        };
        t.getHandleSize = [](PrMemoryHandle handle) { return size_of(*handle); };
        t.disposeHandle = [](PrMemoryHandle handle) {
            std::free(*handle);
            std::free(handle);
        };
        t.newPtrClear = [](csSDK_uint32 size) { return static_cast<PrMemoryPtr>(std::calloc(1, size)); };
        t.newHandleClear = [](csSDK_uint32 size) { return handle_to(std::calloc(1, size)); };
        t.lockHandle = [](PrMemoryHandle) {};
        t.unlockHandle = [](PrMemoryHandle) {};
        return t;
    }();
    return &table;
}

} // namespace quillo::stand_in
