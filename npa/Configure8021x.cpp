// The 802.1x sequence. It needs the certificate manager to decide whether the
// printer should validate the server certificate; until that is available the
// sequence refuses to run.
#include <cstdio>

#include "npa/WirelessConfigurator.h"

int WirelessConfigurator::configure8021x()
{
    std::fprintf(stderr, "D [CVL] 802.1x configuration is not available yet.\n");
    return -1;
}
