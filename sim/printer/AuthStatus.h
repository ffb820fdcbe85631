// The 802.1x status (2A/1D) the printer reports, decided from what it holds.
#pragma once

namespace corvelsim {

// The status numbers a printer reports.
enum AuthStatusCode {
    kAuthNotEnabled = 0,
    kAuthAuthenticated = 2,
    kAuthServerCertNotYetValid = 4,
    kAuthServerCertExpired = 5,
    kAuthClientCertFailed = 7,
    kAuthEapTypeMismatch = 8,
    kAuthFailed = 9,
    kAuthInProgress = 10,
    kAuthCaNotInstalled = 11,
};

enum class ClientCert { None, Valid, Expired, NotYetValid };

struct AuthFacts {
    bool security8021x = false;
    bool validateCertificate = false;  // 2A/24
    bool caInstalled = false;
    ClientCert clientCert = ClientCert::None;
    bool eapTls = false;       // 2A/18
    bool passwordEap = false;  // 2A/14..17 or 2A/19
    bool hasUser = false;      // 2A/02
    bool hasPassword = false;  // 2A/03
    bool joined = false;
};

// The first rule that applies, in this order: not 802.1x 0; validation
// without a CA 11; the signed certificate expired 5 or not yet valid 4;
// EAP-TLS without a signed certificate 7; a password-based EAP type without
// user or password 9; no EAP type 8; else 2 once joined, 10 before.
int authStatus(const AuthFacts& facts);

}  // namespace corvelsim
