// The transport singleton, its choice of connector and its quiet-time read,
// with a scripted connector and the fake clock instead of a printer.
#include "transport/HCUSBTransport.h"

#include <gtest/gtest.h>

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/FakeClock.h"

namespace {

constexpr long long kSecond = 1000000;

// What happened to the scripted connectors, kept beyond their lifetime.
struct ConnectorLog {
    std::vector<std::string> events;
};

// Bytes that reach the host at a given time on the fake clock.
struct Arrival {
    long long atMicroseconds;
    std::vector<uint8_t> bytes;
};

// A printer whose answer arrives in scripted pieces. Waits advance the fake
// clock the way a select() with that limit would.
class ScriptedConnector : public HCIOConnector {
public:
    ScriptedConnector(ConnectorLog& log, FakeClock& clock, std::deque<Arrival> arrivals, int openResult = 0)
        : m_Log(log), m_Clock(clock), m_Arrivals(std::move(arrivals)), m_OpenResult(openResult)
    {
    }
    ~ScriptedConnector() override { m_Log.events.push_back("destroyed"); }

    int open() override
    {
        m_Log.events.push_back("open");
        return m_OpenResult;
    }
    int close() override
    {
        m_Log.events.push_back("close");
        return 0;
    }
    int32_t read(uint8_t* buffer, int32_t length) override
    {
        int32_t got = 0;
        while (got < length && !m_Arrivals.empty() && m_Arrivals.front().atMicroseconds <= m_Clock.microseconds) {
            std::vector<uint8_t>& bytes = m_Arrivals.front().bytes;
            const int32_t take = std::min<int32_t>(length - got, static_cast<int32_t>(bytes.size()));
            std::copy(bytes.begin(), bytes.begin() + take, buffer + got);
            bytes.erase(bytes.begin(), bytes.begin() + take);
            got += take;
            if (bytes.empty()) {
                m_Arrivals.pop_front();
            }
        }
        return got > 0 ? got : -1;  // nothing pending: -1 as a non-blocking read gives
    }
    int queryDevice(uint8_t*, int32_t) override { return 0; }
    int32_t write(const uint8_t*, int32_t length) override { return length; }
    IoStatus waitReadable(int32_t timeLimit) override
    {
        if (m_FailWaits) {
            return IoStatus::Failed;
        }
        if (!m_Arrivals.empty() && m_Arrivals.front().atMicroseconds <= m_Clock.microseconds + timeLimit) {
            if (m_Arrivals.front().atMicroseconds > m_Clock.microseconds) {
                m_Clock.microseconds = m_Arrivals.front().atMicroseconds;
            }
            return IoStatus::DataReady;
        }
        m_Clock.waited(timeLimit);
        return IoStatus::TimedOut;
    }
    IoStatus waitWritable(int32_t) override { return IoStatus::WriteReady; }

    bool m_FailWaits = false;

private:
    ConnectorLog& m_Log;
    FakeClock& m_Clock;
    std::deque<Arrival> m_Arrivals;
    int m_OpenResult;
};

std::vector<uint8_t> bytesOf(const std::string& text)
{
    return std::vector<uint8_t>(text.begin(), text.end());
}

// Holds one transport reference and installs a factory of scripted connectors.
class TransportTest : public testing::Test {
protected:
    void SetUp() override
    {
        HCUSBTransport::setConnectorFactory([this](const char* path) -> std::unique_ptr<HCIOConnector> {
            m_Paths.push_back(path);
            auto connector = std::make_unique<ScriptedConnector>(m_Log, m_Fake.clock, m_Script, m_OpenResult);
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

    std::string readString(int32_t length)
    {
        std::vector<uint8_t> buffer(static_cast<size_t>(length));
        const int32_t got = m_Transport->read(buffer.data(), length);
        return got < 0 ? "<" + std::to_string(got) + ">"
                       : std::string(buffer.begin(), buffer.begin() + got);
    }

    ScopedFakeClock m_Fake;
    ConnectorLog m_Log;
    std::deque<Arrival> m_Script;
    int m_OpenResult = 0;
    std::vector<std::string> m_Paths;
    ScriptedConnector* m_Last = nullptr;
    HCUSBTransport* m_Transport = nullptr;
};

using TransportReadTest = TransportTest;

TEST_F(TransportReadTest, AnswerInPiecesIsCollectedUntilComplete)
{
    m_Script = {{0, bytesOf("ANS")}, {2 * kSecond, bytesOf("WER-")}, {6 * kSecond, bytesOf("12345")}};
    ASSERT_EQ(m_Transport->open("/dev/usb/lp0"), 0);
    // Six seconds in all, but never four without a new piece: the quiet time restarts with each.
    EXPECT_EQ(readString(12), "ANSWER-12345");
    EXPECT_EQ(m_Fake.clock.microseconds, 6 * kSecond);  // returned as soon as the last piece came
}

TEST_F(TransportReadTest, ExactLengthAlreadyThereNeedsNoWait)
{
    m_Script = {{0, bytesOf("0123456789AB")}};
    ASSERT_EQ(m_Transport->open("/dev/usb/lp0"), 0);
    EXPECT_EQ(readString(12), "0123456789AB");
    EXPECT_EQ(m_Fake.clock.microseconds, 0);
}

TEST_F(TransportReadTest, LongerReadEndsAfterMoreThanFourQuietSeconds)
{
    m_Script = {{0, bytesOf("0123456")}, {1 * kSecond, bytesOf("789AB")}};
    ASSERT_EQ(m_Transport->open("/dev/usb/lp0"), 0);
    EXPECT_EQ(readString(255), "0123456789AB");
    // Whole seconds: more than 4 means the clock showed 5 seconds after the last byte.
    const long long quiet = m_Fake.clock.microseconds - 1 * kSecond;
    EXPECT_GT(quiet, 4 * kSecond);
    EXPECT_LE(quiet, 6 * kSecond);
}

TEST_F(TransportReadTest, SilentPrinterGivesZeroAfterTheQuietTime)
{
    ASSERT_EQ(m_Transport->open("/dev/usb/lp0"), 0);
    EXPECT_EQ(readString(16), "");
    EXPECT_GT(m_Fake.clock.microseconds, 4 * kSecond);
}

TEST_F(TransportReadTest, WaitErrorEndsTheReadWithWhatArrived)
{
    m_Script = {{0, bytesOf("abc")}, {1 * kSecond, bytesOf("never")}};
    ASSERT_EQ(m_Transport->open("/dev/usb/lp0"), 0);
    m_Last->m_FailWaits = true;
    EXPECT_EQ(readString(8), "abc");
    EXPECT_EQ(m_Fake.clock.microseconds, 0);
}

// A device that keeps saying "readable" but never delivers must not hold the read forever.
class ReadableButEmptyConnector : public ScriptedConnector {
public:
    using ScriptedConnector::ScriptedConnector;
    IoStatus waitReadable(int32_t timeLimit) override
    {
        currentClock().waited(timeLimit);
        return IoStatus::DataReady;
    }
};

TEST_F(TransportReadTest, EndlessReadableSignalWithoutDataStillEnds)
{
    HCUSBTransport::setConnectorFactory([this](const char*) -> std::unique_ptr<HCIOConnector> {
        return std::make_unique<ReadableButEmptyConnector>(m_Log, m_Fake.clock, std::deque<Arrival>{});
    });
    ASSERT_EQ(m_Transport->open("/dev/usb/lp0"), 0);
    EXPECT_EQ(readString(8), "");
    EXPECT_GT(m_Fake.clock.microseconds, 4 * kSecond);
}

using TransportConnectorTest = TransportTest;

TEST_F(TransportConnectorTest, EachOpenReplacesThePreviousConnector)
{
    ASSERT_EQ(m_Transport->open("/dev/usb/lp0"), 0);
    EXPECT_EQ(m_Transport->close(), 0);
    ASSERT_EQ(m_Transport->open("2:5"), 0);
    const std::vector<std::string> expected = {"open", "close", "close", "destroyed", "open"};
    EXPECT_EQ(m_Log.events, expected);
    EXPECT_EQ(m_Paths, (std::vector<std::string>{"/dev/usb/lp0", "2:5"}));
}

TEST_F(TransportConnectorTest, FailedOpenKeepsTheConnectorUntilTheNextOpen)
{
    m_OpenResult = 1;
    EXPECT_EQ(m_Transport->open("/dev/usb/lp0"), -1);
    EXPECT_EQ(m_Log.events, std::vector<std::string>{"open"});
    EXPECT_EQ(m_Transport->close(), 0);  // the connector is still there to ask
}

// Without a factory the transport builds the real connectors; none of the
// device nodes exists here and the libusb connector finds no device yet, so
// every open fails. read() tells whether a connector stayed: -1 without one,
// 0 (nothing read) with one.
TEST(TransportPathTest, PathShapeDecidesWhetherAConnectorStays)
{
    struct Case {
        const char* path;
        bool connectorStays;
    };
    const Case cases[] = {
        {"/dev/usb/lp17", true},    // the connector refuses the number
        {"/dev/usb/usblp2", true},
        {"2:5", true},
        {"lp0", false},
        {"/dev/usbx", false},
        {"1234567890:1", false},
        {"", false},
    };
    HCUSBTransport* transport = HCUSBTransport::getInstance();
    ScopedFakeClock fake;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.path);
        EXPECT_EQ(transport->open(c.path), -1);
        uint8_t buffer[4];
        EXPECT_EQ(transport->read(buffer, sizeof buffer), c.connectorStays ? 0 : -1);
        EXPECT_EQ(transport->close(), -1);
    }
    EXPECT_EQ(transport->open(nullptr), -1);
    testing::internal::CaptureStderr();
    HCUSBTransport::releaseInstance();
    testing::internal::GetCapturedStderr();
}

TEST(TransportSingletonTest, LastReleaseDestroysOnceWithItsLine)
{
    ConnectorLog log;
    FakeClock clock;
    HCUSBTransport::setConnectorFactory([&](const char*) -> std::unique_ptr<HCIOConnector> {
        return std::make_unique<ScriptedConnector>(log, clock, std::deque<Arrival>{});
    });
    HCUSBTransport* first = HCUSBTransport::getInstance();
    HCUSBTransport* second = HCUSBTransport::getInstance();
    EXPECT_EQ(first, second);
    ASSERT_EQ(first->open("/dev/usb/lp0"), 0);

    testing::internal::CaptureStderr();
    HCUSBTransport::releaseInstance();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(log.events, std::vector<std::string>{"open"});  // still alive with its connector

    testing::internal::CaptureStderr();
    HCUSBTransport::releaseInstance();
    HCUSBTransport::releaseInstance();  // one release too many changes nothing
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "D [CVL] Destroying last instance of usb transport.\n");
    EXPECT_EQ(log.events, (std::vector<std::string>{"open", "destroyed"}));

    // A fresh instance starts without a connector.
    HCUSBTransport* fresh = HCUSBTransport::getInstance();
    uint8_t buffer[4];
    EXPECT_EQ(fresh->read(buffer, sizeof buffer), -1);
    testing::internal::CaptureStderr();
    HCUSBTransport::releaseInstance();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "D [CVL] Destroying last instance of usb transport.\n");
    HCUSBTransport::setConnectorFactory(nullptr);
}

}  // namespace
