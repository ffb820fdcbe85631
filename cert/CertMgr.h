// The client of the printer's certificate manager: every operation is one XML
// method call ("callMethod" on "applications.certMgr") carried in two NPA
// packets, and its answer is judged by the status code in the XML.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class NPAChannel;
class ObjStoreResponse;

class CertMgr {
public:
    // Friendly name of the certificate this utility creates and installs.
    static const char* const defaultFriendlyName;

    // The client for the printer at `usbPath`; null, after writing
    // "Error: No USB device is specified!" to standard error, for an empty path.
    static std::unique_ptr<CertMgr> create(const std::string& usbPath);
    // The same over a given channel (its device path is checked).
    static std::unique_ptr<CertMgr> create(std::unique_ptr<NPAChannel> channel);
    explicit CertMgr(std::unique_ptr<NPAChannel> channel);
    virtual ~CertMgr();

    CertMgr(const CertMgr&) = delete;
    CertMgr& operator=(const CertMgr&) = delete;

    // Methods: 0 success, -1 failure (no answer, refusal, bad file, or a
    // request too long for its buffer). A friendly name of null means the default.
    int deleteCACert(const std::string& caName);
    int deleteSignedCert(const char* friendlyName = nullptr);
    int getCertRequestDefaults(std::string& org, std::string& unit, std::string& country, std::string& state,
                               std::string& city, std::string& common, std::string& altname);
    int installSignedCert(const std::string& path, const char* friendlyName = nullptr);
    int getCAInfo(const std::string& caName, std::string& fileName, std::string& pemPath, std::string& commonName);
    int getFriendlyNameList(std::vector<std::string>& names);
    int getCACommonNameList(std::vector<std::string>& names);
    int installCACert(const std::string& path);
    int saveCertRequest(const std::string& outputPath, const char* friendlyName = nullptr);
    int createCertRequest(const std::string& org, const std::string& unit, const std::string& country,
                          const std::string& state, const std::string& city, const std::string& common,
                          const std::string& altname, const char* friendlyName = nullptr);
    // The certificate signing request the printer made, as it sent it (PEM).
    int exportCertRequest(std::vector<uint8_t>& pem, const char* friendlyName = nullptr);

    // Names (of CAs, files and friendly names) go into requests XML-escaped
    // when set; by default they go as they stand.
    void setEscapeNames(bool escape) { m_EscapeNames = escape; }
    // Certificate files of up to 48,000 bytes are uploaded when set (the
    // most one packet carries); by default the files that fit the 16 KiB
    // request buffer, about 11,900 bytes.
    void setLargeFiles(bool large) { m_LargeFiles = large; }
    // Name lists are read whole when set; by default only their first nine names.
    void setWholeLists(bool whole) { m_WholeLists = whole; }

    // The status code and message of the last answer judged (code 0 before any).
    struct CallStatus {
        int code = 0;
        std::string message;
    };
    const CallStatus& lastStatus() const { return m_LastStatus; }
    // Whether the last installCACert deleted a CA of the same name first.
    bool replacedCA() const { return m_ReplacedCA; }

    // Deletes the printer's CA of the same name as the certificate in the
    // file: 1 when one was deleted, else 0.
    int removeExistingCA(const std::string& path);

    // Sends one request text and gives the answer's XML text. Returns the
    // count of raw answer bytes; 0 or less means no answer (text not set).
    int sendRequest(const char* request, std::string& answerText, int timeLimitSeconds);

    // File and certificate routines (they use no state of the client).
    static bool saveToFile(const uint8_t* bytes, int32_t length, const std::string& path);
    static int loadFromFile(uint8_t* buffer, int32_t capacity, const std::string& path);
    static int readPemSubject(const std::string& path, std::string& commonName, std::string& caName);
    // Assigns year, month and day for a time text of 13 (UTCTime) to 20
    // characters and returns true; leaves them for any other length.
    static bool parseCertTime(const char* text, int length, int& year, int& month, int& day);
    // "Jan__5_2010_To_Dec_31_2030"; its length, or 0 when the capacity is
    // under 26 or a month is outside 1-12 (nothing written then).
    static int formatValidity(int startYear, int startMonth, int startDay, int endYear, int endMonth, int endDay,
                              char* out, uint32_t capacity);
    static std::string escapeXml(const char* text);

private:
    static std::unique_ptr<CertMgr> reportNoDevice();
    // Sends the request and gives the answer's text to `response`; false
    // when no answer came (the exchange has said why).
    bool exchange(const char* request, int timeLimitSeconds, ObjStoreResponse& response);
    // The exchange judged by its status code: 0 when it is 1; -1 when no
    // answer came, or after writing `errorLine` (with the code) and
    // `messageLine` (with the printer's message) when it is another.
    int call(const char* request, int timeLimitSeconds, ObjStoreResponse& response, const char* errorLine,
             const char* messageLine = "D [CVL] %s\n");

    // The buffers of a file and of its upload request.
    int32_t fileCapacity() const;
    size_t requestCapacity() const;
    // `name` as it goes into a request.
    std::string requestName(const std::string& name) const;

    std::unique_ptr<NPAChannel> npaChannel;
    bool m_EscapeNames = false;
    bool m_WholeLists = false;
    bool m_ReplacedCA = false;
    bool m_LargeFiles = false;
    CallStatus m_LastStatus;
};
