// The plug-in object: lives from Startup to Shutdown, owns the one network sender and makes the instances.
#pragma once

#include "Plugins/Plugins.AdobeCC.Transmit/SDKSuites.h"
#include "sender/Quillolib_send.h"

class Quillo_TransmitInstance;

// All calls: [host thread]. The records passed in are the host's and are not kept.
class Quillo_TransmitPlugin
{
  public:
    // Fills info, acquires the suites and creates the sender under the host application's name.
    Quillo_TransmitPlugin(tmStdParms* parms, tmPluginInfo* info);
    ~Quillo_TransmitPlugin();
    Quillo_TransmitPlugin(Quillo_TransmitPlugin const&) = delete;
    Quillo_TransmitPlugin& operator=(Quillo_TransmitPlugin const&) = delete;

    // Opens the product page in the browser.
    tmResult SetupDialog(tmStdParms* parms, prParentWnd window);
    // Never asks for a reset, and leaves the flag as it is.
    tmResult NeedsReset(tmStdParms const* parms, prBool* reset);
    // The caller owns the instance and gives it back through DisposeInstance.
    Quillo_TransmitInstance* CreateInstance(tmStdParms const* parms, tmInstance* instance);
    void DisposeInstance(tmStdParms const* parms, tmInstance* instance);

  private:
    SDKSuites suites;
    SenderHandle sender; // lent to the instances, never to outlive this object
};
