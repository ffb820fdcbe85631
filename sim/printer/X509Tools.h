// The OpenSSL work of the printer's certificate manager: key pairs, signing
// requests, reading certificates and the names the printer lists them by.
#pragma once

#include <ctime>
#include <string>

namespace corvelsim {

// A certificate subject as the certificate manager sends and answers it.
struct Subject {
    std::string O, OU, C, ST, L, CN, AN;  // AN: an alternative (DNS) name
};

// A new EC P-256 key (PKCS#8 PEM) and a PKCS#10 request for `subject`
// signed with it (PEM). False and a message when a field is refused.
bool makeKeyAndRequest(const Subject& subject, std::string& keyPem, std::string& requestPem, std::string& error);

// What the printer reads from an uploaded certificate.
struct CertInfo {
    std::string commonName;    // the first CN of the subject ("" when none)
    std::string organization;  // the first O of the subject ("" when none)
    std::tm notBefore{}, notAfter{};
};

// Reads the first certificate of a PEM text; false when there is none.
bool readCertificate(const std::string& pem, CertInfo& info, std::string& certPem);

// True when the certificate (PEM) carries the public key of the private key (PEM).
bool certMatchesKey(const std::string& certPem, const std::string& keyPem);

enum class Validity { Valid, Expired, NotYetValid, Unreadable };
Validity validityNow(const std::string& certPem);

// "Jan__5_2010_To_Dec_31_2030": month, day (two digits above 9, else "_"
// and the digit), four-digit year, for the start and the end.
std::string validityText(const std::tm& notBefore, const std::tm& notAfter);

// The name the printer lists a CA certificate by: common name, "_", validity text.
std::string caName(const CertInfo& info);

}  // namespace corvelsim
