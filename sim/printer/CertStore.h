// What the printer's certificate manager holds: keys waiting for their
// signed certificate, installed signed certificates and CA certificates. All
// of it lives in the state file, so that a workflow can span several runs.
#pragma once

#include <string>
#include <vector>

#include "sim/printer/X509Tools.h"

namespace corvelsim {

// The status codes the certificate manager answers with.
enum CertStatus {
    kCertOk = 1,
    kCertBadCall = 2,   // unknown method, missing or malformed parameter
    kCertNotFound = 3,  // no such key, certificate or CA
    kCertRefused = 4,   // the file is not acceptable
    kCertStoreFull = 5,
    kCertFailed = 6,  // key generation failed
};

struct CertResult {
    int code = kCertOk;
    std::string message;  // what went wrong; "" on success
};

// A name as status messages show it: cut after 64 bytes, so that an answer
// stays short whatever the call held.
std::string shownName(const std::string& name);

CertResult noPendingKey(const std::string& friendlyName);

struct PendingKey {
    std::string friendlyName, keyPem, requestPem;
};
struct SignedCert {
    std::string friendlyName, certPem, keyPem;
};
struct CaCert {
    std::string name, fileName, commonName, certPem;
};

// Each list holds at most this many entries, which keeps the state file small.
constexpr size_t kMaxStoreEntries = 16;
// Friendly names and CA common names are kept short enough for any list answer.
constexpr size_t kMaxNameLength = 200;

class CertStore {
public:
    // A new key and request for `friendlyName`, replacing a pending one.
    CertResult generate(const std::string& friendlyName, const Subject& subject);
    const PendingKey* pendingKey(const std::string& friendlyName) const;

    // Installs a signed certificate (PEM text) for the pending key of that
    // friendly name; the key moves with it, and it replaces an installed one.
    CertResult installSigned(const std::string& friendlyName, const std::string& pem);
    // Removes the installed certificate and the pending key of that name.
    CertResult removeSigned(const std::string& friendlyName);
    // The certificate the printer authenticates with: the last one installed.
    const SignedCert* activeCert() const { return signedCerts.empty() ? nullptr : &signedCerts.back(); }

    CertResult installCA(const std::string& fileName, const std::string& pem);
    CertResult removeCA(const std::string& name);
    const CaCert* ca(const std::string& name) const;

    std::vector<PendingKey> pending;
    std::vector<SignedCert> signedCerts;
    std::vector<CaCert> cas;  // in the order they were installed
};

}  // namespace corvelsim
