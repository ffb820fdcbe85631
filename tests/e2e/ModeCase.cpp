#include "tests/e2e/ModeCase.h"

#include "tests/e2e/SimRun.h"

namespace e2e {

namespace {

int occurrences(const std::string& text, const std::string& part)
{
    int count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) ++count;
    return count;
}

}  // namespace

void checkModeRun(const ModeCase& mode)
{
    SimDir dir;
    if (!mode.state.empty()) dir.write("state.txt", mode.state);
    SimRun result = mode.input ? runInWithInput(dir, mode.simOptions, mode.args, mode.input)
                               : runIn(dir, mode.simOptions, mode.args);
    ASSERT_FALSE(result.timedOut) << "the run did not end";
    EXPECT_EQ(result.status, mode.status) << result.err;
    EXPECT_TRUE(sameText(mode.out, result.out));
    if (!mode.errLine.empty()) {
        EXPECT_EQ(occurrences(result.err, mode.errLine), mode.errTimes) << mode.errLine << "\nin:\n" << result.err;
    }
    EXPECT_TRUE(result.badLogLines.empty());
    EXPECT_EQ(result.log.size(), mode.requests.size()) << "requests the printer received";
    for (size_t i = 0; i < mode.requests.size() && i < result.log.size(); ++i) {
        EXPECT_TRUE(sameBytes(mode.requests[i], bytesFromHex(result.log[i]["raw"].text))) << "request " << i + 1;
    }
}

}  // namespace e2e
