#include "Plugins/Plugins.AdobeCC.Transmit/Quillo_Transmit_AdobeCC.h"

#include <iostream>

void Quillo_Transmit_AdobeCC::HelloWorld(char const* text) { Quillo_Transmit_AdobeCCPriv::HelloWorldPriv(text); }

void Quillo_Transmit_AdobeCCPriv::HelloWorldPriv(char const* text) { std::cout << text << std::endl; }
