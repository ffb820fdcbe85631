// Answers are untrusted: random bytes, often framed, must give a defined result
// from every exchange and query (the sanitizer build checks the memory side).
#include <gtest/gtest.h>

#include <random>

#include "npa/tests/NpaTestSupport.h"

namespace {

// Random bytes with start bytes and part of a plausible header mixed in.
std::vector<uint8_t> randomAnswer(std::mt19937& random)
{
    static const std::vector<uint8_t> header = bytesFromHex("A5 00 0C 50 E0 D8 00 2A 1D 00 FF");
    std::vector<uint8_t> answer(random() % 40);
    for (uint8_t& byte : answer) {
        byte = static_cast<uint8_t>(random() % 4 == 0 ? 0xA5 : random());
    }
    answer.insert(answer.begin() + static_cast<long>(random() % (answer.size() + 1)), header.begin(),
                  header.begin() + static_cast<long>(random() % (header.size() + 1)));
    return answer;
}

TEST(Robustness, RandomAnswersGiveDefinedResults)
{
    std::mt19937 random(20240611);
    for (int round = 0; round < 300; ++round) {
        ConfiguratorUnderTest t;
        t.configurator.setPassThrough(round % 2 == 0);
        for (int i = 0; i < 12; ++i) {
            t.transport.addAnswerInPieces({randomAnswer(random), randomAnswer(random)});
        }
        captureOutput([&] {
            const int status = t.configurator.queryAuthStatus();
            EXPECT_TRUE(status >= -1 && status <= 255) << status;
            EXPECT_EQ(t.configurator.queryCertSettings(), 0);
            const int text = t.configurator.showSSID();
            EXPECT_TRUE(text >= -1 && text <= 1) << text;
            const int settings = t.configurator.basicConfig();
            EXPECT_TRUE(settings >= -1 && settings <= 1) << settings;
        });
    }
}

}  // namespace
