// The libusb connector against a stand-in for libusb-0.1: finding and
// claiming the printer interface, the write loop's outcomes, and reads.
#include "transport/LibUsbConnector.h"

#include <gtest/gtest.h>

#include <cstring>
#include <deque>
#include <string>
#include <vector>

#include "tests/support/FakeClock.h"

namespace {

int32_t code(IoStatus status) { return static_cast<int32_t>(status); }

constexpr int kTimedOut = -110, kStalled = -32;

// One bus "003" holding device "007" with one configuration (value 1) whose
// interfaces are described by `interfaces`; the claim of an interface listed
// in `refused` fails. Bulk writes and reads follow scripts.
class FakeUsb : public UsbCalls {
public:
    struct Interface {
        uint8_t interfaceClass;
        std::vector<usb_endpoint_descriptor> endpoints;
    };

    explicit FakeUsb(std::vector<Interface> interfaces, std::vector<int> refused = {})
        : m_Layout(std::move(interfaces)), m_Refused(std::move(refused))
    {
        for (size_t i = 0; i < m_Layout.size(); ++i) {
            usb_interface_descriptor setting{};
            setting.bInterfaceNumber = uint8_t(i);
            setting.bInterfaceClass = m_Layout[i].interfaceClass;
            setting.bNumEndpoints = uint8_t(m_Layout[i].endpoints.size());
            setting.endpoint = m_Layout[i].endpoints.data();
            m_Settings.push_back(setting);
        }
        for (usb_interface_descriptor& setting : m_Settings) m_Interfaces.push_back({&setting, 1});
        m_Config.bConfigurationValue = 1;
        m_Config.bNumInterfaces = uint8_t(m_Interfaces.size());
        m_Config.interface = m_Interfaces.data();
        std::strcpy(m_Device.filename, "007");
        m_Device.descriptor.bNumConfigurations = 1;
        m_Device.config = &m_Config;
        std::strcpy(m_Bus.dirname, "003");
        m_Bus.devices = &m_Device;
    }

    void init() override {}
    int findBusses() override { return 1; }
    int findDevices() override { return 1; }
    usb_bus* getBusses() override { return &m_Bus; }
    usb_dev_handle* open(struct usb_device*) override { return m_Handle; }
    int setConfiguration(usb_dev_handle*, int configuration) override
    {
        configurations.push_back(configuration);
        return 0;
    }
    int claimInterface(usb_dev_handle*, int interface) override
    {
        claims.push_back(interface);
        for (int refused : m_Refused)
            if (refused == interface) return -16;
        return 0;
    }
    int releaseInterface(usb_dev_handle*, int interface) override
    {
        released.push_back(interface);
        return 0;
    }
    int close(usb_dev_handle*) override { return ++closes, 0; }
    int bulkWrite(usb_dev_handle*, int endpoint, const char* bytes, int size, int) override
    {
        EXPECT_EQ(endpoint, 0x01);
        pieces.push_back(size);
        int result = size;
        if (!writeResults.empty()) {
            result = writeResults.front();
            writeResults.pop_front();
        }
        if (result > 0) received.append(bytes, size_t(result));
        return result;
    }
    int bulkRead(usb_dev_handle*, int, char* bytes, int size, int timeoutMs) override
    {
        readLimits.push_back(timeoutMs);
        if (packets.empty()) return kTimedOut;
        std::string packet = packets.front();
        packets.pop_front();
        EXPECT_LE(int(packet.size()), size);
        std::memcpy(bytes, packet.data(), packet.size());
        return int(packet.size());
    }
    int clearHalt(usb_dev_handle*, unsigned) override { return ++clearedHalts, 0; }

    std::vector<int> configurations, claims, released, pieces, readLimits;
    std::deque<int> writeResults;  // one per bulk write; the piece's size once empty
    std::deque<std::string> packets;
    std::string received;
    int closes = 0, clearedHalts = 0;

private:
    std::vector<Interface> m_Layout;
    std::vector<int> m_Refused;
    std::vector<usb_interface_descriptor> m_Settings;
    std::vector<usb_interface> m_Interfaces;
    usb_config_descriptor m_Config{};
    struct usb_device m_Device {};
    usb_bus m_Bus{};
    usb_dev_handle* m_Handle = reinterpret_cast<usb_dev_handle*>(&m_Bus);  // any non-null value
};

usb_endpoint_descriptor endpoint(uint8_t address, uint8_t type, uint16_t packetSize)
{
    usb_endpoint_descriptor e{};
    e.bEndpointAddress = address;
    e.bmAttributes = type;
    e.wMaxPacketSize = packetSize;
    return e;
}

const usb_endpoint_descriptor kBulkOut = endpoint(0x01, 2, 64), kBulkIn = endpoint(0x82, 2, 64);
const FakeUsb::Interface kPrinter{7, {kBulkOut, kBulkIn}};

struct OpenCase {
    const char* name;
    std::vector<FakeUsb::Interface> interfaces;
    std::vector<int> refused;
    int bus, device;
    int result;
    std::vector<int> claims;
    int interface, inEndpoint, packetSize;
};

void PrintTo(const OpenCase& c, std::ostream* out) { *out << c.name; }

class LibUsbOpen : public testing::TestWithParam<OpenCase> {};

TEST_P(LibUsbOpen, ClaimsTheFirstPrinterInterfaceThatCanBeClaimed)
{
    const OpenCase& c = GetParam();
    FakeUsb usb(c.interfaces, c.refused);
    LibUsbConnector connector(7, usb);
    EXPECT_EQ(connector.openDevice(c.bus, c.device), c.result);
    EXPECT_EQ(connector.getStatus(), code(c.result == 0 ? IoStatus::Ok : IoStatus::Failed));
    EXPECT_EQ(usb.claims, c.claims);
    EXPECT_EQ(usb.closes, int(c.claims.size()) - (c.result == 0 ? 1 : 0)) << "a refused claim closes its handle";
    if (!c.claims.empty()) {
        EXPECT_EQ(usb.configurations[0], 1);
    }
    EXPECT_EQ(connector.claimedInterface(), c.interface);
    EXPECT_EQ(connector.inEndpoint(), c.inEndpoint);
    EXPECT_EQ(connector.maxPacketSize(), c.packetSize);
}

INSTANTIATE_TEST_SUITE_P(
    Layouts, LibUsbOpen,
    testing::Values(
        OpenCase{"zeroPaddedNames", {kPrinter}, {}, 3, 7, 0, {0}, 0, 0x82, 64},
        OpenCase{"otherDevice", {kPrinter}, {}, 3, 8, 1, {}, 0, 0, 32},
        OpenCase{"otherBus", {kPrinter}, {}, 1, 7, 1, {}, 0, 0, 32},
        OpenCase{"secondClaims", {kPrinter, {7, {kBulkOut, endpoint(0x84, 2, 512)}}}, {0}, 3, 7, 0, {0, 1}, 1, 0x84,
                 512},
        OpenCase{"noneClaims", {kPrinter, kPrinter}, {0, 1}, 3, 7, 1, {0, 1}, 0, 0, 32},
        OpenCase{"noPrinterInterface", {{0xFF, {kBulkOut, kBulkIn}}}, {}, 3, 7, 1, {}, 0, 0, 32},
        // An interrupt IN endpoint is no bulk endpoint.
        OpenCase{"noBulkIn", {{7, {kBulkOut, endpoint(0x83, 3, 8)}}}, {}, 3, 7, 0, {0}, 0, 0, 32}),
    [](const testing::TestParamInfo<OpenCase>& info) { return std::string(info.param.name); });

struct WriteCase {
    const char* name;
    std::deque<int> results;  // what each bulk write returns
    int32_t written;
    std::vector<int> pieces;
    IoStatus status;
    int clearedHalts;
};

void PrintTo(const WriteCase& c, std::ostream* out) { *out << c.name; }

class LibUsbWrite : public testing::TestWithParam<WriteCase> {};

TEST_P(LibUsbWrite, SendsPiecesOfThePacketSize)
{
    const WriteCase& c = GetParam();
    ScopedFakeClock fake;
    FakeUsb usb({kPrinter});
    LibUsbConnector connector(7, usb);
    ASSERT_EQ(connector.openDevice(3, 7), 0);
    usb.writeResults = c.results;
    std::string request(100, '\0');
    for (size_t i = 0; i < request.size(); ++i) request[i] = char(i);

    testing::internal::CaptureStderr();
    EXPECT_EQ(connector.write(reinterpret_cast<const uint8_t*>(request.data()), 100), c.written);
    const std::string err = testing::internal::GetCapturedStderr();
    EXPECT_EQ(usb.pieces, c.pieces);
    EXPECT_EQ(connector.getStatus(), code(c.status));
    EXPECT_EQ(usb.clearedHalts, c.clearedHalts);
    EXPECT_EQ(usb.received, request.substr(0, size_t(c.written)));
    const bool gaveUp = c.status == IoStatus::Failed && c.written == 64;
    EXPECT_EQ(err, gaveUp ? "D [CVL] USB write stopped: the printer took no data in 3 tries of 5000 ms "
                            "(64 of 100 bytes written).\n"
                          : "");
}

INSTANTIATE_TEST_SUITE_P(
    Outcomes, LibUsbWrite,
    testing::Values(WriteCase{"whole", {}, 100, {64, 36}, IoStatus::Ok, 0},
                    WriteCase{"timeOutThenTaken", {kTimedOut, 64}, 100, {64, 64, 36}, IoStatus::Ok, 1},
                    // The bound applies to tries in a row: progress starts the count again.
                    WriteCase{"boundIsPerPiece", {kTimedOut, kTimedOut, 64, kTimedOut, kTimedOut},
                              100, {64, 64, 64, 36, 36, 36}, IoStatus::Ok, 4},
                    WriteCase{"neverTaken", {64, kTimedOut, kTimedOut, kTimedOut}, 64, {64, 36, 36, 36},
                              IoStatus::Failed, 2},
                    WriteCase{"takesPartOfAPiece", {40, 24}, 100, {64, 60, 36}, IoStatus::Ok, 0},
                    WriteCase{"stall", {64, kStalled}, 64, {64, 36}, IoStatus::Unavailable, 0},
                    WriteCase{"error", {-5}, 0, {64}, IoStatus::Failed, 0}),
    [](const testing::TestParamInfo<WriteCase>& info) { return std::string(info.param.name); });

TEST(LibUsbConnectorTest, WithoutHandleNothingMoves)
{
    FakeUsb usb({kPrinter});
    LibUsbConnector connector(7, usb);
    uint8_t buffer[4] = {1, 2, 3, 4};
    EXPECT_EQ(connector.write(buffer, 4), 0);
    EXPECT_TRUE(usb.pieces.empty());
    EXPECT_EQ(connector.waitReadable(1000), IoStatus::Failed);
    EXPECT_EQ(connector.read(buffer, 4), 0);
    EXPECT_EQ(connector.close(), 1);
    EXPECT_EQ(connector.open(), 1);
    EXPECT_EQ(connector.waitWritable(0), IoStatus::WriteReady);
}

// A read of 255 bytes when the printer sends 40 in two packets returns them
// after one further ten-second wait; closing releases the interface.
TEST(LibUsbConnectorTest, ShortAnswerReturnsAfterOneFurtherWait)
{
    ScopedFakeClock fake;
    FakeUsb usb({kPrinter});
    LibUsbConnector connector(7, usb);
    ASSERT_EQ(connector.openDevice(3, 7), 0);
    usb.packets = {std::string(32, 'a'), std::string(8, 'b')};
    uint8_t buffer[255] = {};
    EXPECT_EQ(connector.read(buffer, 255), 40);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer), 40), std::string(32, 'a') + std::string(8, 'b'));
    EXPECT_EQ(usb.readLimits, (std::vector<int>{10000, 10000, 10000}));
    EXPECT_EQ(fake.clock.microseconds, 10000000);
    EXPECT_EQ(connector.getStatus(), code(IoStatus::TimedOut));
    EXPECT_EQ(connector.close(), 0);
    EXPECT_EQ(usb.released, std::vector<int>{0});
}

}  // namespace
