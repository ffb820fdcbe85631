// The transport singleton, its choice of connector and its quiet-time read,
// with a scripted connector and the fake clock instead of a printer.
#include "transport/HCUSBTransport.h"

#include <gtest/gtest.h>

#include <pty.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/FakeClock.h"
#include "transport/USBLPConnector.h"

namespace {

constexpr long long kSecond = 1000000;

using Events = std::vector<std::string>;

// Bytes that reach the host at a given time on the fake clock.
struct Arrival {
    long long atMicroseconds;
    std::string bytes;
};

// A printer whose answer arrives in scripted pieces. Waits advance the fake
// clock the way a select() with that limit would.
class ScriptedConnector : public HCIOConnector {
public:
    ScriptedConnector(Events& events, FakeClock& clock, std::deque<Arrival> arrivals, int openResult)
        : m_Events(events), m_Clock(clock), m_Arrivals(std::move(arrivals)), m_OpenResult(openResult)
    {
    }
    ~ScriptedConnector() override { m_Events.push_back("destroyed"); }
    int open() override { m_Events.push_back("open"); return m_OpenResult; }
    int close() override { m_Events.push_back("close"); return 0; }
    // Hands over what arrived of the first pending piece; the rest stays for the next read.
    int32_t read(uint8_t* buffer, int32_t length) override
    {
        if (m_Arrivals.empty() || m_Arrivals.front().atMicroseconds > m_Clock.microseconds)
            return -1;  // nothing pending: what a non-blocking read gives
        std::string& bytes = m_Arrivals.front().bytes;
        const size_t take = std::min(static_cast<size_t>(length), bytes.size());
        bytes.copy(reinterpret_cast<char*>(buffer), take);
        bytes.erase(0, take);
        if (bytes.empty())
            m_Arrivals.pop_front();
        return static_cast<int32_t>(take);
    }
    int queryDevice(uint8_t*, int32_t) override { return 0; }
    int32_t write(const uint8_t*, int32_t length) override { return length; }
    IoStatus waitReadable(int32_t timeLimit) override
    {
        if (failWaits)
            return IoStatus::Failed;
        if (readableButEmpty) {
            m_Clock.waited(timeLimit);
            return IoStatus::DataReady;
        }
        if (!m_Arrivals.empty() && m_Arrivals.front().atMicroseconds <= m_Clock.microseconds + timeLimit) {
            m_Clock.microseconds = std::max(m_Clock.microseconds, m_Arrivals.front().atMicroseconds);
            return IoStatus::DataReady;
        }
        m_Clock.waited(timeLimit);
        return IoStatus::TimedOut;
    }
    IoStatus waitWritable(int32_t) override { return IoStatus::WriteReady; }

    bool failWaits = false;
    bool readableButEmpty = false;  // a hung device: always "readable", never a byte

private:
    Events& m_Events;
    FakeClock& m_Clock;
    std::deque<Arrival> m_Arrivals;
    int m_OpenResult;
};

// Holds one transport reference and installs a factory of scripted connectors.
class TransportTest : public testing::Test {
protected:
    void SetUp() override
    {
        HCUSBTransport::setConnectorFactory([this](const char* path) -> std::unique_ptr<HCIOConnector> {
            m_Paths.push_back(path);
            auto connector = std::make_unique<ScriptedConnector>(m_Events, m_Fake.clock, m_Script, m_OpenResult);
            m_Last = connector.get();
            return connector;
        });
        m_Transport = HCUSBTransport::getInstance();
    }
    void TearDown() override
    {
        testing::internal::CaptureStderr();
        HCUSBTransport::releaseInstance();
        testing::internal::GetCapturedStderr();
        HCUSBTransport::setConnectorFactory(nullptr);
    }

    ScopedFakeClock m_Fake;
    Events m_Events;
    Events m_Paths;
    std::deque<Arrival> m_Script;
    int m_OpenResult = 0;
    ScriptedConnector* m_Last = nullptr;
    HCUSBTransport* m_Transport = nullptr;
};

// The read returns once all bytes are there, or once more than four whole
// seconds passed without a new byte; earliest and latest fake-clock times.
TEST_F(TransportTest, ReadCollectsPiecesUntilCompleteOrQuiet)
{
    const struct {
        const char* name;
        std::deque<Arrival> script;
        int32_t length;
        std::string expected;
        long long earliest, latest;
        bool failWaits, readableButEmpty;
    } cases[] = {
        // Six seconds in all, but never four without a piece: the quiet time restarts with each.
        {"pieces", {{0, "ANS"}, {2 * kSecond, "WER-"}, {6 * kSecond, "12345"}}, 12, "ANSWER-12345",
         6 * kSecond, 6 * kSecond, false, false},
        {"exact length already there", {{0, "0123456789AB"}}, 12, "0123456789AB", 0, 0, false, false},
        {"longer read", {{0, "0123456"}, {1 * kSecond, "789AB"}}, 255, "0123456789AB",
         6 * kSecond, 7 * kSecond, false, false},
        {"silent printer", {}, 16, "", 5 * kSecond, 6 * kSecond, false, false},
        {"wait error", {{0, "abc"}, {1 * kSecond, "never"}}, 8, "abc", 0, 0, true, false},
        {"readable but empty", {}, 8, "", 5 * kSecond, 6 * kSecond, false, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        m_Fake.clock.microseconds = 0;
        m_Script = c.script;
        ASSERT_EQ(m_Transport->open("/dev/usb/lp0"), 0);
        m_Last->failWaits = c.failWaits;
        m_Last->readableButEmpty = c.readableButEmpty;
        std::vector<uint8_t> buffer(static_cast<size_t>(c.length));
        const int32_t got = m_Transport->read(buffer.data(), c.length);
        ASSERT_GE(got, 0);
        EXPECT_EQ(std::string(buffer.begin(), buffer.begin() + got), c.expected);
        EXPECT_GE(m_Fake.clock.microseconds, c.earliest);
        EXPECT_LE(m_Fake.clock.microseconds, c.latest);
    }
}

TEST_F(TransportTest, EachOpenReplacesThePreviousConnector)
{
    m_OpenResult = 1;
    EXPECT_EQ(m_Transport->open("/dev/usb/lp0"), -1);
    EXPECT_EQ(m_Transport->close(), 0);  // a connector whose open failed stays until the next open
    m_OpenResult = 0;
    EXPECT_EQ(m_Transport->open("2:5"), 0);
    EXPECT_EQ(m_Events, (Events{"open", "close", "close", "destroyed", "open"}));
    EXPECT_EQ(m_Paths, (Events{"/dev/usb/lp0", "2:5"}));
}

TEST_F(TransportTest, LastReleaseDestroysOnceWithItsLine)
{
    EXPECT_EQ(HCUSBTransport::getInstance(), m_Transport);  // a second reference to the same instance
    ASSERT_EQ(m_Transport->open("/dev/usb/lp0"), 0);
    testing::internal::CaptureStderr();
    HCUSBTransport::releaseInstance();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(m_Events, Events{"open"});  // still alive with its connector

    testing::internal::CaptureStderr();
    HCUSBTransport::releaseInstance();
    HCUSBTransport::releaseInstance();  // one release too many changes nothing
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "D [CVL] Destroying last instance of usb transport.\n");
    EXPECT_EQ(m_Events, (Events{"open", "destroyed"}));
}

// The real device-node connector on a pty whose master side closes, as the
// node of an unplugged printer: the read ends at once instead of spinning
// through the quiet time, the loss is reported once and the node is not
// opened again.
TEST(TransportDeviceGone, HungUpNodeEndsTheReadAndIsReportedOnce)
{
    int master = -1, slave = -1;
    char slaveName[256] = {};
    ASSERT_EQ(openpty(&master, &slave, slaveName, nullptr, nullptr), 0);
    ::close(slave);
    char dir[] = "/tmp/cvl-goneXXXXXX";
    ASSERT_NE(mkdtemp(dir), nullptr);
    const std::string prefix = std::string(dir) + "/lp";
    ASSERT_EQ(symlink(slaveName, (prefix + "0").c_str()), 0);
    int opens = 0;
    HCUSBTransport::setConnectorFactory([&](const char*) -> std::unique_ptr<HCIOConnector> {
        ++opens;
        return std::make_unique<USBLPConnector>(prefix.c_str(), 0);
    });
    HCUSBTransport* transport = HCUSBTransport::getInstance();
    ASSERT_EQ(transport->open("/dev/usb/lp0"), 0);
    ::close(master);

    testing::internal::CaptureStderr();
    uint8_t buffer[16];
    const auto start = std::chrono::steady_clock::now();
    const int32_t got = transport->read(buffer, sizeof buffer);
    const auto took = std::chrono::steady_clock::now() - start;
    const int32_t reopened = transport->open("/dev/usb/lp0");
    const int32_t again = transport->read(buffer, sizeof buffer);
    const std::string err = testing::internal::GetCapturedStderr();

    EXPECT_EQ(got, 0);
    EXPECT_LT(took, std::chrono::seconds(1));
    EXPECT_TRUE(transport->deviceGone());
    EXPECT_EQ(err, "D [CVL] The printer is gone (No such device): no further requests are sent.\n");
    EXPECT_EQ(reopened, -1);
    EXPECT_EQ(again, 0);
    EXPECT_EQ(opens, 1);

    testing::internal::CaptureStderr();
    HCUSBTransport::releaseInstance();
    testing::internal::GetCapturedStderr();
    HCUSBTransport::setConnectorFactory(nullptr);
    unlink((prefix + "0").c_str());
    rmdir(dir);
}

}  // namespace
