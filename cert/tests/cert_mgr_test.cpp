// The certificate-manager client over a scripted printer: the request each
// method sends (byte for byte), how answers are unwrapped and judged, and the
// lines written when the printer says no.
#include <cstdio>
#include <functional>
#include <memory>

#include <gtest/gtest.h>

#include "cert/CertMgr.h"
#include "cert/CertRequests.h"
#include "npa/NPAChannel.h"
#include "tests/support/CaptureOutput.h"
#include "tests/support/CertAnswers.h"
#include "tests/support/ScriptedConnector.h"
#include "tests/support/TempFile.h"

namespace {

// The request text composed from its parts, independently of the client.
std::string call(const std::string& method, int id, const std::string& map, bool shortDeclaration = false)
{
    return std::string(shortDeclaration ? "<?xml version=\"1.0\"?>" : "<?xml version=\"1.0\" encoding=\"UTF-8\"?>") +
           "<method name=\"callMethod\" requestID=\"" + std::to_string(id) +
           "\"><arg name=\"objName\">applications.certMgr</arg><arg name=\"method\">" + method +
           "</arg><arg name=\"params\"><ListElem><ListElem>" + map + "</ListElem></ListElem></arg></method>";
}

std::string map(const std::string& children) { return "<MapElem>" + children + "</MapElem>"; }

// The friendly name the program gives its own certificate.
const std::string kHelperName = stringChild("cert_friendly_name", "CorvelRadioHelper");

// The request text follows the fixed opening packet and its own packet's header.
std::string textOf(const std::string& request)
{
    const size_t length = request.size() - 22;  // after the second packet's length field
    char head[96];
    std::snprintf(head, sizeof head,
                  "A5 00 10 80 3C C3 3C C3 21 DE 3C C3 22 DD 01 FE 24 DB 5D A5 %02zX %02zX 50 E0 C0 03 00 01",
                  length >> 8, length & 0xFF);
    EXPECT_EQ(hexOf(request.substr(0, 28)), head);
    return request.substr(28);
}

struct ClientUnderTest {
    ScopedScriptedPrinter scripted;
    ScriptedPrinter& printer = scripted.printer;
    CertMgr client{std::make_unique<NPAChannel>("/dev/usb/lp0")};

    void answer(const std::string& xml) { printer.addAnswer(answerPacket(xml)); }
    std::vector<std::string> sentTexts() const
    {
        std::vector<std::string> texts;
        for (const auto& request : printer.writes) texts.push_back(textOf(request));
        return texts;
    }
};

TEST(CertMgr, EachMethodSendsItsRequestTextInTheTwoPacketFrame)
{
    // Subject values are plain text: even an entity in them is escaped.
    const std::string ugly = "A&B \"q\" 'a' <x> &amp;";
    const std::string escaped = "A&amp;B &quot;q&quot; &apos;a&apos; &lt;x&gt; &amp;amp;";
    struct Case {
        const char* name;
        std::function<void(CertMgr&)> run;
        std::string expected;
    };
    std::vector<std::string> list;
    std::string s1, s2, s3, s4, s5, s6, s7;
    const std::string longestName(31, 'n');  // the printer keeps 31 characters
    const Case cases[] = {
        {"deleteCACert (values unchanged)", [&](CertMgr& c) { c.deleteCACert(ugly); },
         call("deleteIndividualCA", 410, map(stringChild("ca_common_name", ugly)))},
        {"deleteSignedCert", [](CertMgr& c) { c.deleteSignedCert(); },
         call("deleteIndividualCert", 510, map(kHelperName))},
        {"getCertRequestDefaults", [&](CertMgr& c) { c.getCertRequestDefaults(s1, s2, s3, s4, s5, s6, s7); },
         call("readCertDefaults", 100, "<MapElem></MapElem>", true)},
        {"getCAInfo", [&](CertMgr& c) { c.getCAInfo("Root_X", s1, s2, s3); },
         call("queryCAInfo", 430, map(stringChild("ca_common_name", "Root_X")))},
        {"getFriendlyNameList", [&](CertMgr& c) { c.getFriendlyNameList(list); }, call("queryCertList", 520, "")},
        {"getCACommonNameList", [&](CertMgr& c) { c.getCACommonNameList(list); }, call("queryCAList", 420, "")},
        {"saveCertRequest", [&](CertMgr& c) { c.saveCertRequest("/nonexistent-dir/x.csr", longestName.c_str()); },
         call("exportPubKey", 210, map(stringChild("cert_friendly_name", longestName)))},
        {"a friendly name too long is not sent", [&](CertMgr& c) { c.deleteSignedCert((longestName + "n").c_str()); },
         ""},
    };
    for (const Case& testCase : cases) {
        ClientUnderTest t;
        t.answer(answerXml(1));
        captureOutput([&] { testCase.run(t.client); });
        const std::vector<std::string> sent =
            testCase.expected.empty() ? std::vector<std::string>{} : std::vector<std::string>{testCase.expected};
        EXPECT_EQ(t.sentTexts(), sent) << testCase.name;
    }

    // generateNewCert escapes the subject (in its own order of fields), after
    // removing the certificate of the friendly name.
    ClientUnderTest t;
    t.answer(answerXml(1));
    t.answer(answerXml(1));
    captureOutput([&] { t.client.createCertRequest(ugly, "U", "DE", "BY", "City", "cn", "alt"); });
    const std::string subject = kHelperName + stringChild("x509_O", escaped) + stringChild("x509_AN", "alt") +
                                stringChild("x509_C", "DE") + stringChild("x509_CN", "cn") +
                                stringChild("x509_L", "City") + stringChild("x509_OU", "U") +
                                stringChild("x509_ST", "BY");
    EXPECT_EQ(t.sentTexts(), (std::vector<std::string>{call("deleteIndividualCert", 510, map(kHelperName)),
                                                       call("generateNewCert", 200, map(subject))}));
}

TEST(CertMgr, UploadsCarryFileNameSizeAndBase64)
{
    const TempFile file("abcd");
    const std::string name = file.path.substr(5);  // after "/tmp/"

    ClientUnderTest t;
    t.answer(answerXml(1));
    t.answer(answerXml(1));
    captureOutput([&] {
        EXPECT_EQ(t.client.installSignedCert(file.path), 0);
        EXPECT_EQ(t.client.installCACert(file.path), 0);  // not a certificate: no list, no delete
    });
    EXPECT_EQ(t.sentTexts(),
              (std::vector<std::string>{
                  call("uploadSignedCertFile", 500,
                       map(kHelperName + xmlChild("cert_syst_dot_pem_size", "IntegerElem", "4") +
                           xmlChild("cert_syst_dot_pem_file", "BinaryElem", "YWJjZA=="))),
                  call("uploadNewCAFile", 400,
                       map(stringChild("ca_file_name", name) + xmlChild("ca_dot_pem_size", "IntegerElem", "4") +
                           xmlChild("ca_dot_pem_file", "BinaryElem", "YWJjZA==")))}));
}

// The answer is whole once its root element has closed (before its last
// packet, should the printer announce another).
TEST(CertMgr, AnswerDocumentClosesWithItsRootElement)
{
    const std::string envelope = "E0C003000100E0";
    const auto hex = [](const std::string& text) { return hexOf(std::vector<uint8_t>(text.begin(), text.end())); };
    const struct {
        std::string answer;
        bool closed;
    } cases[] = {
        {envelope + hex("<?xml version=\"1.0\"?><!-- c --><response a=\"1\"><x/></response>"), true},
        {envelope + hex("<response><x/></response>") + "0A 20 00 00", true},
        {envelope + hex("<response><x/></resp") + "E0" + hex("onse>"), true},
        {envelope + hex("<response><x/></response><"), false},
        {envelope + hex("<response><x/></respons"), false},
        {envelope + hex("<response><response/></x>"), false},
        {"E0C003000100E1" + hex("<a></a>"), false},
        {envelope + hex("no document"), false},
    };
    for (const auto& c : cases) EXPECT_EQ(certreq::answerDocumentClosed(bytesFromHex(c.answer)), c.closed) << c.answer;
}

TEST(CertMgr, AnswerEnvelopeIsCheckedAndEveryE0LeftOut)
{
    struct Case {
        const char* name;
        std::string answer;
        size_t capacity;
        bool accepted;  // refused: the buffer stays untouched
        std::string text;
    };
    const Case cases[] = {
        {"E0 inside the XML", "E0C003000100E0 3C E0 613E E0", 64, true, "<a>"},
        {"wrong envelope byte", "E0C003000100E1 3C613E", 64, false, ""},
        {"capacity below the answer length", "E0C003000100E0 3C613E", 9, false, ""},
    };
    for (const Case& c : cases) {
        const std::vector<uint8_t> answer = bytesFromHex(c.answer);
        std::vector<char> out(c.capacity, 'x');
        const size_t length = certreq::unwrapAnswer(answer.data(), answer.size(), out.data(), out.size());
        EXPECT_EQ(length, c.text.size()) << c.name;
        if (c.accepted) {
            EXPECT_STREQ(out.data(), c.text.c_str()) << c.name;
        } else {
            EXPECT_EQ(std::string(out.begin(), out.end()), std::string(c.capacity, 'x')) << c.name;
        }
    }
}

TEST(CertMgr, FailuresWriteTheErrorLineAndThePrintersMessage)
{
    ClientUnderTest t;
    t.answer(answerXml(7, stringChild("status_mesg", "no such CA")));
    t.printer.addAnswer(answerPacket(answerXml(1), "E0C0030001"));  // envelope cut short
    std::vector<std::string> names = {"kept1", "kept2"};
    const Captured captured = captureOutput([&] {
        EXPECT_EQ(t.client.deleteCACert("X"), -1);
        EXPECT_EQ(t.client.getFriendlyNameList(names), -1);
        EXPECT_EQ(t.client.saveCertRequest("/dev/null"), -1);  // no answer at all
    });
    EXPECT_EQ(captured.err, "D [CVL] Delete CA cert error 7\nD [CVL] no such CA\n"
                            "D [CVL] Error getting list of friendly names 0\nD [CVL] \n");
    EXPECT_EQ(names, (std::vector<std::string>{"kept1", "kept2"})) << "a failed call leaves the list";

    t.answer(listAnswerXml({"a", "b", "c"}));
    const Captured listed = captureOutput([&] { EXPECT_EQ(t.client.getFriendlyNameList(names), 0); });
    EXPECT_EQ(names, (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_EQ(listed.err, "D [CVL] List of friendly names (3):\nD [CVL] [0] a\nD [CVL] [1] b\nD [CVL] [2] c\n");
}

TEST(CertMgr, RequestMustFitItsBufferWithItsTerminator)
{
    // The deleteIndividualCA text is 326 characters besides the CA name.
    ClientUnderTest t;
    t.answer(answerXml(1));
    const Captured captured = captureOutput([&] {
        EXPECT_EQ(t.client.deleteCACert(std::string(2746, 'n')), -1);  // 3072 characters: no room for the zero
        EXPECT_EQ(t.client.deleteCACert(std::string(2745, 'n')), 0);
    });
    ASSERT_EQ(t.printer.writes.size(), 1u);
    EXPECT_EQ(textOf(t.printer.writes[0]).size(), 3071u);
    EXPECT_EQ(captured.err, "D [CVL] The deleteIndividualCA request does not fit its 3072-byte buffer!\n");
}

// A certificate file is read whole when it fits its buffer, and refused
// before a byte is read when it is even one byte larger.
TEST(CertMgr, FileIsLoadedOnlyWhenItFitsTheBuffer)
{
    for (const size_t size : {16u, 17u}) {
        const TempFile file(std::string(size, 'x'));
        std::vector<uint8_t> buffer(16, 0);
        // Not captured: a read past the buffer must show the sanitizer's report.
        EXPECT_EQ(CertMgr::loadFromFile(buffer.data(), 16, file.path), size == 16 ? 16 : -1) << size;
        EXPECT_EQ(buffer[0], size == 16 ? 'x' : 0) << size;
    }
}

TEST(CertMgr, ConstructionNeedsAUsbPath)
{
    const Captured captured = captureOutput([] { EXPECT_EQ(CertMgr::create(""), nullptr); });
    EXPECT_EQ(captured.err, "D [CVL] Error: No USB device is specified!\n");
}

}  // namespace
