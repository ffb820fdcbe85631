// The libusb connector's write loop against a stand-in for libusb-0.1
// (finding and claiming devices, and reads, are tested end to end).
#include "transport/LibUsbConnector.h"

#include <gtest/gtest.h>

#include <cstring>
#include <deque>
#include <string>
#include <vector>

#include "tests/support/FakeClock.h"

namespace {

constexpr int kTimedOut = -110, kStalled = -32, kNoDevice = -19;

// Bus "003" holding device "007": one printer interface with a bulk OUT
// endpoint 0x01 and a bulk IN endpoint 0x82 of 64-byte packets. Bulk writes
// follow a script; the printer never answers.
class FakeUsb : public UsbCalls {
public:
    FakeUsb()
    {
        m_Setting.bInterfaceClass = 7;
        m_Setting.bNumEndpoints = 2;
        m_Setting.endpoint = m_Endpoints;
        m_Config.bNumInterfaces = 1;
        m_Config.interface = &m_Interface;
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
    usb_dev_handle* open(struct usb_device*) override { return reinterpret_cast<usb_dev_handle*>(&m_Bus); }
    int setConfiguration(usb_dev_handle*, int) override { return 0; }
    int claimInterface(usb_dev_handle*, int) override { return 0; }
    int releaseInterface(usb_dev_handle*, int) override { return 0; }
    int close(usb_dev_handle*) override { return 0; }
    int bulkWrite(usb_dev_handle*, int endpoint, const char* bytes, int size, int timeLimit) override
    {
        EXPECT_EQ(endpoint, 0x01);
        pieces.push_back(size);
        timeLimits.push_back(timeLimit);
        int result = size;
        if (!writeResults.empty()) {
            result = writeResults.front();
            writeResults.pop_front();
        }
        if (result > 0) received.append(bytes, size_t(result));
        return result;
    }
    int bulkRead(usb_dev_handle*, int, char*, int, int) override { return kTimedOut; }
    int clearHalt(usb_dev_handle*, unsigned) override { return ++clearedHalts, 0; }

    void announceInPacketSize(uint16_t size) { m_Endpoints[1].wMaxPacketSize = size; }

    std::vector<int> pieces;
    std::vector<int> timeLimits;   // of each bulk write, in milliseconds
    std::deque<int> writeResults;  // one per bulk write; the piece's size once empty
    std::string received;
    int clearedHalts = 0;

private:
    usb_endpoint_descriptor m_Endpoints[2] = {{7, 5, 0x01, 2, 64, 0, 0, 0, nullptr, 0},
                                              {7, 5, 0x82, 2, 64, 0, 0, 0, nullptr, 0}};
    usb_interface_descriptor m_Setting{};
    usb_interface m_Interface{&m_Setting, 1};
    usb_config_descriptor m_Config{};
    struct usb_device m_Device {};
    usb_bus m_Bus{};
};

// The bound of three tries applies to tries in a row: progress starts the count
// again. An IN endpoint that announces no packet size leaves pieces of 32 bytes.
TEST(LibUsbWrite, SendsPiecesOfThePacketSizeWithinTheTryBound)
{
    // clang-format off
    const struct {
        const char* name;
        std::deque<int> results;  // what each bulk write returns
        int32_t written;
        std::vector<int> pieces;
        IoStatus status;
        int clearedHalts;
        uint16_t inPacketSize = 64;
    } cases[] = {
        {"bound is per piece", {kTimedOut, kTimedOut, 64, kTimedOut, kTimedOut}, 100, {64, 64, 64, 36, 36, 36},
         IoStatus::Ok, 4},
        {"never taken", {64, kTimedOut, kTimedOut, kTimedOut}, 64, {64, 36, 36, 36}, IoStatus::Failed, 2},
        {"takes part of a piece", {40, 24}, 100, {64, 60, 36}, IoStatus::Ok, 0},
        {"stall", {64, kStalled}, 64, {64, 36}, IoStatus::Unavailable, 0},
        {"error", {-5}, 0, {64}, IoStatus::Failed, 0},
        {"unplugged", {64, kNoDevice}, 64, {64, 36}, IoStatus::Gone, 0},
        {"no packet size announced", {}, 100, {32, 32, 32, 4}, IoStatus::Ok, 0, 0},
    };
    // clang-format on
    std::string request(100, '\0');
    for (size_t i = 0; i < request.size(); ++i) request[i] = char(i);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ScopedFakeClock fake;
        FakeUsb usb;
        usb.announceInPacketSize(c.inPacketSize);
        Seam<UsbCalls>::Override installed(usb);
        LibUsbConnector connector(7);
        ASSERT_EQ(connector.openDevice(3, 7), 0);
        usb.writeResults = c.results;
        testing::internal::CaptureStderr();
        EXPECT_EQ(connector.write(reinterpret_cast<const uint8_t*>(request.data()), 100), c.written);
        const std::string err = testing::internal::GetCapturedStderr();
        EXPECT_EQ(usb.pieces, c.pieces);
        EXPECT_EQ(connector.getStatus(), static_cast<int32_t>(c.status));
        EXPECT_EQ(usb.clearedHalts, c.clearedHalts);
        EXPECT_EQ(usb.received, request.substr(0, size_t(c.written)));
        EXPECT_EQ(err, std::string(c.name) == "never taken"
                           ? "D [CVL] USB write stopped: the printer took no data in 3 tries of 5000 ms "
                             "(64 of 100 bytes written).\n"
                           : "");
    }
}

// A write bounded by a deadline: a printer that takes nothing costs the
// three tries a third of the time left each, not 5 s each.
TEST(LibUsbWrite, WaitsWithinTheBoundItWasGiven)
{
    for (const auto& [bound, limit] : {std::pair{600, 200}, {60000, 5000}, {2, 1}}) {
        FakeUsb usb;
        Seam<UsbCalls>::Override installed(usb);
        LibUsbConnector connector(7);
        ASSERT_EQ(connector.openDevice(3, 7), 0);
        usb.writeResults = {kTimedOut, kTimedOut, kTimedOut};
        connector.boundWriteWaits(bound);
        const uint8_t bytes[4] = {1, 2, 3, 4};
        EXPECT_EQ(connector.write(bytes, 4), 0);
        EXPECT_EQ(usb.timeLimits, std::vector<int>(3, limit)) << bound;
    }
}

}  // namespace
