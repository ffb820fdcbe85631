#include "sim/printer/X509Tools.h"

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <cstdio>
#include <memory>

namespace corvelsim {

namespace {

template <typename T, void (*Free)(T*)>
struct Deleter {
    void operator()(T* p) const { Free(p); }
};
using BioPtr = std::unique_ptr<BIO, Deleter<BIO, BIO_free_all>>;
using KeyPtr = std::unique_ptr<EVP_PKEY, Deleter<EVP_PKEY, EVP_PKEY_free>>;
using X509Ptr = std::unique_ptr<X509, Deleter<X509, X509_free>>;
using ReqPtr = std::unique_ptr<X509_REQ, Deleter<X509_REQ, X509_REQ_free>>;
using ExtPtr = std::unique_ptr<X509_EXTENSION, Deleter<X509_EXTENSION, X509_EXTENSION_free>>;

const char* const kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

BioPtr readBio(const std::string& text) { return BioPtr(BIO_new_mem_buf(text.data(), int(text.size()))); }

std::string bioText(BIO* bio)
{
    char* data = nullptr;
    long size = BIO_get_mem_data(bio, &data);
    return size > 0 ? std::string(data, size_t(size)) : std::string();
}

X509Ptr parseCertificate(const std::string& pem)
{
    BioPtr bio = readBio(pem);
    X509Ptr cert(bio ? PEM_read_bio_X509(bio.get(), nullptr, nullptr, nullptr) : nullptr);
    ERR_clear_error();
    return cert;
}

std::string firstEntry(X509_NAME* name, int nid)
{
    int index = X509_NAME_get_index_by_NID(name, nid, -1);
    if (index < 0) return {};
    unsigned char* utf8 = nullptr;
    int size = ASN1_STRING_to_UTF8(&utf8, X509_NAME_ENTRY_get_data(X509_NAME_get_entry(name, index)));
    if (size < 0) return {};
    std::string text(reinterpret_cast<char*>(utf8), size_t(size));
    OPENSSL_free(utf8);
    return text;
}

// A DNS name as the alternative name extension carries it (no commas, which
// the extension syntax would read as a second name).
bool isDnsName(const std::string& text)
{
    if (text.empty() || text.size() > 253) return false;
    for (char c : text) {
        bool ok = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '.' ||
                  c == '*';
        if (!ok) return false;
    }
    return true;
}

std::string dayText(int day) { return day > 9 ? std::to_string(day) : "_" + std::to_string(day); }

std::string dateText(const std::tm& date)
{
    int month = date.tm_mon >= 0 && date.tm_mon < 12 ? date.tm_mon : 0;
    char year[16];
    std::snprintf(year, sizeof year, "%04d", date.tm_year + 1900);
    return std::string(kMonths[month]) + "_" + dayText(date.tm_mday) + "_" + year;
}

}  // namespace

bool makeKeyAndRequest(const Subject& subject, std::string& keyPem, std::string& requestPem, std::string& error)
{
    KeyPtr key(EVP_EC_gen("P-256"));
    ReqPtr request(X509_REQ_new());
    if (!key || !request || !X509_REQ_set_version(request.get(), 0)) {
        error = "key generation failed";
        return false;
    }
    X509_NAME* name = X509_REQ_get_subject_name(request.get());
    const std::pair<const char*, const std::string*> fields[] = {{"C", &subject.C},   {"ST", &subject.ST},
                                                                 {"L", &subject.L},   {"O", &subject.O},
                                                                 {"OU", &subject.OU}, {"CN", &subject.CN}};
    for (const auto& [field, value] : fields) {
        if (value->empty()) continue;  // empty fields are left out of the subject
        const auto* bytes = reinterpret_cast<const unsigned char*>(value->c_str());
        if (!X509_NAME_add_entry_by_txt(name, field, MBSTRING_UTF8, bytes, int(value->size()), -1, 0)) {
            ERR_clear_error();
            error = std::string("subject field x509_") + field + " is not allowed" +
                    (std::string(field) == "C" ? " (a country is two letters)" : " (too long?)");
            return false;
        }
    }
    if (!subject.AN.empty()) {
        if (!isDnsName(subject.AN)) {
            error = "x509_AN is not a DNS name";
            return false;
        }
        ExtPtr extension(X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, ("DNS:" + subject.AN).c_str()));
        STACK_OF(X509_EXTENSION)* extensions = sk_X509_EXTENSION_new_null();
        bool added = extension && extensions && sk_X509_EXTENSION_push(extensions, extension.get()) &&
                     X509_REQ_add_extensions(request.get(), extensions);
        sk_X509_EXTENSION_free(extensions);  // the extension itself is freed by its owner
        if (!added) {
            ERR_clear_error();
            error = "x509_AN cannot be added to the request";
            return false;
        }
    }
    BioPtr keyOut(BIO_new(BIO_s_mem()));
    BioPtr requestOut(BIO_new(BIO_s_mem()));
    if (!X509_REQ_set_pubkey(request.get(), key.get()) || !X509_REQ_sign(request.get(), key.get(), EVP_sha256()) ||
        !keyOut || !requestOut ||
        !PEM_write_bio_PrivateKey(keyOut.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr) ||
        !PEM_write_bio_X509_REQ(requestOut.get(), request.get())) {
        ERR_clear_error();
        error = "signing the request failed";
        return false;
    }
    keyPem = bioText(keyOut.get());
    requestPem = bioText(requestOut.get());
    return true;
}

bool readCertificate(const std::string& pem, CertInfo& info, std::string& certPem)
{
    X509Ptr cert = parseCertificate(pem);
    if (!cert) return false;
    X509_NAME* subject = X509_get_subject_name(cert.get());
    info.commonName = firstEntry(subject, NID_commonName);
    info.organization = firstEntry(subject, NID_organizationName);
    if (!ASN1_TIME_to_tm(X509_get0_notBefore(cert.get()), &info.notBefore) ||
        !ASN1_TIME_to_tm(X509_get0_notAfter(cert.get()), &info.notAfter)) {
        ERR_clear_error();
        return false;
    }
    BioPtr out(BIO_new(BIO_s_mem()));
    if (!out || !PEM_write_bio_X509(out.get(), cert.get())) return false;
    certPem = bioText(out.get());
    return true;
}

bool certMatchesKey(const std::string& certPem, const std::string& keyPem)
{
    X509Ptr cert = parseCertificate(certPem);
    BioPtr bio = readBio(keyPem);
    KeyPtr key(bio ? PEM_read_bio_PrivateKey(bio.get(), nullptr, nullptr, nullptr) : nullptr);
    bool matches = cert && key && X509_check_private_key(cert.get(), key.get()) == 1;
    ERR_clear_error();
    return matches;
}

Validity validityNow(const std::string& certPem)
{
    X509Ptr cert = parseCertificate(certPem);
    if (!cert) return Validity::Unreadable;
    if (X509_cmp_current_time(X509_get0_notAfter(cert.get())) < 0) return Validity::Expired;
    if (X509_cmp_current_time(X509_get0_notBefore(cert.get())) > 0) return Validity::NotYetValid;
    return Validity::Valid;
}

std::string validityText(const std::tm& notBefore, const std::tm& notAfter)
{
    return dateText(notBefore) + "_To_" + dateText(notAfter);
}

std::string caName(const CertInfo& info) { return info.commonName + "_" + validityText(info.notBefore, info.notAfter); }

}  // namespace corvelsim
