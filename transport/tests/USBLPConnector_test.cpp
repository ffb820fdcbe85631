// The device-node connector against a pty that stands in for the printer:
// the test holds the master side, the connector opens the slave through a
// symlink named lpN, as it would open /dev/usb/lpN.
#include "transport/USBLPConnector.h"

#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/FakeClock.h"

namespace {

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
        ASSERT_EQ(symlink(slaveName, (m_Dir + "/lp3").c_str()), 0);
        m_Connector = std::make_unique<USBLPConnector>((m_Dir + "/lp").c_str(), 3);
        ASSERT_EQ(m_Connector->open(), 0);
    }
    void TearDown() override
    {
        m_Connector.reset();
        unlink((m_Dir + "/lp3").c_str());
        rmdir(m_Dir.c_str());
        ::close(m_Slave);
        ::close(m_Master);
    }

    int m_Master = -1;
    int m_Slave = -1;
    std::string m_Dir;
    std::unique_ptr<USBLPConnector> m_Connector;
};

TEST_F(ConnectorDeviceNodeTest, WritesReadsWaitsAndCloses)
{
    ScopedFakeClock fake;
    uint8_t buffer[8] = {'h', 'e', 'l', 'l', 'o'};
    EXPECT_EQ(m_Connector->write(buffer, 0), 0);
    EXPECT_EQ(m_Connector->write(buffer, 5), 5);
    char received[8] = {};
    EXPECT_EQ(::read(m_Master, received, sizeof received), 5);
    EXPECT_EQ(std::string(received), "hello");

    EXPECT_EQ(m_Connector->read(buffer, sizeof buffer), -1);  // the printer sent nothing
    EXPECT_EQ(m_Connector->waitReadable(1000), IoStatus::TimedOut);
    EXPECT_EQ(fake.clock.microseconds, 1000);  // the wait is told to the clock

    EXPECT_EQ(m_Connector->close(), 0);
    EXPECT_EQ(m_Connector->close(), 1);
    EXPECT_EQ(m_Connector->read(buffer, sizeof buffer), -1);
    EXPECT_EQ(m_Connector->waitReadable(1000), IoStatus::Failed);
    EXPECT_EQ(m_Connector->open(), 0);  // reopening after a close works
}

TEST(ConnectorPathTest, NodePathFromPrefixAndNumber)
{
    const std::string prefix62(62, 'p');
    const struct {
        const char* prefix;
        int number;
        std::string path;
    } cases[] = {
        {"/dev/usb/lp", 0, "/dev/usb/lp0"},
        {"/dev/usb/lp", 16, "/dev/usb/lp16"},
        {"/dev/usb/lp", 17, ""},
        {prefix62.c_str(), 9, prefix62 + "9"},
        {prefix62.c_str(), 10, ""},  // would not fit the 64-character buffer whole
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.number));
        USBLPConnector connector(c.prefix, c.number);
        EXPECT_EQ(std::string(connector.devicePath()), c.path);
        if (c.path.empty()) {
            EXPECT_EQ(connector.open(), 1);
        }
    }
}

}  // namespace
