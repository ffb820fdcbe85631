// The printer's answer to certificate-manager calls, from the raw bytes on
// the wire through the framing, the envelope and the XML to each method's
// reading. Every run must end with a documented result and bounded lists.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "cert/CertMgr.h"
#include "npa/NPAChannel.h"
#include "tests/support/ScriptedConnector.h"

namespace {

void check(bool condition)
{
    if (!condition) std::abort();
}

bool isResult(int result) { return result == 0 || result == -1; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    ScopedScriptedPrinter scripted;
    const std::vector<uint8_t> answer(data, data + size);
    for (int i = 0; i < 12; ++i) scripted.printer.addAnswer(answer);
    CertMgr client(std::make_unique<NPAChannel>("/dev/usb/lp0"));

    std::string s[7];
    check(isResult(client.getCertRequestDefaults(s[0], s[1], s[2], s[3], s[4], s[5], s[6])));
    std::vector<std::string> names = {"before"};
    const int listed = client.getFriendlyNameList(names);
    check(isResult(listed) && names.size() <= 9 && (listed == 0 || names.size() == 1));
    check(isResult(client.getCACommonNameList(names)) && names.size() <= 9);
    check(isResult(client.getCAInfo("ca", s[0], s[1], s[2])));
    check(isResult(client.deleteCACert("ca")));
    check(isResult(client.saveCertRequest("/dev/null")));
    check(isResult(client.createCertRequest("o", "u", "c", "s", "l", "cn", "an")));
    // Every exchange is bounded by its time limit, however the bytes arrive.
    check(scripted.fake.clock.microseconds < 8LL * 60 * 1000000);
    return 0;
}
