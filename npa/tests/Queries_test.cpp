// The 802.1x queries search the collected answer for the inner read answer;
// the answer is untrusted, so the search and the value must stay inside it.
#include <gtest/gtest.h>

#include "npa/tests/NpaTestSupport.h"

namespace {

// A wrapped answer to a read of 2A/field: envelope, then the inner answer
// packet with the declared value length and the value bytes given.
std::string wrappedReadAnswer(const char* field, const char* declaredLength, const std::string& value)
{
    return std::string("A5 00 00 50 E0 63 02 00 00 A5 00 00 50 E0 D8 00 2A ") + field + " " + declaredLength + " " +
           value;
}

TEST(Queries, ReportTheValueFoundInsideTheAnswer)
{
    using Q = WirelessConfigurator;
    const struct {
        int (Q::*query)();
        std::string answer;
        int result;
        const char* line;  // the value's line on standard error; nullptr: none
    } cases[] = {
        {&Q::queryAuthStatus, wrappedReadAnswer("1D", "00 01", "0B"), 11,
         "D [CVL] Status: 11 (CA Certificate Not Installed)\n"},
        {&Q::queryAuthStatus, wrappedReadAnswer("1D", "00 01", "0E"), 14, "D [CVL] Status: 14 (Unknown status)\n"},
        {&Q::queryAuthStatus, wrappedReadAnswer("1C", "00 01", "02"), -1, nullptr},  // another field's answer
        {&Q::queryAuthStatus, wrappedReadAnswer("1D", "00 01", ""), -1, nullptr},    // value announced, missing
        {&Q::queryAuthStatus, wrappedReadAnswer("1D", "", ""), -1, nullptr},         // header cut at the end
        {&Q::queryAuthStatus, "", -1, nullptr},
        {&Q::queryCertSettings, wrappedReadAnswer("06", "00 05", hexOf("Acme") + " 00"), 0,
         "D [CVL] Organization (5 bytes): Acme\n"},
        {&Q::queryCertSettings, wrappedReadAnswer("06", "01 2C", hexOf("Acme")), 0,
         "D [CVL] Organization (4 bytes): Acme\n"},  // value cut at the end of the answer
        {&Q::queryCertSettings, wrappedReadAnswer("06", "00 00", ""), 0, "D [CVL] Organization (0 bytes): \n"},
        {&Q::queryCertSettings, wrappedReadAnswer("06", "00", ""), 0, nullptr},
    };
    for (const auto& c : cases) {
        ConfiguratorUnderTest t;
        std::vector<uint8_t> answer = bytesFromHex(c.answer);
        if (!answer.empty()) {
            answer[2] = static_cast<uint8_t>(answer.size() - 3);  // the envelope's frame length
        }
        t.transport.addAnswer(answer);
        const Captured captured = captureOutput([&] { EXPECT_EQ((t.configurator.*c.query)(), c.result) << c.answer; });
        // 2 s after the request, then reads for 3 s; a silent read lets 5 s pass.
        EXPECT_LT(t.clock.clock.now() - t.clock.clock.start, 2 + 3 + 5 + 5 * (c.query == &Q::queryCertSettings));
        const bool valueShown = captured.err.find("Status:") != std::string::npos ||
                                captured.err.find("Organization (") != std::string::npos;
        EXPECT_EQ(valueShown, c.line != nullptr) << c.answer << "\n" << captured.err;
        if (c.line != nullptr) {
            EXPECT_NE(captured.err.find(c.line), std::string::npos) << captured.err;
        }
    }
}

}  // namespace
