// The name under which the printer lists a CA certificate: the certificate's
// common name, "_" and its validity ("Acme CA_Jan__5_2010_To_Dec_31_2030").
#include <openssl/bio.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <cstdio>
#include <cstring>

#include "cert/CertMgr.h"
#include "common/Console.h"

namespace {

const char kMonths[12][4] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
constexpr size_t kSubjectSize = 256;
constexpr size_t kNameSize = 256;
constexpr size_t kValiditySize = 128;

// The number in `count` characters, read as a decimal integer up to the
// first non-digit (no digit gives 0).
int numberIn(const char* text, int count)
{
    int value = 0;
    for (int i = 0; i < count && text[i] >= '0' && text[i] <= '9'; ++i) {
        value = value * 10 + (text[i] - '0');
    }
    return value;
}

// "_5" for days up to 9, "31" otherwise.
void formatDay(int day, char (&out)[16]) { std::snprintf(out, sizeof out, day > 9 ? "%d" : "_%d", day); }

struct CertDate {
    int year = 0, month = 0, day = 0;
};

bool readTime(const ASN1_TIME* time, CertDate& date)
{
    if (time == nullptr) {
        return false;
    }
    const char* text = reinterpret_cast<const char*>(ASN1_STRING_get0_data(time));
    return CertMgr::parseCertTime(text, ASN1_STRING_length(time), date.year, date.month, date.day);
}

// Reads the subject and validity of the file's first certificate; -1 when
// the file or the certificate cannot be read or the subject has no common name.
int readSubject(BIO* bio, const std::string& path, std::string& commonName, std::string& caName)
{
    if (bio == nullptr || BIO_read_filename(bio, path.c_str()) <= 0) {
        traceF("D [CVL] Failed to read Pem file '%s'?!\n", path.c_str());
        return -1;
    }
    X509* certificate = PEM_read_bio_X509_AUX(bio, nullptr, nullptr, nullptr);
    if (certificate == nullptr) {
        traceF("D [CVL] PEM_read failed?!\n");
        return -1;
    }
    int result = -1;
    char subject[kSubjectSize] = {};
    CertDate start, end;
    char validity[kValiditySize] = {};
    char name[kNameSize] = {};
    const char* found = nullptr;
    // A time of another length, or a month outside the calendar, gives no
    // validity text and so no CA name: the printer's list cannot be matched.
    if (X509_NAME_oneline(X509_get_subject_name(certificate), subject, sizeof subject) != nullptr &&
        (found = std::strstr(subject, "CN=")) != nullptr && found[3] != '\0' &&
        readTime(X509_get0_notBefore(certificate), start) && readTime(X509_get0_notAfter(certificate), end) &&
        CertMgr::formatValidity(start.year, start.month, start.day, end.year, end.month, end.day, validity,
                                sizeof validity) > 0) {
        // A common name too long for the CA name's buffer gives no CA name
        // either: a shortened one would never match the printer's.
        const int length = std::snprintf(name, sizeof name, "%s_%s", found + 3, validity);
        if (length > 0 && static_cast<size_t>(length) < sizeof name) {
            commonName = found + 3;
            caName = name;
            result = 0;
        }
    }
    X509_free(certificate);
    return result;
}

}  // namespace

int CertMgr::readPemSubject(const std::string& path, std::string& commonName, std::string& caName)
{
    BIO* bio = BIO_new(BIO_s_file());
    const int result = readSubject(bio, path, commonName, caName);
    BIO_free_all(bio);
    return result;
}

bool CertMgr::parseCertTime(const char* text, int length, int& year, int& month, int& day)
{
    if (text == nullptr || length < 13 || length > 20) {
        return false;
    }
    int at = 4;
    if (length == 13) {  // UTCTime: a two-digit year
        const int shortYear = numberIn(text, 2);
        year = shortYear <= 49 ? 2000 + shortYear : 1900 + shortYear;
        at = 2;
    } else {
        year = numberIn(text, 4);
    }
    month = numberIn(text + at, 2);
    day = numberIn(text + at + 2, 2);
    return true;
}

int CertMgr::formatValidity(int startYear, int startMonth, int startDay, int endYear, int endMonth, int endDay,
                            char* out, uint32_t capacity)
{
    if (capacity < 26 || startMonth < 1 || startMonth > 12 || endMonth < 1 || endMonth > 12) {
        return 0;
    }
    char startDayText[16], endDayText[16];
    formatDay(startDay, startDayText);
    formatDay(endDay, endDayText);
    const int length = std::snprintf(out, capacity, "%s_%s_%04d_To_%s_%s_%04d", kMonths[startMonth - 1], startDayText,
                                     startYear, kMonths[endMonth - 1], endDayText, endYear);
    return length > 0 && static_cast<uint32_t>(length) < capacity ? length : 0;
}
