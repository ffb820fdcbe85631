// JSON escaping and the report's two forms. The failure's line and JSON
// object, and a full standard output, are shown end to end
// (tests/e2e/ctl_refusals_e2e_test.cpp, ctl_commands_e2e_test.cpp).
#include "ctl/Json.h"
#include "ctl/ListReport.h"
#include "ctl/Report.h"

#include <gtest/gtest.h>

#include <string>

using namespace corvelctl;

namespace {

TEST(Json, EscapesControlCharactersAndReplacesWhatIsNotUtf8)
{
    const struct {
        std::string text, json;
    } cases[] = {
        {"plain", "\"plain\""},
        {"a\"b\\c/", "\"a\\\"b\\\\c/\""},
        {"\b\f\n\r\t", "\"\\b\\f\\n\\r\\t\""},
        {std::string("\x00\x01\x1f\x7f", 4), "\"\\u0000\\u0001\\u001f\\u007f\""},
        {"caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x96\xA8", "\"caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x96\xA8\""},
        {"\xFF", "\"\xEF\xBF\xBD\""},                                                  // never valid
        {"\x80x", "\"\xEF\xBF\xBDx\""},                                                // stray continuation byte
        {"\xC3", "\"\xEF\xBF\xBD\""},                                                  // cut short at the end
        {"\xC3(", "\"\xEF\xBF\xBD(\""},                                                // cut short by an ASCII byte
        {"\xC0\xAF", "\"\xEF\xBF\xBD\xEF\xBF\xBD\""},                                  // overlong '/'
        {"\xE0\x80\xAF", "\"\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\""},                  // overlong, three bytes
        {"\xED\xA0\x80", "\"\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\""},                  // a surrogate
        {"\xF4\x90\x80\x80", "\"\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\""},  // beyond U+10FFFF
        {"\xF4\x8F\xBF\xBF", "\"\xF4\x8F\xBF\xBF\""},                                  // U+10FFFF itself
    };
    for (const auto& c : cases) {
        std::string quoted;
        appendJsonString(quoted, c.text);
        EXPECT_EQ(quoted, c.json) << c.json;
    }
}

TEST(Report, RendersBothFormsInFieldOrder)
{
    Report certificate;
    certificate.addText("organization", "Acme").addNull("common_name");
    Report report;
    report.addText("printer", "/dev/usb/lp0")
        .addBool("connected", true)
        .addInteger("connection_state", -2)
        .addNull("ipv4")
        .addObject("auth_8021x", Report().addInteger("status", 2).addText("name", "authenticated"))
        .humanText("2 (authenticated)")
        .addObject("certificate", certificate);
    // Human values one column after the longest key, control characters shown.
    EXPECT_EQ(report.renderHuman(), "printer:          /dev/usb/lp0\n"
                                    "connected:        yes\n"
                                    "connection_state: -2\n"
                                    "ipv4:             -\n"
                                    "auth_8021x:       2 (authenticated)\n"
                                    "certificate:\n"
                                    "  organization: Acme\n"
                                    "  common_name:  -\n");
    EXPECT_EQ(Report().addText("ssid", "evil\x1b[2J\n").renderHuman(), "ssid: evil\\x1b[2J\\x0a\n");
    EXPECT_EQ(report.renderJson(),
              R"({"printer": "/dev/usb/lp0", "connected": true, "connection_state": -2, "ipv4": null, )"
              R"("auth_8021x": {"status": 2, "name": "authenticated"}, )"
              R"("certificate": {"organization": "Acme", "common_name": null}})");
}

// The simulated printers' list, each field filled, is shown end to end;
// here the empty fields, several nodes and an empty list.
TEST(ListReport, ShowsEveryPrinterInBothForms)
{
    PrinterRecord withNode;
    withNode.nodes = {"/dev/usb/lp0", "/dev/usb/lp3"};
    withNode.bus = 1;
    withNode.device = 4;
    withNode.vendorId = "04b8";
    withNode.productId = "0005";
    withNode.manufacturer = "Acme";
    withNode.product = "Laser 5";
    PrinterRecord libusbOnly;
    libusbOnly.bus = 3;
    libusbOnly.device = 12;
    libusbOnly.vendorId = "1234";
    libusbOnly.productId = "abcd";
    libusbOnly.serial = "X\"1";
    const std::vector<PrinterRecord> printers{withNode, libusbOnly};
    EXPECT_EQ(listReport(printers).renderJson(),
              R"({"printers": [{"node": "/dev/usb/lp0", "bus_device": "001:004", "vendor_id": "04b8", )"
              R"("product_id": "0005", "manufacturer": "Acme", "product": "Laser 5", "serial": null}, )"
              R"({"node": null, "bus_device": "003:012", "vendor_id": "1234", "product_id": "abcd", )"
              R"("manufacturer": null, "product": null, "serial": "X\"1"}]})");
    const std::string human = listHumanText(printers);
    EXPECT_EQ(human.rfind("node:         /dev/usb/lp0, /dev/usb/lp3\nbus_device:   001:004\n", 0), 0u) << human;
    const std::string second = "serial:       -\n\nnode:         -\nbus_device:   003:012\n";
    EXPECT_NE(human.find(second), std::string::npos) << human;
    const std::string last = "manufacturer: -\nproduct:      -\nserial:       X\"1\n";
    EXPECT_EQ(human.substr(human.size() - last.size()), last);
    EXPECT_EQ(listReport({}).renderJson(), R"({"printers": []})");
}

}  // namespace
