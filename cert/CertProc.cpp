#include "cert/CertProc.h"

#include <cstdio>

int CertProc::process(const std::string& command, ConfigDetails& config)
{
    (void)config;
    // The certificate manager client is not built yet: say so rather than
    // pretending to have talked to the printer.
    std::fprintf(stderr, "D [CVL] Certificate command '%s' is not available yet.\n", command.c_str());
    return -1;
}
