// Carries out the certificate commands of the command line: "-rcerdefs",
// "-csr" and "-icer".
#pragma once

#include <string>

#include "npa/ConfigDetails.h"

class CertProc {
public:
    CertProc() = default;
    virtual ~CertProc() = default;
    // Returns 0 on success, 1 on failure or an unknown command, 2 when the
    // "-icer" file does not exist.
    int process(const std::string& command, ConfigDetails& config);

    // True when the path itself exists (a dangling symbolic link counts).
    static bool fileExists(const std::string& path);

private:
    int readDefaults(const ConfigDetails& config);
    int createRequest(const ConfigDetails& config);
    int installCertificate(const ConfigDetails& config);
};
