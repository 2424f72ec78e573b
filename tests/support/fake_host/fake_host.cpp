#include "tests/support/fake_host/fake_host.h"

#include <atomic>
#include <cstring>
#include <string_view>

#include "tests/support/fake_host/fake_picture.h"

namespace quillo::test {

namespace {

constexpr auto failed = static_cast<prSuiteError>(suiteError_Fail);

fake_host* the_host = nullptr;
std::atomic<int> blocks_delivered{0};

template <class... Parts>
void log(Parts const&... parts)
{
    call_log::instance().add(parts...);
}

char const* name_of(PPixHand hand) { return fake_picture::of(hand).name; }

PrSDKPPixSuite const ppix_suite{
    [](PPixHand hand) -> prSuiteError {
        log("Dispose(", name_of(hand), ")");
        ++fake_picture::of(hand).disposed;
        return suiteError_NoError;
    },
    [](PPixHand hand, PrPPixBufferAccess access, char** address) -> prSuiteError {
        log("GetPixels(", name_of(hand), ", ", static_cast<int>(access), ")");
        bool const allowed = access == PrPPixBufferAccess_ReadOnly;
        *address = allowed ? fake_picture::of(hand).address : nullptr;
        return allowed ? prSuiteError{suiteError_NoError} : failed;
    },
    [](PPixHand hand, prRect* bounds) -> prSuiteError {
        // The rectangle is to come in zeroed.
        bool const zeroed = !bounds->top && !bounds->left && !bounds->bottom && !bounds->right;
        log("GetBounds(", name_of(hand), zeroed ? "" : ", dirty", ")");
        *bounds = fake_picture::of(hand).bounds;
        return suiteError_NoError;
    },
    [](PPixHand hand, csSDK_int32* row_bytes) -> prSuiteError {
        log("GetRowBytes(", name_of(hand), ")");
        *row_bytes = fake_picture::of(hand).row_bytes;
        return suiteError_NoError;
    },
    [](PPixHand hand, csSDK_uint32* num, csSDK_uint32* den) -> prSuiteError {
        log("GetPixelAspectRatio(", name_of(hand), *num || *den ? ", dirty" : "", ")");
        *num = fake_picture::of(hand).aspect_num;
        *den = fake_picture::of(hand).aspect_den;
        return suiteError_NoError;
    },
    [](PPixHand hand, PrPixelFormat* format) -> prSuiteError {
        log("GetPixelFormat(", name_of(hand), *format == PrPixelFormat_Invalid ? "" : ", not badf", ")");
        // A host that does not know leaves the preset.
        if (fake_picture::of(hand).format != PrPixelFormat_Invalid)
            *format = fake_picture::of(hand).format;
        return suiteError_NoError;
    },
    [](PPixHand, unsigned char*, size_t) -> prSuiteError { return failed; },
    [](size_t*) -> prSuiteError { return failed; },
    [](PPixHand, csSDK_int32*) -> prSuiteError { return failed; }};

PrSDKTimeSuite const time_suite{[](PrTime* ticks) -> prSuiteError {
                                    log("GetTicksPerSecond()");
                                    if (fake_host::current().on_get_ticks)
                                        fake_host::current().on_get_ticks();
                                    *ticks = fake_host::current().ticks_per_second;
                                    return suiteError_NoError;
                                },
                                nullptr, nullptr};

PrSDKAppInfoSuite const app_info_suite{[](int selector, void* result) -> prSuiteError {
    log("GetAppInfo(", selector, ")");
    std::memcpy(result, &fake_host::current().app_code, sizeof(csSDK_uint32));
    return suiteError_NoError;
}};

prSuiteError set_up_audio(PrPlayID player, prBool scrubbing, pmAudioSettings const* settings)
{
    // The record byte for byte: a float, an integer, 24 zeros.
    unsigned char bytes[32];
    std::memcpy(bytes, settings, sizeof bytes);
    float rate;
    csSDK_int32 block;
    std::memcpy(&rate, bytes, 4);
    std::memcpy(&block, bytes + 4, 4);
    bool rest_is_zero = true;
    for (int i = 8; i < 32; ++i)
        rest_is_zero = rest_is_zero && bytes[i] == 0;
    log("audio 2nd(", player, ", ", scrubbing, ", {", rate, ", ", block, rest_is_zero ? ", zeros" : ", dirty", "})");
    fake_host& host = fake_host::current();
    if (host.on_set_up)
        host.on_set_up();
    return host.set_up_result;
}

prSuiteError start_audio(PrPlayID player, pmAudioRange const* range, void* reserved, float speed)
{
    log("audio 3rd(", player, ", {", PrTime{range->mInTime}, ", ", PrTime{range->mOutTime}, ", ",
        PrTime{range->mStartTime}, ", ", prBool{range->mLoop}, "}, ", reserved ? "dirty" : "0", ", ", speed, ")");
    return failed; // nobody looks
}

prSuiteError stop_audio(PrPlayID player)
{
    log("audio 9th(", player, ")");
    if (fake_host::current().on_stop_audio)
        fake_host::current().on_stop_audio();
    return failed; // nobody looks
}

prSuiteError next_audio(PrPlayID player, float** in, float** out, unsigned int samples, PrTime* time)
{
    fake_host& host = fake_host::current();
    log("audio 11th(", player, ", ", in ? "dirty" : "null", ", ", samples, *time == 0 ? "" : ", dirty time", ")");
    if (host.on_pull)
        return host.on_pull(out, samples, *time);
    int const block = blocks_delivered.fetch_add(1, std::memory_order_relaxed);
    for (int channel = 0; channel < host.channels_expected; ++channel)
        for (unsigned sample = 0; sample < samples; ++sample)
            out[channel][sample] = static_cast<float>(1000 * channel + block);
    *time = block * PrTime{2540160000};
    return suiteError_NoError;
}

PrSDKPlayModuleAudioSuite const audio_suite{nullptr, set_up_audio, start_audio, nullptr, nullptr,   nullptr,
                                            nullptr, nullptr,      stop_audio,  nullptr, next_audio};

struct known_suite
{
    std::string_view name;
    int version;
    void const* table;
};

SPErr acquire(char const* name, int version, void const** suite)
{
    log("AcquireSuite(", name, ", ", version, ")");
    known_suite const known[] = {{"Premiere Playmod Audio Suite", 4, &audio_suite},
                                 {"Premiere PPix Suite", 1, &ppix_suite},
                                 {"Premiere Time Suite", 1, &time_suite},
                                 {"MediaCore App Info Suite", 3, &app_info_suite}};
    *suite = nullptr;
    for (known_suite const& candidate : known)
        if (candidate.name == name && candidate.version == version)
            *suite = candidate.table;
    if (*suite == &audio_suite && !fake_host::current().has_audio_suite)
        *suite = nullptr;
    return *suite ? kSPNoError : 1;
}

SPErr release(char const* name, int version)
{
    log("ReleaseSuite(", name, ", ", version, ")");
    return kSPNoError;
}

SPBasicSuite basic_suite{acquire, release, nullptr, nullptr, nullptr, nullptr, nullptr};

SPBasicSuite* get_basic()
{
    log("getSPBasicSuite()");
    if (fake_host::current().on_get_basic)
        fake_host::current().on_get_basic();
    return &basic_suite;
}

} // namespace

fake_host::fake_host()
{
    the_host = this;
    blocks_delivered = 0;
    utilities.getSPBasicSuite = get_basic;
    legacy.piInterfaceVer = PR_PISUITES_VERSION;
    legacy.utilFuncs = &utilities;
}

fake_host::~fake_host() { the_host = nullptr; }

fake_host& fake_host::current() { return *the_host; }

piSuitesPtr fake_host::suites() { return &legacy; }

void fake_host::clock(void* context, PrTime step)
{
    fake_host& host = current();
    log("clock(", static_cast<char const*>(context), ", ", step, ")");
    if (host.on_clock)
        host.on_clock(context, step);
}

} // namespace quillo::test
