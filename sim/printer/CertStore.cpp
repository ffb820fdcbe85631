#include "sim/printer/CertStore.h"

#include <algorithm>

namespace corvelsim {

namespace {

template <typename List, typename Pred>
auto findIn(List& list, Pred pred)
{
    return std::find_if(list.begin(), list.end(), pred);
}

CertResult failure(int code, std::string message) { return {code, std::move(message)}; }

}  // namespace

std::string shownName(const std::string& name) { return name.size() <= 64 ? name : name.substr(0, 64) + "..."; }

CertResult noPendingKey(const std::string& friendlyName)
{
    return {kCertNotFound, "no key pending for '" + shownName(friendlyName) + "'; call generateNewCert first"};
}

CertResult CertStore::generate(const std::string& friendlyName, const Subject& subject)
{
    auto same = [&](const PendingKey& key) { return key.friendlyName == friendlyName; };
    if (friendlyName.size() > kMaxNameLength)
        return failure(kCertBadCall, "the friendly name is longer than " + std::to_string(kMaxNameLength) + " bytes");
    if (pendingKey(friendlyName) == nullptr && pending.size() >= kMaxStoreEntries)
        return failure(kCertStoreFull, "too many pending keys; delete some with deleteIndividualCert");
    PendingKey key{friendlyName, {}, {}};
    std::string error;
    if (!makeKeyAndRequest(subject, key.keyPem, key.requestPem, error)) return failure(kCertBadCall, error);
    pending.erase(std::remove_if(pending.begin(), pending.end(), same), pending.end());
    pending.push_back(std::move(key));
    return {};
}

const PendingKey* CertStore::pendingKey(const std::string& friendlyName) const
{
    auto it = findIn(pending, [&](const PendingKey& key) { return key.friendlyName == friendlyName; });
    return it == pending.end() ? nullptr : &*it;
}

CertResult CertStore::installSigned(const std::string& friendlyName, const std::string& pem)
{
    CertInfo info;
    std::string certPem;
    if (!readCertificate(pem, info, certPem)) return failure(kCertRefused, "the file is not a PEM certificate");
    auto key = findIn(pending, [&](const PendingKey& k) { return k.friendlyName == friendlyName; });
    if (key == pending.end()) return noPendingKey(friendlyName);
    if (!certMatchesKey(certPem, key->keyPem))
        return failure(kCertRefused, "the certificate's public key does not match the key generated for '" +
                                         shownName(friendlyName) + "'");
    auto same = [&](const SignedCert& cert) { return cert.friendlyName == friendlyName; };
    signedCerts.erase(std::remove_if(signedCerts.begin(), signedCerts.end(), same), signedCerts.end());
    if (signedCerts.size() >= kMaxStoreEntries) return failure(kCertStoreFull, "too many installed certificates");
    signedCerts.push_back({friendlyName, certPem, key->keyPem});
    pending.erase(key);
    return {};
}

CertResult CertStore::removeSigned(const std::string& friendlyName)
{
    size_t before = signedCerts.size() + pending.size();
    signedCerts.erase(std::remove_if(signedCerts.begin(), signedCerts.end(),
                                     [&](const SignedCert& c) { return c.friendlyName == friendlyName; }),
                      signedCerts.end());
    pending.erase(std::remove_if(pending.begin(), pending.end(),
                                 [&](const PendingKey& k) { return k.friendlyName == friendlyName; }),
                  pending.end());
    if (signedCerts.size() + pending.size() == before)
        return failure(kCertNotFound, "no certificate named '" + shownName(friendlyName) + "'");
    return {};
}

CertResult CertStore::installCA(const std::string& fileName, const std::string& pem)
{
    CertInfo info;
    std::string certPem;
    if (!readCertificate(pem, info, certPem)) return failure(kCertRefused, "the file is not a PEM certificate");
    if (info.commonName.empty()) return failure(kCertRefused, "the CA certificate has no common name (CN)");
    if (info.commonName.size() > kMaxNameLength)
        return failure(kCertRefused,
                       "the CA's common name is longer than " + std::to_string(kMaxNameLength) + " bytes");
    std::string name = caName(info);
    if (ca(name) != nullptr) return failure(kCertRefused, "a CA named '" + name + "' is installed already");
    if (cas.size() >= kMaxStoreEntries) return failure(kCertStoreFull, "too many CA certificates");
    cas.push_back({name, fileName, info.commonName, certPem});
    return {};
}

CertResult CertStore::removeCA(const std::string& name)
{
    auto it = findIn(cas, [&](const CaCert& c) { return c.name == name; });
    if (it == cas.end()) return failure(kCertNotFound, "no CA named '" + shownName(name) + "'");
    cas.erase(it);
    return {};
}

const CaCert* CertStore::ca(const std::string& name) const
{
    auto it = findIn(cas, [&](const CaCert& c) { return c.name == name; });
    return it == cas.end() ? nullptr : &*it;
}

}  // namespace corvelsim
