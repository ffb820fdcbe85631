// Runs every accessor of ObjStoreResponse over a fuzzed answer and checks the
// gates: outputs change only when the status text is "1".
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "xml/ObjStoreResponse.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static FILE* devNull = std::freopen("/dev/null", "w", stdout);
    (void)devNull;
    const std::string text(reinterpret_cast<const char*>(data), size);
    ObjStoreResponse response;
    response.setResponse(text.c_str());

    response.getStatusCode();
    response.getStatusMessage();
    response.getFriendlyName();

    std::string file = "\x01", path = "\x01", name = "\x01";
    response.getCAFileInfo(file, path, name);

    static unsigned char csr[16384];
    const int csrBytes = response.getCSRFile(csr, sizeof csr);
    if (csrBytes < 0 || csrBytes > static_cast<int>(sizeof csr)) {
        std::abort();
    }

    std::string subject[7];
    const int defaults =
        response.getCertDefaults(subject[0], subject[1], subject[2], subject[3], subject[4], subject[5], subject[6]);

    std::vector<std::string> certs = {"\x01"};
    response.getCertList(certs);
    std::vector<std::string> cas;
    response.getCAList(cas);
    if (certs.size() > 9 || cas.size() > 9) {
        std::abort();
    }
    for (const std::string& item : cas) {
        if (item.empty()) {
            std::abort();  // the walk ends at the first empty item
        }
    }
    // A shut gate leaves every output as it was.
    if (defaults != 1 &&
        (file != "\x01" || path != "\x01" || name != "\x01" || csrBytes != 0 || certs.size() != 1 || !cas.empty())) {
        std::abort();
    }
    return 0;
}
