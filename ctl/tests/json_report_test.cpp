// JSON escaping, the report's two forms, and the failure writer.
#include "ctl/Failure.h"
#include "ctl/Json.h"
#include "ctl/ListReport.h"
#include "ctl/Report.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

using namespace corvelctl;

namespace {

std::string quotedJson(const std::string& text)
{
    std::string out;
    appendJsonString(out, text);
    return out;
}

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
    for (const auto& c : cases) EXPECT_EQ(quotedJson(c.text), c.json) << c.json;
}

TEST(Json, PlacesSeparatorsInNestedDocuments)
{
    JsonWriter writer;
    writer.beginObject();
    writer.key("a");
    writer.beginArray();
    writer.integer(-1);
    writer.boolean(true);
    writer.null();
    writer.beginObject();
    writer.endObject();
    writer.endArray();
    writer.key("b");
    writer.string("x");
    writer.endObject();
    EXPECT_EQ(writer.text(), R"({"a": [-1, true, null, {}], "b": "x"})");
}

Report statusLike()
{
    Report certificate;
    certificate.addText("organization", "Acme").addNull("common_name");
    Report report;
    report.addText("printer", "/dev/usb/lp0")
        .addBool("connected", true)
        .addInteger("connection_state", 2)
        .addNull("ipv4")
        .addObject("auth_8021x", Report().addInteger("status", 2).addText("name", "authenticated"))
        .humanText("2 (authenticated)")
        .addObject("certificate", certificate);
    return report;
}

TEST(Report, AlignsHumanValuesOneColumnAfterTheLongestKey)
{
    EXPECT_EQ(statusLike().renderHuman(), "printer:          /dev/usb/lp0\n"
                                          "connected:        yes\n"
                                          "connection_state: 2\n"
                                          "ipv4:             -\n"
                                          "auth_8021x:       2 (authenticated)\n"
                                          "certificate:\n"
                                          "  organization: Acme\n"
                                          "  common_name:  -\n");
    EXPECT_EQ(Report().addText("ssid", "evil\x1b[2J\n").renderHuman(), "ssid: evil\\x1b[2J\\x0a\n");
}

TEST(Report, RendersOneJsonObjectInFieldOrder)
{
    EXPECT_EQ(statusLike().renderJson(),
              R"({"printer": "/dev/usb/lp0", "connected": true, "connection_state": 2, "ipv4": null, )"
              R"("auth_8021x": {"status": 2, "name": "authenticated"}, )"
              R"("certificate": {"organization": "Acme", "common_name": null}})");
}

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
    EXPECT_EQ(listHumanText(printers), "node:         /dev/usb/lp0, /dev/usb/lp3\n"
                                       "bus_device:   001:004\n"
                                       "vendor_id:    04b8\n"
                                       "product_id:   0005\n"
                                       "manufacturer: Acme\n"
                                       "product:      Laser 5\n"
                                       "serial:       -\n"
                                       "\n"
                                       "node:         -\n"
                                       "bus_device:   003:012\n"
                                       "vendor_id:    1234\n"
                                       "product_id:   abcd\n"
                                       "manufacturer: -\n"
                                       "product:      -\n"
                                       "serial:       X\"1\n");
    EXPECT_EQ(listReport({}).renderJson(), R"({"printers": []})");
}

// What reportFailure wrote to its two streams.
struct Written {
    std::string out, err;
};

Written writtenBy(const Failure& failure, bool json, int& status)
{
    char *outText = nullptr, *errText = nullptr;
    size_t outSize = 0, errSize = 0;
    std::FILE* out = open_memstream(&outText, &outSize);
    std::FILE* err = open_memstream(&errText, &errSize);
    status = reportFailure(failure, json, out, err);
    std::fclose(out);
    std::fclose(err);
    Written written{std::string(outText, outSize), std::string(errText, errSize)};
    std::free(outText);
    std::free(errText);
    return written;
}

TEST(Failure, TellsOneLineOnStandardErrorAndTheObjectWithJson)
{
    int status = 0;
    const Failure failure(ExitStatus::Unavailable, "no printer is \"attached\"");
    Written written = writtenBy(failure, false, status);
    EXPECT_EQ(status, 69);
    EXPECT_EQ(written.err, "corvelctl: no printer is \"attached\"\n");
    EXPECT_EQ(written.out, "");
    written = writtenBy(failure, true, status);
    EXPECT_EQ(written.err, "corvelctl: no printer is \"attached\"\n");
    EXPECT_EQ(written.out, "{\"error\": \"no printer is \\\"attached\\\"\", \"exit\": 69}\n");
}

TEST(Failure, AFullStandardOutputIsAnIoError)
{
    std::FILE* full = std::fopen("/dev/full", "w");
    ASSERT_NE(full, nullptr);
    std::fputs("report\n", full);
    const auto failure = finishOutput(full);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->status(), ExitStatus::IoError);
    EXPECT_EQ(failure->message(), "cannot write standard output: No space left on device");

    std::FILE* fine = std::fopen("/dev/null", "w");
    ASSERT_NE(fine, nullptr);
    std::fputs("report\n", fine);
    EXPECT_FALSE(finishOutput(fine));
}

}  // namespace
