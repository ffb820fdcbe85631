// The device-node connector's path (its reads, writes and waits run in every
// end-to-end test over the device node).
#include "transport/USBLPConnector.h"

#include <gtest/gtest.h>

#include <string>

namespace {

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
