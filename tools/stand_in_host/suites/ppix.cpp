#include "tools/stand_in_host/suites/host_state.h"
#include "tools/stand_in_host/suites/suites.h"

#include <algorithm>
#include <cstring>

namespace quillo::stand_in {

namespace {

constexpr prSuiteError done = suiteError_NoError;
constexpr auto not_valid = static_cast<prSuiteError>(suiteError_IDNotValid);

host_frame* find(PPixHand handle, char const* asked_by) { return host_state::current().frames.find(handle, asked_by); }

prSuiteError dispose(PPixHand handle) { return host_state::current().frames.dispose(handle) ? done : not_valid; }

prSuiteError pixels(PPixHand handle, PrPPixBufferAccess access, char** address)
{
    *address = nullptr;
    host_frame* const frame = find(handle, "GetPixels");
    if (frame == nullptr)
        return not_valid;
    if (access != PrPPixBufferAccess_ReadOnly) {
        host_state::current().log.breach("GetPixels for writing");
        return static_cast<prSuiteError>(suiteError_InvalidCall);
    }
    *address = static_cast<char*>(frame->pix()->pix);
    return done;
}

prSuiteError bounds(PPixHand handle, prRect* result)
{
    host_frame* const frame = find(handle, "GetBounds");
    if (frame == nullptr)
        return not_valid;
    *result = frame->pix()->bounds;
    return done;
}

prSuiteError row_bytes(PPixHand handle, csSDK_int32* result)
{
    host_frame* const frame = find(handle, "GetRowBytes");
    if (frame == nullptr)
        return not_valid;
    *result = frame->pix()->rowbytes;
    return done;
}

prSuiteError pixel_aspect(PPixHand handle, csSDK_uint32* numerator, csSDK_uint32* denominator)
{
    host_frame* const frame = find(handle, "GetPixelAspectRatio");
    if (frame == nullptr)
        return not_valid;
    *numerator = frame->aspect_n;
    *denominator = frame->aspect_d;
    return done;
}

prSuiteError pixel_format(PPixHand handle, PrPixelFormat* result)
{
    host_frame* const frame = find(handle, "GetPixelFormat");
    if (frame == nullptr)
        return not_valid;
    *result = frame->format();
    return done;
}

prSuiteError unique_key(PPixHand handle, unsigned char* result, std::size_t size)
{
    host_frame* const frame = find(handle, "GetUniqueKey");
    if (frame == nullptr)
        return not_valid;
    if (size < sizeof frame->key)
        return static_cast<prSuiteError>(suiteError_InvalidParms);
    std::memcpy(result, &frame->key, sizeof frame->key);
    return done;
}

prSuiteError render_time(PPixHand handle, csSDK_int32* result)
{
    host_frame* const frame = find(handle, "GetRenderTime");
    if (frame == nullptr)
        return not_valid;
    *result = frame->render_ms;
    return done;
}

} // namespace

void const* ppix_suite()
{
    static PrSDKPPixSuite const table = [] {
        PrSDKPPixSuite t{};
        t.Dispose = dispose;
        t.GetPixels = pixels;
        t.GetBounds = bounds;
        t.GetRowBytes = row_bytes;
        t.GetPixelAspectRatio = pixel_aspect;
        t.GetPixelFormat = pixel_format;
        t.GetUniqueKey = unique_key;
        t.GetUniqueKeySize = [](std::size_t* size) {
            *size = sizeof(csSDK_uint64);
            return done;
        };
        t.GetRenderTime = render_time;
        return t;
    }();
    return &table;
}

} // namespace quillo::stand_in
