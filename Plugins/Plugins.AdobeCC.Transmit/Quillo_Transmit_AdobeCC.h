// A sign of life for people who load the module by hand.
#pragma once

#include "Plugins/Plugins.AdobeCC.Transmit/exported.h"

class Quillo_Transmit_AdobeCC
{
  public:
    // Writes the text and a newline to standard output and flushes it.
    QUILLO_EXPORTED static void HelloWorld(char const* text);
};

class Quillo_Transmit_AdobeCCPriv
{
  public:
    static void HelloWorldPriv(char const* text);
};
