#include "sim/printer/AuthStatus.h"

namespace corvelsim {

int authStatus(const AuthFacts& facts)
{
    if (!facts.security8021x) return kAuthNotEnabled;
    if (facts.validateCertificate && !facts.caInstalled) return kAuthCaNotInstalled;
    if (facts.clientCert == ClientCert::Expired) return kAuthServerCertExpired;
    if (facts.clientCert == ClientCert::NotYetValid) return kAuthServerCertNotYetValid;
    if (facts.eapTls && facts.clientCert == ClientCert::None) return kAuthClientCertFailed;
    if (facts.passwordEap && (!facts.hasUser || !facts.hasPassword)) return kAuthFailed;
    if (!facts.eapTls && !facts.passwordEap) return kAuthEapTypeMismatch;
    return facts.joined ? kAuthAuthenticated : kAuthInProgress;
}

}  // namespace corvelsim
