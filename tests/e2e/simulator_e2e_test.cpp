// corvelsim on its own, driven by a minimal client: many open/close cycles,
// no stale answer across exchanges, a certificate-manager call, the exit status.
#include <gtest/gtest.h>

#include <sstream>

#include "tests/e2e/HexBytes.h"
#include "tests/e2e/SimRun.h"

namespace e2e {
namespace {

std::vector<std::string> lines(const std::string& text)
{
    std::vector<std::string> result;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) result.push_back(line);
    return result;
}

SimRun runClient(const SimDir& dir, std::vector<std::string> exchanges)
{
    exchanges.insert(exchanges.begin(), {PRINTER_CLIENT_PATH, "/dev/usb/lp0"});
    return runSim(dir, {"--speed", "1"}, exchanges);
}

TEST(Simulator, ServesManyOpenCloseCycles)
{
    SimDir dir;
    const size_t cycles = 40;
    SimRun run = runClient(dir, std::vector<std::string>(cycles, "A5000650E0D8002A06/37"));  // 37: a whole answer
    ASSERT_EQ(run.status, 0) << run.err;
    std::vector<std::string> answers = lines(run.out);
    ASSERT_EQ(answers.size(), cycles);
    ASSERT_EQ(run.log.size(), cycles);
    for (size_t i = 0; i < cycles; ++i) {
        EXPECT_EQ(answers[i], logValue(run.log[i], "answer")) << "cycle " << i;
        EXPECT_EQ(logValue(run.log[i], "seq"), std::to_string(i + 1));
    }
}

TEST(Simulator, AnswerLeftUnreadDoesNotLeakIntoTheNextExchange)
{
    SimDir dir;
    SimRun run = runClient(dir, {"A5000650E0D8002808/1", "A5000650E0D8002A1D/12"});
    ASSERT_EQ(run.status, 0) << run.err;
    std::vector<std::string> answers = lines(run.out);
    ASSERT_EQ(answers.size(), 2u);
    EXPECT_EQ(answers[0], "A5");
    EXPECT_TRUE(sameBytes(bytesFromHex("A5 00 09 50 E0 D8 00 2A 1D 00 01 00"), bytesFromHex(answers[1])));
}

TEST(Simulator, CertificateManagerCallIsLoggedAsOneRequest)
{
    const std::string xml = "<?xml version=\"1.0\"?><method name=\"callMethod\" requestID=\"420\">"
                            "<arg name=\"objName\">applications.certMgr</arg>"
                            "<arg name=\"method\">queryCAList</arg></method>";
    const size_t length = xml.size() + 6;
    const std::string call = "A5001080" "3CC33CC321DE3CC322DD01FE24DB5D" "A5" +
                             toHex({uint8_t(length >> 8), uint8_t(length)}) + "50E0C0030001" +
                             toHex(Bytes(xml.begin(), xml.end()));
    SimDir dir;
    SimRun run = runClient(dir, {call + "/1"});
    ASSERT_EQ(run.status, 0) << run.err;
    ASSERT_EQ(run.log.size(), 1u);
    EXPECT_EQ(logValue(run.log[0], "kind"), "certmgr");
    EXPECT_EQ(logValue(run.log[0], "method"), "queryCAList");
    EXPECT_EQ(logValue(run.log[0], "raw"), call);
}

TEST(Simulator, EndsWithTheCommandsExitStatusOrSignal)
{
    SimDir dir;
    EXPECT_EQ(runSim(dir, {}, {"/bin/sh", "-c", "exit 7"}).status, 7);
    EXPECT_EQ(runSim(dir, {}, {"/bin/sh", "-c", "kill -TERM $$"}).status, 128 + 15);
    SimRun devices = runSim(dir, {"--lp", "2"}, {"/bin/sh", "-c", "test -c /dev/usb/lp2 && test ! -e /dev/usb/lp0"});
    EXPECT_EQ(devices.status, 0) << devices.err;
}

}  // namespace
}  // namespace e2e
