// One answer of the printer's certificate manager and the fields read from it.
// An answer is a <response> holding one <MapElem> of <child name="..."> fields,
// each holding an IntegerElem, StringElem, BinaryElem or ListElem value.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

class ObjStoreResponse {
public:
    ObjStoreResponse() = default;
    virtual ~ObjStoreResponse() = default;

    void setResponse(const char* xml);

    // status_code read as atoi reads it (clamped to the int range): 0 when missing
    // or not numeric.
    int getStatusCode() const;
    std::string getStatusMessage() const;
    std::string getFriendlyName() const;

    // The accessors below read only when the status_code text is exactly "1";
    // otherwise they leave their outputs untouched.
    void getCAFileInfo(std::string& fileName, std::string& path, std::string& commonName) const;
    // Decodes cert_dot_csr_file into `buffer`; the number of bytes, or 0 when
    // the status is not "1" or the request does not fit `capacity`.
    int getCSRFile(unsigned char* buffer, uint32_t capacity) const;
    // 1 when the fields were read, else 0.
    int getCertDefaults(std::string& organization, std::string& unit, std::string& country, std::string& state,
                        std::string& locality, std::string& commonName, std::string& altName) const;
    void getCertList(std::vector<std::string>& names) const;
    void getCAList(std::vector<std::string>& names) const;
    // Either list whole, not only its first nine names.
    void getWholeList(std::vector<std::string>& names) const;

private:
    bool statusIsSuccess() const;
    void readNameList(std::vector<std::string>& names) const;

    std::string m_Response;
};
