#include "Plugins/Plugins.AdobeCC.Transmit/Quillo_TransmitPlugin.h"

#include <cstdlib>
#include <cstring>
#include <iterator>

#include "Plugins/Plugins.AdobeCC.Transmit/Quillo_TransmitInstance.h"
#include "Plugins/Plugins.AdobeCC.Transmit/sdk_file/strings.h"

namespace {

namespace host = quillo::host;

struct suite_id
{
    char const* name;
    int version;
};

constexpr suite_id playmod_audio_suite{"Premiere Playmod Audio Suite", 4};
constexpr suite_id ppix_suite{"Premiere PPix Suite", 1};
constexpr suite_id sequence_info_suite{"MediaCore Sequence Info Suite", 5};
constexpr suite_id threaded_work_suite{"Premiere Threaded Work Suite", 3};
constexpr suite_id time_suite{"Premiere Time Suite", 1};
constexpr suite_id app_info_suite{"MediaCore App Info Suite", 3};

template <class Suite>
Suite const* acquire(SPBasicSuite const& basic, suite_id const& id)
{
    void const* suite = nullptr;
    basic.AcquireSuite(id.name, id.version, &suite);
    return static_cast<Suite const*>(suite);
}

void fill(tmPluginInfo& info)
{
    constexpr wchar_t name[] = L"Quillo output";
    prUTF16Char name_utf16[std::size(name)];
    copyConvertStringLiteralIntoUTF16(name, name_utf16);
    // Byte by byte: the name lies at an odd offset of the packed record.
    std::memcpy(reinterpret_cast<unsigned char*>(&info) + offsetof(tmPluginInfo, outDisplayName), name_utf16,
                sizeof name_utf16);

    info.outAudioAvailable = kPrTrue;
    info.outAudioDefaultEnabled = kPrTrue;
    info.outClockAvailable = kPrTrue;
    info.outVideoAvailable = kPrTrue;
    info.outVideoDefaultEnabled = kPrTrue;
    info.outHasSetup = kPrTrue;
}

// What receivers see the source as. The first of the code's four characters is in its highest byte.
char const* host_app_name(csSDK_uint32 code)
{
    switch (code) {
    case 0x5050726F: // PPro
        return "Adobe Premiere Pro";
    case 0x5072456C: // PrEl
        return "Adobe Premiere Elements";
    case 0x46585443: // FXTC
        return "Adobe After Effects";
    case 0x414D4520: // AME and a blank
        return "Adobe Media Encoder";
    case 0x434F574F: // COWO
        return "Adobe Cottonwood";
    case 0x50524C44: // PRLD
        return "Adobe Prelude";
    case 0x53504744: // SPGD
        return "Adobe SpeedGrade";
    case 0x41644175: // AdAu
        return "Adobe Audition";
    case 0x416E6D6C: // Anml
        return "Adobe Character Animator";
    default:
        return "Adobe Application";
    }
}

} // namespace

Quillo_TransmitPlugin::Quillo_TransmitPlugin(tmStdParms* parms, tmPluginInfo* info) : sender(nullptr)
{
    fill(*info);

    suites.basic = parms->piSuites->utilFuncs->getSPBasicSuite();
    suites.audio = acquire<host::playmod_audio_suite>(*suites.basic, playmod_audio_suite);
    suites.ppix = acquire<PrSDKPPixSuite>(*suites.basic, ppix_suite);
    suites.time = acquire<PrSDKTimeSuite>(*suites.basic, time_suite);
    suites.app_info = acquire<PrSDKAppInfoSuite>(*suites.basic, app_info_suite);

    csSDK_uint32 app_code = 0;
    suites.app_info->GetAppInfo(host::app_code_selector, &app_code);
    char const* const hostAppName = host_app_name(app_code);

    SenderSettings settings{};
    settings.sourceName = hostAppName;
    settings.groups = nullptr;
    settings.clockVideo = true;
    settings.clockAudio = true;
    sender = Quillolib_send_create(&settings);
}

Quillo_TransmitPlugin::~Quillo_TransmitPlugin()
{
    if (sender)
        Quillolib_send_destroy(sender);

    // Hosts count these five. Two were never acquired, and App Info stays acquired for the life of the host.
    for (suite_id const& id : {playmod_audio_suite, ppix_suite, sequence_info_suite, threaded_work_suite, time_suite})
        suites.basic->ReleaseSuite(id.name, id.version);
}

tmResult Quillo_TransmitPlugin::SetupDialog(tmStdParms* /*parms*/, prParentWnd /*window*/)
{
    [[maybe_unused]] int const status = std::system("open " QUILLO_PRODUCT_PAGE);
    return host::success;
}

tmResult Quillo_TransmitPlugin::NeedsReset(tmStdParms const* /*parms*/, prBool* /*reset*/) { return host::success; }

Quillo_TransmitInstance* Quillo_TransmitPlugin::CreateInstance(tmStdParms const* /*parms*/, tmInstance* instance)
{
    return new Quillo_TransmitInstance(instance, suites, sender);
}

void Quillo_TransmitPlugin::DisposeInstance(tmStdParms const* /*parms*/, tmInstance* instance)
{
    delete static_cast<Quillo_TransmitInstance*>(instance->ioPrivateInstanceData);
}
