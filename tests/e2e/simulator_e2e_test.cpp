// corvelsim on its own: no stale answer across exchanges, driven by a
// minimal client.
#include <gtest/gtest.h>

#include <sstream>

#include "tests/e2e/SimRun.h"

namespace e2e {
namespace {

// The client reads 1 byte of the first answer and closes, then asks again:
// the rest of the first answer must be gone. The client waits for counted
// answers as long as they take, so a slow machine makes no difference.
TEST(Simulator, AnswerLeftUnreadDoesNotLeakIntoTheNextExchange)
{
    SimDir dir;
    SimRun run = runSim(dir, {"--speed", "1"},
                        {PRINTER_CLIENT_PATH, "/dev/usb/lp0", "A5000650E0D8002808/1", "A5000650E0D8002A1D/12"});
    ASSERT_EQ(run.status, 0) << run.err;
    std::istringstream answers(run.out);
    std::string first, second;
    std::getline(answers, first);
    std::getline(answers, second);
    EXPECT_EQ(first, "A5");
    EXPECT_EQ(second, "A5000950E0D8002A1D000100");
}

}  // namespace
}  // namespace e2e
