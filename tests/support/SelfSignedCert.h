// A certificate made on the spot with OpenSSL, in PEM form.
#pragma once

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <string>
#include <utility>
#include <vector>

using SubjectFields = std::vector<std::pair<const char*, std::string>>;

// The subject `fields` in order; the validity texts are set as given, even
// when invalid (UTCTime when 13 long, else GeneralizedTime). It certifies
// `publicKey` when given, else the fresh key it is signed with.
inline std::string selfSignedPem(const SubjectFields& fields, const std::string& notBefore, const std::string& notAfter,
                                 EVP_PKEY* publicKey = nullptr)
{
    EVP_PKEY* key = EVP_EC_gen("P-256");
    X509* cert = X509_new();
    X509_set_version(cert, 2);
    X509_NAME* name = X509_get_subject_name(cert);
    for (const auto& [field, value] : fields) {
        // A plain string type, not MBSTRING_*: no length limit on the common name.
        X509_NAME_add_entry_by_txt(name, field, V_ASN1_UTF8STRING,
                                   reinterpret_cast<const unsigned char*>(value.c_str()), -1, -1, 0);
    }
    X509_set_issuer_name(cert, name);
    for (auto [time, text] :
         {std::make_pair(X509_getm_notBefore(cert), notBefore), std::make_pair(X509_getm_notAfter(cert), notAfter)}) {
        ASN1_STRING_set(time, text.c_str(), static_cast<int>(text.size()));
        time->type = text.size() == 13 ? V_ASN1_UTCTIME : V_ASN1_GENERALIZEDTIME;
    }
    X509_set_pubkey(cert, publicKey != nullptr ? publicKey : key);
    X509_sign(cert, key, EVP_sha256());
    BIO* bio = BIO_new(BIO_s_mem());
    PEM_write_bio_X509(bio, cert);
    char* data = nullptr;
    const long size = BIO_get_mem_data(bio, &data);
    std::string pem(data, static_cast<size_t>(size));
    BIO_free(bio);
    X509_free(cert);
    EVP_PKEY_free(key);
    return pem;
}
