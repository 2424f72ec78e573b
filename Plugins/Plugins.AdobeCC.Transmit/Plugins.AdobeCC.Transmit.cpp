#include "Plugins/Plugins.AdobeCC.Transmit/Plugins.AdobeCC.Transmit.h"

#include "Plugins/Plugins.AdobeCC.Transmit/Quillo_TransmitInstance.h"
#include "Plugins/Plugins.AdobeCC.Transmit/Quillo_TransmitPlugin.h"
#include "Plugins/Plugins.AdobeCC.Transmit/euclid.h"

namespace {

namespace host = quillo::host;

Quillo_TransmitPlugin* plugin_of(tmStdParms const* parms)
{
    return static_cast<Quillo_TransmitPlugin*>(parms->ioPrivatePluginData);
}

Quillo_TransmitInstance* instance_of(tmInstance const* instance)
{
    return static_cast<Quillo_TransmitInstance*>(instance->ioPrivateInstanceData);
}

tmResult Startup(tmStdParms* parms, tmPluginInfo* info)
{
    parms->ioPrivatePluginData = new Quillo_TransmitPlugin(parms, info);
    return host::success;
}

tmResult Shutdown(tmStdParms* parms)
{
    delete plugin_of(parms);
    parms->ioPrivatePluginData = nullptr;
    return host::success;
}

tmResult SetupDialog(tmStdParms* parms, prParentWnd window) { return plugin_of(parms)->SetupDialog(parms, window); }

tmResult NeedsReset(tmStdParms const* parms, prBool* reset) { return plugin_of(parms)->NeedsReset(parms, reset); }

tmResult CreateInstance(tmStdParms const* parms, tmInstance* instance)
{
    Quillo_TransmitInstance* const made = plugin_of(parms)->CreateInstance(parms, instance);
    instance->ioPrivateInstanceData = made;
    return made ? host::success : host::failure;
}

tmResult DisposeInstance(tmStdParms const* parms, tmInstance* instance)
{
    plugin_of(parms)->DisposeInstance(parms, instance);
    instance->ioPrivateInstanceData = nullptr;
    return host::success;
}

tmResult QueryAudioMode(tmStdParms const* parms, tmInstance const* instance, csSDK_int32 index, tmAudioMode* mode)
{
    return instance_of(instance)->QueryAudioMode(parms, instance, index, mode);
}

tmResult QueryVideoMode(tmStdParms const* parms, tmInstance const* instance, csSDK_int32 index, tmVideoMode* mode)
{
    return instance_of(instance)->QueryVideoMode(parms, instance, index, mode);
}

tmResult ActivateDeactivate(tmStdParms const* parms, tmInstance const* instance, PrActivationEvent event,
                            prBool audio_active, prBool video_active)
{
    return instance_of(instance)->ActivateDeactivate(parms, instance, event, audio_active, video_active);
}

tmResult StartPlaybackClock(tmStdParms const* parms, tmInstance const* instance, tmPlaybackClock const* clock)
{
    return instance_of(instance)->StartPlaybackClock(parms, instance, clock);
}

tmResult StopPlaybackClock(tmStdParms const* parms, tmInstance const* instance)
{
    return instance_of(instance)->StopPlaybackClock(parms, instance);
}

tmResult PushVideo(tmStdParms const* parms, tmInstance const* instance, tmPushVideo const* push)
{
    return instance_of(instance)->PushVideo(parms, instance, push);
}

} // namespace

tmResult xTransmitEntry(csSDK_int32 /*inInterfaceVersion*/, prBool inLoadModule, piSuitesPtr /*piSuites*/,
                        tmModule* outModule)
{
    if (!inLoadModule)
        return host::success;

    // Member by member: the host's record may be longer than the one compiled here.
    outModule->Startup = Startup;
    outModule->Shutdown = Shutdown;
    outModule->SetupDialog = SetupDialog;
    outModule->NeedsReset = NeedsReset;
    outModule->CreateInstance = CreateInstance;
    outModule->DisposeInstance = DisposeInstance;
    outModule->QueryAudioMode = QueryAudioMode;
    outModule->QueryVideoMode = QueryVideoMode;
    outModule->ActivateDeactivate = ActivateDeactivate;
    outModule->StartPlaybackClock = StartPlaybackClock;
    outModule->StopPlaybackClock = StopPlaybackClock;
    outModule->PushVideo = PushVideo;
    return host::success;
}

long long gcd(long long a, long long b) { return quillo::euclid(a, b); }
