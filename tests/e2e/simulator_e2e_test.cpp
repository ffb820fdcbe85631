// corvelsim on its own, driven by a minimal client: many open/close cycles,
// no stale answer across exchanges, a certificate-manager call, the exit status.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "tests/e2e/HexBytes.h"
#include "tests/e2e/SimRun.h"

namespace e2e {
namespace {

std::vector<std::string> lines(const std::string& text)
{
    std::vector<std::string> result;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) result.push_back(line);
    return result;
}

SimRun runClient(const SimDir& dir, std::vector<std::string> exchanges)
{
    exchanges.insert(exchanges.begin(), {PRINTER_CLIENT_PATH, "/dev/usb/lp0"});
    return runSim(dir, {"--speed", "1"}, exchanges);
}

TEST(Simulator, ServesManyOpenCloseCycles)
{
    SimDir dir;
    const size_t cycles = 40;
    SimRun run = runClient(dir, std::vector<std::string>(cycles, "A5000650E0D8002A06/37"));  // 37: a whole answer
    ASSERT_EQ(run.status, 0) << run.err;
    std::vector<std::string> answers = lines(run.out);
    ASSERT_EQ(answers.size(), cycles);
    ASSERT_EQ(run.log.size(), cycles);
    for (size_t i = 0; i < cycles; ++i) {
        EXPECT_EQ(answers[i], logValue(run.log[i], "answer")) << "cycle " << i;
        EXPECT_EQ(logValue(run.log[i], "seq"), std::to_string(i + 1));
    }
}

TEST(Simulator, AnswerLeftUnreadDoesNotLeakIntoTheNextExchange)
{
    SimDir dir;
    SimRun run = runClient(dir, {"A5000650E0D8002808/1", "A5000650E0D8002A1D/12"});
    ASSERT_EQ(run.status, 0) << run.err;
    std::vector<std::string> answers = lines(run.out);
    ASSERT_EQ(answers.size(), 2u);
    EXPECT_EQ(answers[0], "A5");
    EXPECT_TRUE(sameBytes(bytesFromHex("A5 00 09 50 E0 D8 00 2A 1D 00 01 00"), bytesFromHex(answers[1])));
}

TEST(Simulator, CertificateManagerCallIsLoggedAsOneRequest)
{
    const std::string xml = "<?xml version=\"1.0\"?><method name=\"callMethod\" requestID=\"420\">"
                            "<arg name=\"objName\">applications.certMgr</arg>"
                            "<arg name=\"method\">queryCAList</arg></method>";
    const size_t length = xml.size() + 6;
    const std::string call = "A5001080" "3CC33CC321DE3CC322DD01FE24DB5D" "A5" +
                             toHex({uint8_t(length >> 8), uint8_t(length)}) + "50E0C0030001" +
                             toHex(Bytes(xml.begin(), xml.end()));
    SimDir dir;
    SimRun run = runClient(dir, {call + "/1"});
    ASSERT_EQ(run.status, 0) << run.err;
    ASSERT_EQ(run.log.size(), 1u);
    EXPECT_EQ(logValue(run.log[0], "kind"), "certmgr");
    EXPECT_EQ(logValue(run.log[0], "method"), "queryCAList");
    EXPECT_EQ(logValue(run.log[0], "raw"), call);
}

// A certificate-manager request: the 0x80-flagged packet, then the call.
std::string certCall(const std::string& method, const std::string& map)
{
    const std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><method name=\"callMethod\" requestID=\"1\">"
                            "<arg name=\"objName\">applications.certMgr</arg><arg name=\"method\">" +
                            method + "</arg><arg name=\"params\"><ListElem><ListElem>" + map +
                            "</ListElem></ListElem></arg></method>";
    const size_t length = xml.size() + 6;
    return "A5001080" "3CC33CC321DE3CC322DD01FE24DB5D" "A5" + toHex({uint8_t(length >> 8), uint8_t(length)}) +
           "50E0C0030001" + toHex(Bytes(xml.begin(), xml.end()));
}

std::string textOf(const Bytes& bytes) { return std::string(bytes.begin(), bytes.end()); }

TEST(Simulator, CertificateManagerAnswersInItsEnvelopeAndShowsItsFaults)
{
    const std::string readDefaults = certCall("readCertDefaults", "<MapElem></MapElem>");
    const std::string envelope = "E0C003000100E0";
    const std::string defaultsXml = "<child name=\"status_code\"><IntegerElem>1</IntegerElem></child>"
                                    "<child name=\"status_mesg\"><StringElem>OK</StringElem></child>"
                                    "<child name=\"x509_O\"><StringElem>Corvel Simulated Printers</StringElem></child>";
    const struct { const char* fault; const char* before; std::string xmlPart; int status; int e0Bytes; } cases[] = {
        {"", envelope.c_str(), defaultsXml, 1, 0},
        {"cert-no-envelope", "", defaultsXml, 1, 0},
        {"cert-e0=3", envelope.c_str(), "", 1, 3},
        {"cert-status=readCertDefaults:9:printer busy",  envelope.c_str(),
         "<child name=\"status_code\"><IntegerElem>9</IntegerElem></child>"
         "<child name=\"status_mesg\"><StringElem>printer busy</StringElem></child></MapElem>", 9, 0},
    };
    for (const auto& c : cases) {
        SimDir dir;
        std::vector<std::string> options = {"--speed", "1"};
        if (*c.fault) options.insert(options.end(), {"--fault", c.fault});
        SimRun run = runSim(dir, options, {PRINTER_CLIENT_PATH, "/dev/usb/lp0", readDefaults});
        ASSERT_EQ(run.status, 0) << run.err;
        ASSERT_EQ(run.log.size(), 1u) << c.fault;
        EXPECT_EQ(logValue(run.log[0], "status_code"), std::to_string(c.status)) << c.fault;
        Bytes answer = bytesFromHex(lines(run.out).at(0));
        ASSERT_GT(answer.size(), 4u) << c.fault;
        EXPECT_EQ(size_t(answer[1] << 8 | answer[2]) + 3, answer.size()) << c.fault;
        EXPECT_EQ(answer[3], 0x50) << c.fault;
        const std::string content = toHex(Bytes(answer.begin() + 4, answer.end()));
        EXPECT_EQ(content.rfind(std::string(c.before) + toHex(Bytes{'<', '?', 'x', 'm', 'l'}), 0), 0u) << c.fault;
        std::string xml = textOf(Bytes(answer.begin() + 4 + std::string(c.before).size() / 2, answer.end()));
        size_t e0 = std::count(xml.begin(), xml.end(), '\xE0');
        EXPECT_EQ(e0, size_t(c.e0Bytes)) << c.fault;
        xml.erase(std::remove(xml.begin(), xml.end(), '\xE0'), xml.end());
        EXPECT_NE(xml.find(c.xmlPart), std::string::npos) << c.fault << ": " << xml;
        EXPECT_EQ(xml.rfind("</MapElem></response>"), xml.size() - 21) << c.fault << ": " << xml;
    }
}

TEST(Simulator, SilentCertificateManagerLeavesOtherRequestsAnswered)
{
    SimDir dir;
    const std::string generate = certCall(
        "generateNewCert", "<MapElem><child name=\"cert_friendly_name\"><StringElem>CorvelRadioHelper</StringElem></child>"
                           "<child name=\"x509_O\"><StringElem>A&amp;B</StringElem></child></MapElem>");
    SimRun run = runSim(dir, {"--speed", "1", "--fault", "cert-silent"},
                        {PRINTER_CLIENT_PATH, "/dev/usb/lp0", generate, "A5000650E0D8002A06/37"});
    ASSERT_EQ(run.status, 0) << run.err;
    std::vector<std::string> answers = lines(run.out);
    ASSERT_EQ(answers.size(), 2u);
    EXPECT_EQ(answers[0], "-");
    EXPECT_NE(answers[1], "-");
    ASSERT_EQ(run.log.size(), 2u);
    EXPECT_NE(run.log[0].find("\"params\":{\"cert_friendly_name\":\"CorvelRadioHelper\",\"x509_O\":\"A&B\"}"),
              std::string::npos) << run.log[0];
    EXPECT_EQ(logValue(run.log[0], "status_code"), "");
    EXPECT_EQ(dir.read("state.txt").find("pending."), std::string::npos) << "a silent manager changes nothing";
}

TEST(Simulator, EndsWithTheCommandsExitStatusOrSignal)
{
    SimDir dir;
    EXPECT_EQ(runSim(dir, {}, {"/bin/sh", "-c", "exit 7"}).status, 7);
    EXPECT_EQ(runSim(dir, {}, {"/bin/sh", "-c", "kill -TERM $$"}).status, 128 + 15);
    SimRun devices = runSim(dir, {"--lp", "2"}, {"/bin/sh", "-c", "test -c /dev/usb/lp2 && test ! -e /dev/usb/lp0"});
    EXPECT_EQ(devices.status, 0) << devices.err;
}

}  // namespace
}  // namespace e2e
