// The device-node connector against a pty that stands in for the printer:
// the test holds the master side, the connector opens the slave through a
// symlink named lpN, as it would open /dev/usb/lpN.
#include "transport/USBLPConnector.h"

#include <fcntl.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "tests/support/FakeClock.h"

namespace {

constexpr int kDeviceNumber = 3;

class ConnectorDeviceNodeTest : public testing::Test {
protected:
    void SetUp() override
    {
        char slaveName[256] = {};
        ASSERT_EQ(openpty(&m_Master, &m_Slave, slaveName, nullptr, nullptr), 0);
        termios raw{};
        ASSERT_EQ(tcgetattr(m_Slave, &raw), 0);
        cfmakeraw(&raw);  // without raw mode the line discipline changes bytes
        ASSERT_EQ(tcsetattr(m_Slave, TCSANOW, &raw), 0);
        char dirTemplate[] = "/tmp/cvl-lpXXXXXX";
        ASSERT_NE(mkdtemp(dirTemplate), nullptr);
        m_Dir = dirTemplate;
        m_Link = m_Dir + "/lp" + std::to_string(kDeviceNumber);
        ASSERT_EQ(symlink(slaveName, m_Link.c_str()), 0);
        m_Connector = std::make_unique<USBLPConnector>((m_Dir + "/lp").c_str(), kDeviceNumber);
    }

    void TearDown() override
    {
        m_Connector.reset();
        unlink(m_Link.c_str());
        rmdir(m_Dir.c_str());
        ::close(m_Slave);
        ::close(m_Master);
    }

    // What the printer side received, up to `count` bytes (waits for them).
    std::string printerReceives(size_t count)
    {
        std::string received;
        char chunk[256];
        while (received.size() < count) {
            const ssize_t n = ::read(m_Master, chunk, sizeof chunk);
            if (n <= 0) {
                break;
            }
            received.append(chunk, static_cast<size_t>(n));
        }
        return received;
    }

    int32_t status() const { return m_Connector->getStatus(); }
    static int32_t code(IoStatus s) { return static_cast<int32_t>(s); }

    int m_Master = -1;
    int m_Slave = -1;
    std::string m_Dir;
    std::string m_Link;
    std::unique_ptr<USBLPConnector> m_Connector;
};

TEST_F(ConnectorDeviceNodeTest, OpensTheNumberedNode)
{
    EXPECT_EQ(m_Connector->getKind(), 2);
    EXPECT_EQ(std::string(m_Connector->devicePath()), m_Link);
    EXPECT_EQ(m_Connector->open(), 0);
    EXPECT_EQ(status(), code(IoStatus::Ok));
}

TEST_F(ConnectorDeviceNodeTest, WriteStatusFollowsTheCountMoved)
{
    ASSERT_EQ(m_Connector->open(), 0);
    const uint8_t request[] = {'h', 'e', 'l', 'l', 'o'};
    EXPECT_EQ(m_Connector->write(request, 0), 0);
    EXPECT_EQ(status(), code(IoStatus::NothingWritten));
    EXPECT_EQ(m_Connector->write(request, 5), 5);
    EXPECT_EQ(status(), code(IoStatus::Ok));
    EXPECT_EQ(printerReceives(5), "hello");
    EXPECT_EQ(m_Connector->waitWritable(1000), IoStatus::WriteReady);
    EXPECT_EQ(status(), code(IoStatus::WriteReady));
}

TEST_F(ConnectorDeviceNodeTest, FullDeviceGivesPartialWriteThenTryAgain)
{
    ASSERT_EQ(m_Connector->open(), 0);
    // A non-blocking pty takes only a part of a large write at once.
    std::vector<uint8_t> big(1 << 20, 0x55);
    const int32_t moved = m_Connector->write(big.data(), static_cast<int32_t>(big.size()));
    ASSERT_GT(moved, 0);
    ASSERT_LT(moved, static_cast<int32_t>(big.size()));
    EXPECT_EQ(status(), code(IoStatus::PartialWrite));
    // Nobody reads the printer side: the buffer fills and the device is busy.
    int32_t result = 0;
    for (int i = 0; i < 10000 && result >= 0; ++i) {
        result = m_Connector->write(big.data(), static_cast<int32_t>(big.size()));
    }
    EXPECT_EQ(result, -1);
    EXPECT_EQ(status(), code(IoStatus::TryAgain));
}

TEST_F(ConnectorDeviceNodeTest, ReadsWhatThePrinterSends)
{
    ASSERT_EQ(m_Connector->open(), 0);
    uint8_t buffer[512];
    EXPECT_EQ(m_Connector->read(buffer, sizeof buffer), -1);
    EXPECT_EQ(status(), code(IoStatus::TryAgain));

    std::vector<uint8_t> answer(256);
    for (size_t i = 0; i < answer.size(); ++i) {
        answer[i] = static_cast<uint8_t>(i);
    }
    ASSERT_EQ(::write(m_Master, answer.data(), answer.size()), static_cast<ssize_t>(answer.size()));
    // The pty passes the bytes on almost at once; wait for them in 1 ms steps.
    std::vector<uint8_t> got;
    for (int i = 0; i < 5000 && got.size() < answer.size(); ++i) {
        if (m_Connector->waitReadable(1000) == IoStatus::DataReady) {
            EXPECT_EQ(status(), code(IoStatus::DataReady));
            const int32_t n = m_Connector->read(buffer, sizeof buffer);
            ASSERT_GT(n, 0);
            got.insert(got.end(), buffer, buffer + n);
        }
    }
    EXPECT_EQ(got, answer);  // every byte value passes unchanged
}

TEST_F(ConnectorDeviceNodeTest, IdleWaitTimesOutAndTellsTheClock)
{
    ScopedFakeClock fake;
    ASSERT_EQ(m_Connector->open(), 0);
    EXPECT_EQ(m_Connector->waitReadable(1000), IoStatus::TimedOut);
    EXPECT_EQ(status(), code(IoStatus::TimedOut));
    EXPECT_EQ(fake.clock.microseconds, 1000);
}

TEST_F(ConnectorDeviceNodeTest, ClosedConnectorRefusesEverything)
{
    ASSERT_EQ(m_Connector->open(), 0);
    EXPECT_EQ(m_Connector->close(), 0);
    EXPECT_EQ(status(), code(IoStatus::Ok));
    EXPECT_EQ(m_Connector->close(), 1);
    EXPECT_EQ(status(), code(IoStatus::Failed));

    uint8_t buffer[8] = {};
    EXPECT_EQ(m_Connector->read(buffer, sizeof buffer), -1);
    EXPECT_EQ(status(), code(IoStatus::Unavailable));
    EXPECT_EQ(m_Connector->write(buffer, sizeof buffer), -1);
    EXPECT_EQ(status(), code(IoStatus::Unavailable));
    EXPECT_EQ(m_Connector->waitReadable(1000), IoStatus::Failed);
    EXPECT_EQ(m_Connector->waitWritable(1000), IoStatus::Failed);
    // Reopening after a close works.
    EXPECT_EQ(m_Connector->open(), 0);
}

TEST_F(ConnectorDeviceNodeTest, BadArgumentsAreRefusedWithoutTouchingMemory)
{
    ASSERT_EQ(m_Connector->open(), 0);
    uint8_t buffer[4] = {1, 2, 3, 4};
    EXPECT_EQ(m_Connector->read(buffer, -1), -1);  // would be a huge count for read(2)
    EXPECT_EQ(m_Connector->write(buffer, -5), -1);
    EXPECT_EQ(status(), code(IoStatus::Failed));
    // A negative wait limit is refused by select itself.
    EXPECT_EQ(m_Connector->waitReadable(-1), IoStatus::Failed);

    EXPECT_EQ(m_Connector->queryDevice(buffer, sizeof buffer), 0);
    EXPECT_EQ(status(), code(IoStatus::Unavailable));
    EXPECT_EQ(buffer[0] | buffer[1] | buffer[2] | buffer[3], 0);
}

TEST(ConnectorPathTest, NodePathFromPrefixAndNumber)
{
    const std::string prefix62(62, 'p');
    const std::string prefix63(63, 'p');
    struct Case {
        const char* prefix;
        int number;
        std::string path;
    };
    const Case cases[] = {
        {"/dev/usb/lp", 3, "/dev/usb/lp3"},
        {"/dev/usb/lp", 0, "/dev/usb/lp0"},
        {"/dev/usb/lp", 16, "/dev/usb/lp16"},
        {"/dev/usb/lp", 17, ""},
        {"/dev/usb/lp", -1, ""},
        {nullptr, 1, ""},
        {prefix62.c_str(), 9, prefix62 + "9"},
        {prefix62.c_str(), 10, ""},  // would not fit the 64-character buffer whole
        {prefix63.c_str(), 1, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::to_string(c.number));
        USBLPConnector connector(c.prefix, c.number);
        EXPECT_EQ(std::string(connector.devicePath()), c.path);
        if (c.path.empty()) {
            EXPECT_EQ(connector.open(), 1);
            EXPECT_EQ(connector.getStatus(), static_cast<int32_t>(IoStatus::Failed));
            EXPECT_EQ(connector.close(), 1);
        }
    }
}

TEST(ConnectorPathTest, DescriptorZeroCountsAsFailedOpen)
{
    char dirTemplate[] = "/tmp/cvl-lpXXXXXX";
    ASSERT_NE(mkdtemp(dirTemplate), nullptr);
    const std::string link = std::string(dirTemplate) + "/lp0";
    ASSERT_EQ(symlink("/dev/null", link.c_str()), 0);
    const int savedStdin = dup(0);
    ASSERT_GE(savedStdin, 0);

    ::close(0);  // the next descriptor handed out is 0
    int openResult = -2;
    {
        USBLPConnector connector((std::string(dirTemplate) + "/lp").c_str(), 0);
        openResult = connector.open();
    }  // destroying the connector closes descriptor 0 again
    dup2(savedStdin, 0);
    ::close(savedStdin);

    unlink(link.c_str());
    rmdir(dirTemplate);
    EXPECT_EQ(openResult, 1);
}

}  // namespace
