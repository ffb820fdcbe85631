// Answer-driven exchanges: the answer is taken as soon as it is whole, within
// one deadline, whatever way its bytes come.
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>

#include "npa/FieldReading.h"
#include "npa/NpaFrame.h"
#include "npa/tests/NpaTestSupport.h"

using namespace std::string_literals;

namespace {

using Outcome = npa::ExchangeReport::Outcome;

const std::vector<uint8_t> kRequest = bytesFromHex("A5 00 06 50 E0 D8 00 28 15");

// The scripted printer with answer-driven exchanges of a 5-second deadline.
struct AnswerDrivenChannel {

    const npa::ExchangeReport& exchange(const npa::AnswerAssembler::WholeTest& alsoWhole = nullptr)
    {
        std::vector<uint8_t> content;
        channel.exchangeNPA(kRequest.data(), static_cast<int32_t>(kRequest.size()), content, 3, alsoWhole);
        EXPECT_EQ(content, channel.lastReport().content);
        return channel.lastReport();
    }

    npa::AnswerDrivenTiming timing{true, 5000, 15000, nullptr};
    Seam<npa::AnswerDrivenTiming>::Override answerDriven{timing};
    ScopedScriptedPrinter scripted;
    ScriptedPrinter& printer = scripted.printer;
    FakeClock& clock = scripted.fake.clock;
    NPAChannel channel{"/dev/usb/lp0"};
};

// Each byte of `hex` `gapMs` after the one before.
std::deque<Arrival> dripped(const std::string& hex, long long gapMs)
{
    std::deque<Arrival> arrivals;
    long long at = 0;
    for (uint8_t byte : bytesFromHex(hex)) {
        arrivals.push_back({at, std::string(1, static_cast<char>(byte))});
        at += gapMs * 1000;
    }
    return arrivals;
}

TEST(AnswerDriven, TakesTheAnswerAsSoonAsItIsWholeAndNeverPastTheDeadline)
{
    const std::string settingsAnswer = "A5 00 05 50 E0 DA 01 01";
    // clang-format off
    const struct {
        const char* name;
        std::deque<Arrival> arrivals;  // bytes and when they come (microseconds)
        Outcome outcome;
        std::string content;
        long long elapsedMs;
    } cases[] = {
        {"whole at once", {{0, "\xA5\x00\x05\x50\xE0\xDA\x01\x01"s}}, Outcome::Answered, "E0 DA 01 01", 0},
        {"in pieces", {{0, "\xA5\x00"s}, {100000, "\x05\x50\xE0"s}, {300000, "\xDA\x01\x01"s}},
         Outcome::Answered, "E0 DA 01 01", 300},
        {"late", {{4200000, "\xA5\x00\x05\x50\xE0\xDA\x01\x01"s}}, Outcome::Answered, "E0 DA 01 01", 4200},
        {"never", {}, Outcome::NoAnswer, "", 5000},
        {"too late", {{5100000, "\xA5\x00\x05\x50\xE0\xDA\x01\x01"s}}, Outcome::NoAnswer, "", 5000},
        {"after noise", {{0, "\xFF\x00\x13\xA5\x00\x05\x50\xE0\xDA\x01\x01"s}}, Outcome::Answered, "E0 DA 01 01", 0},
        {"refused", {{0, "\xA5\x00\x04\xD4\xE0\x63\x02"s}}, Outcome::Refused, "", 0},
        {"two packets", {{0, "\xA5\x00\x03\x70\xE0\xDA\xA5\x00\x03\x50\x01\x01"s}}, Outcome::Answered, "E0 DA 01 01", 0},
        {"empty packet skipped", {{0, "\xA5\x00\x00\xA5\x00\x02\x50\x01"s}}, Outcome::Answered, "01", 0},
        // A printer sending one byte a second would make a quiet-time reader
        // wait forever; the deadline ends the exchange all the same.
        {"dripped past the deadline", dripped(settingsAnswer, 1000), Outcome::NoAnswer, "", 5000},
        {"dripped within it", dripped(settingsAnswer, 100), Outcome::Answered, "E0 DA 01 01", 700},
    };
    // clang-format on
    for (const auto& c : cases) {
        AnswerDrivenChannel t;
        t.printer.answers.push_back(c.arrivals);
        const npa::ExchangeReport& report = t.exchange();
        EXPECT_EQ(report.outcome, c.outcome) << c.name;
        EXPECT_EQ(hexOf(report.content), c.content) << c.name;
        EXPECT_EQ(report.elapsedMs, c.elapsedMs) << c.name;
        EXPECT_TRUE(t.clock.sleeps.empty()) << c.name << ": no fixed wait";
        EXPECT_EQ(t.printer.events, (std::vector<std::string>{"open", "close"})) << c.name;
        if (c.outcome == Outcome::Answered || c.outcome == Outcome::Refused) {
            std::string sent;
            for (const Arrival& arrival : c.arrivals) sent += arrival.bytes;
            EXPECT_EQ(std::string(report.received.begin(), report.received.end()), sent) << c.name << ": as it came";
        }
    }
}

// A run of reads opens the printer once; an exchange that ended without a
// whole answer closes it, so that its late answer is not read as the next one.
TEST(AnswerDriven, KeepsTheDeviceOpenOnlyBetweenAnsweredExchanges)
{
    const std::string answer = "\xA5\x00\x05\x50\xE0\xDA\x01\x01"s;
    for (const bool keep : {true, false}) {
        AnswerDrivenChannel t;
        t.timing.keepDeviceOpen = keep;
        t.printer.answerEachWrite = true;
        t.printer.answers = {{{0, answer}}, {{0, "\xA5\x00\x04\xD4\xE0\x63\x02"s}}, {}, {{0, answer}}};
        const Outcome expected[] = {Outcome::Answered, Outcome::Refused, Outcome::NoAnswer, Outcome::Answered};
        for (const Outcome outcome : expected) EXPECT_EQ(t.exchange().outcome, outcome) << keep;
        const auto opens = std::count(t.printer.events.begin(), t.printer.events.end(), "open");
        EXPECT_EQ(opens, keep ? 2 : 4) << "kept open: " << keep;
    }
}

TEST(AnswerDriven, ReportsWhyThereWasNoAnswer)
{
    {
        AnswerDrivenChannel unopened;
        unopened.printer.openResult = 1;
        unopened.printer.openErrno = EACCES;
        const npa::ExchangeReport& report = unopened.exchange();
        EXPECT_EQ(report.outcome, Outcome::OpenFailed);
        EXPECT_EQ(report.error, EACCES) << "the reason is kept for the message";
        EXPECT_TRUE(unopened.printer.writes.empty());
    }
    {
        // A write that fails (not a full node) ends the exchange at once.
        AnswerDrivenChannel refusing;
        refusing.printer.writesFail = true;
        const npa::ExchangeReport& report = refusing.exchange();
        EXPECT_EQ(report.outcome, Outcome::IoFailed);
        EXPECT_EQ(report.error, EIO);
        EXPECT_EQ(report.elapsedMs, 0);
    }
    AnswerDrivenChannel unplugged;
    unplugged.printer.hungUp = true;
    EXPECT_EQ(unplugged.exchange().outcome, Outcome::Gone);
}

// A node takes only part of a large write: the rest follows until all is out.
TEST(AnswerDriven, ContinuesPartialWritesUntilTheWholeRequestIsOut)
{
    AnswerDrivenChannel t;
    t.printer.writeLimit = 4;
    t.printer.addAnswer("A5 00 02 50 01");
    EXPECT_EQ(t.exchange().outcome, Outcome::Answered);
    std::string written;
    for (const std::string& piece : t.printer.writes) written += piece;
    EXPECT_EQ(written, std::string(kRequest.begin(), kRequest.end()));
    EXPECT_EQ(t.printer.writes.size(), 3u);
}

// A caller's test may end the answer before its last packet (the
// certificate manager's answer ends with its XML document).
TEST(AnswerDriven, ACallersTestMayEndTheAnswerEarly)
{
    const auto endsWithEnd = [](const std::vector<uint8_t>& content) {
        return content.size() >= 3 && std::equal(content.end() - 3, content.end(), "END");
    };
    for (const std::string& text : {"END"s, "EN"s}) {
        AnswerDrivenChannel t;
        const std::string packet = "\x70"s + text;  // announces a further packet
        t.printer.answers.push_back({{0, "\xA5\x00"s + static_cast<char>(packet.size()) + packet}});
        EXPECT_EQ(t.exchange(endsWithEnd).outcome, text == "END" ? Outcome::Answered : Outcome::NoAnswer) << text;
    }
}

TEST(AnswerDriven, SettingsAreJudgedByTheWholeAnswer)
{
    const struct {
        const char* answer;
        int result;
    } cases[] = {
        {"A5 00 05 50 E0 DA 01 01", 0},
        {"A5 00 05 50 E0 DA 01 00", 1},
        {"A5 00 04 D4 E0 DA 01", -1},
        {"", -1},
        {"01", -1},  // not a packet: never whole
    };
    for (const auto& c : cases) {
        AnswerDrivenChannel t;
        t.printer.addAnswer(c.answer);
        EXPECT_EQ(t.channel.sendSettings(kRequest.data(), static_cast<int32_t>(kRequest.size())), c.result) << c.answer;
    }
}

TEST(AnswerDriven, FieldValuesAreFoundInPlainAndWrappedAnswers)
{
    const std::string home = hexOf(std::vector<uint8_t>{'h', 'o', 'm', 'e', 0});
    const std::string inner = "A5 00 0D 50 E0 D8 00 28 08 00 05 " + home;
    const std::string wrapped = "A5 00 16 50 E0 63 02 00 10 " + inner;
    // The same plain answer in two packets, the first announcing the second.
    const std::string split = "A5 00 06 70 E0 D8 00 28 08 A5 00 08 50 00 05 " + home;
    for (const std::string& answer : {inner, wrapped, split}) {
        AnswerDrivenChannel t;
        t.printer.addAnswer(answer);
        const npa::FieldValue field = npa::readField(t.channel, npa::kSSID, answer != wrapped);
        EXPECT_TRUE(field.found) << answer;
        EXPECT_EQ(npa::textOf(field.value), "home") << answer;
    }
    AnswerDrivenChannel other;
    other.printer.addAnswer("A5 00 0B 50 E0 D8 00 28 15 00 01 00");
    EXPECT_FALSE(npa::readField(other.channel, npa::kSSID, true).found);
}

}  // namespace
