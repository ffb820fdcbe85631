// The transport (one per thread), its choice of connector and its quiet-time read,
// with a scripted connector and the fake clock instead of a printer.
#include "transport/HCUSBTransport.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cerrno>
#include <deque>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/ScriptedConnector.h"
#include "transport/USBLPConnector.h"

namespace {

constexpr long long kSecond = 1000000;

using Events = std::vector<std::string>;

// Holds one transport reference over a scripted printer.
class TransportTest : public testing::Test {
protected:
    void TearDown() override
    {
        testing::internal::CaptureStderr();
        HCUSBTransport::releaseInstance();
        testing::internal::GetCapturedStderr();
    }

    ScopedScriptedPrinter m_Scripted;
    ScriptedPrinter& m_Printer = m_Scripted.printer;
    FakeClock& m_Clock = m_Scripted.fake.clock;
    HCUSBTransport* m_Transport = HCUSBTransport::getInstance();
};

// The read returns once all bytes are there, or once more than four whole
// seconds passed without a new byte; earliest and latest fake-clock times.
TEST_F(TransportTest, ReadCollectsPiecesUntilCompleteOrQuiet)
{
    // clang-format off
    const struct {
        const char* name;
        std::deque<Arrival> script;
        int32_t length;
        std::string expected;
        long long earliest, latest;
        IoStatus idleWait;
    } cases[] = {
        // Six seconds in all, but never four without a piece: the quiet time restarts with each.
        {"pieces", {{0, "ANS"}, {2 * kSecond, "WER-"}, {6 * kSecond, "12345"}}, 12, "ANSWER-12345",
         6 * kSecond, 6 * kSecond, IoStatus::TimedOut},
        {"exact length already there", {{0, "0123456789AB"}}, 12, "0123456789AB", 0, 0, IoStatus::TimedOut},
        {"silent printer", {}, 16, "", 5 * kSecond, 6 * kSecond, IoStatus::TimedOut},
        {"wait error", {{0, "abc"}, {1 * kSecond, "never"}}, 8, "abc", 0, 0, IoStatus::Failed},
        {"readable but empty", {}, 8, "", 5 * kSecond, 6 * kSecond, IoStatus::DataReady},
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        m_Clock.microseconds = 0;
        m_Printer.answers = {c.script};
        m_Printer.idleWait = c.idleWait;
        ASSERT_EQ(m_Transport->open("/dev/usb/lp0"), 0);
        std::vector<uint8_t> buffer(static_cast<size_t>(c.length));
        const int32_t got = m_Transport->read(buffer.data(), c.length);
        ASSERT_GE(got, 0);
        EXPECT_EQ(std::string(buffer.begin(), buffer.begin() + got), c.expected);
        EXPECT_GE(m_Clock.microseconds, c.earliest);
        EXPECT_LE(m_Clock.microseconds, c.latest);
    }
}

// Each open replaces the previous connector; the last release destroys the
// instance once, with its line.
TEST_F(TransportTest, OpenReplacesTheConnectorAndLastReleaseDestroys)
{
    m_Printer.openResult = 1;
    EXPECT_EQ(m_Transport->open("/dev/usb/lp0"), -1);
    EXPECT_EQ(m_Transport->close(), 0);  // a connector whose open failed stays until the next open
    m_Printer.openResult = 0;
    EXPECT_EQ(m_Transport->open("2:5"), 0);
    EXPECT_EQ(m_Printer.paths, (Events{"/dev/usb/lp0", "2:5"}));

    EXPECT_EQ(HCUSBTransport::getInstance(), m_Transport);  // a second reference to the same instance
    testing::internal::CaptureStderr();
    HCUSBTransport::releaseInstance();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(m_Printer.events.back(), "open");  // still alive with its connector
    testing::internal::CaptureStderr();
    HCUSBTransport::releaseInstance();
    HCUSBTransport::releaseInstance();  // one release too many changes nothing
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "D [CVL] Destroying last instance of usb transport.\n");
    EXPECT_EQ(m_Printer.events, (Events{"open", "close", "close", "destroyed", "open", "destroyed"}));
    HCUSBTransport::getInstance();  // counted from zero again: one release destroys it
    testing::internal::CaptureStderr();
    HCUSBTransport::releaseInstance();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "D [CVL] Destroying last instance of usb transport.\n");
}

// Each thread has a transport of its own (a printer per thread), which its
// last release there destroys, leaving this thread's alone.
TEST_F(TransportTest, EachThreadHasItsOwn)
{
    HCUSBTransport* other = nullptr;
    std::string traced;
    std::thread([&] {
        other = HCUSBTransport::getInstance();
        testing::internal::CaptureStderr();
        HCUSBTransport::releaseInstance();
        traced = testing::internal::GetCapturedStderr();
    }).join();
    EXPECT_NE(other, m_Transport);
    EXPECT_EQ(traced, "D [CVL] Destroying last instance of usb transport.\n");
    EXPECT_EQ(HCUSBTransport::getInstance(), m_Transport);
    HCUSBTransport::releaseInstance();
}

// A node whose read fails with EIO (what an unplugged printer's node gives;
// here /proc/self/mem read at address 0) marks the printer gone.
TEST(DeviceNodeConnector, InputOutputErrorMeansThePrinterIsGone)
{
    char dir[] = "/tmp/cvl-eioXXXXXX";
    ASSERT_NE(mkdtemp(dir), nullptr);
    const std::string prefix = std::string(dir) + "/lp";
    ASSERT_EQ(symlink("/proc/self/mem", (prefix + "0").c_str()), 0);
    USBLPConnector node(prefix.c_str(), 0);
    ASSERT_EQ(node.open(), 0);
    uint8_t buffer[8];
    EXPECT_EQ(node.read(buffer, sizeof buffer), -1);
    EXPECT_EQ(node.getStatus(), static_cast<int32_t>(IoStatus::Gone));
    EXPECT_EQ(node.getError(), EIO);
    node.close();
    unlink((prefix + "0").c_str());
    rmdir(dir);
}

}  // namespace
