// corvelsim on its own, driven by a minimal client: many open/close cycles,
// no stale answer across exchanges, the child's exit status.
#include <gtest/gtest.h>

#include <sstream>

#include "tests/e2e/ByteCompare.h"
#include "tests/e2e/SimRun.h"

namespace e2e {
namespace {

const char* const kClient = PRINTER_CLIENT_PATH;

std::vector<std::string> lines(const std::string& text)
{
    std::vector<std::string> result;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) result.push_back(line);
    return result;
}

TEST(Simulator, ServesManyOpenCloseCycles)
{
    SimDir dir;
    std::vector<std::string> command = {kClient, "/dev/usb/lp0"};
    const int cycles = 40;
    // Each answer is read whole: 37 bytes.
    for (int i = 0; i < cycles; ++i) command.push_back("A5000650E0D8002A06/37");
    SimRun result = runCommandIn(dir, {"--speed", "1"}, command);
    ASSERT_EQ(result.status, 0) << result.err;
    std::vector<std::string> answers = lines(result.out);
    ASSERT_EQ(answers.size(), size_t(cycles));
    ASSERT_EQ(result.log.size(), size_t(cycles));
    for (int i = 0; i < cycles; ++i) {
        EXPECT_EQ(answers[i], result.log[i]["answer"].text) << "cycle " << i;
        EXPECT_EQ(result.log[i]["seq"].number, i + 1);
    }
}

TEST(Simulator, AnswerLeftUnreadDoesNotLeakIntoTheNextExchange)
{
    SimDir dir;
    // Read 1 byte of the first answer, then a whole second answer (12 bytes).
    SimRun result = runCommandIn(dir, {"--speed", "1"},
                                 {kClient, "/dev/usb/lp0", "A5000650E0D8002808/1", "A5000650E0D8002A1D/12"});
    ASSERT_EQ(result.status, 0) << result.err;
    std::vector<std::string> answers = lines(result.out);
    ASSERT_EQ(answers.size(), 2u);
    EXPECT_EQ(answers[0], "A5");
    EXPECT_TRUE(sameBytes(bytesFromHex("A5 00 09 50 E0 D8 00 2A 1D 00 01 00"), bytesFromHex(answers[1])));
}

TEST(Simulator, CertificateManagerCallIsLoggedAsOneRequest)
{
    SimDir dir;
    const std::string xml =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?><method name=\"callMethod\" requestID=\"420\"><arg "
        "name=\"objName\">applications.certMgr</arg><arg name=\"method\">queryCAList</arg><arg "
        "name=\"params\"><ListElem><ListElem></ListElem></ListElem></arg></method>";
    std::ostringstream hex;
    hex << "A5001080" << "3CC33CC321DE3CC322DD01FE24DB5D" << "A5";
    char length[5];
    std::snprintf(length, sizeof length, "%04zX", xml.size() + 6);
    hex << length << "50E0C0030001";
    for (unsigned char c : xml) {
        char two[3];
        std::snprintf(two, sizeof two, "%02X", c);
        hex << two;
    }
    SimRun result = runCommandIn(dir, {"--speed", "1"}, {kClient, "/dev/usb/lp0", hex.str() + "/1"});
    ASSERT_EQ(result.status, 0) << result.err;
    ASSERT_EQ(result.log.size(), 1u);
    EXPECT_EQ(result.log[0]["kind"].text, "certmgr");
    EXPECT_EQ(result.log[0]["method"].text, "queryCAList");
    EXPECT_EQ(result.log[0]["raw"].text, hex.str());
}

TEST(Simulator, EndsWithTheCommandsExitStatusOrSignal)
{
    SimDir dir;
    EXPECT_EQ(runCommandIn(dir, {}, {"/bin/sh", "-c", "exit 7"}).status, 7);
    EXPECT_EQ(runCommandIn(dir, {}, {"/bin/sh", "-c", "kill -TERM $$"}).status, 128 + 15);
    SimRun devices = runCommandIn(dir, {"--lp", "2"}, {"/bin/sh", "-c", "test -c /dev/usb/lp2 && test ! -e /dev/usb/lp0"});
    EXPECT_EQ(devices.status, 0) << devices.err;
}

}  // namespace
}  // namespace e2e
