// A printer behind the transport singleton, for tests of the transport and of
// whole runs: each open starts the next scripted answer, whose pieces reach the
// host at given times on the fake clock; every request is recorded.
#pragma once

#include <algorithm>
#include <cerrno>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/FakeClock.h"
#include "tests/support/HexText.h"
#include "transport/ConnectorFactory.h"
#include "transport/HCUSBTransport.h"

// Bytes that reach the host at a given time on the fake clock.
struct Arrival {
    long long atMicroseconds;
    std::string bytes;
};

struct ScriptedPrinter {
    std::deque<std::deque<Arrival>> answers;  // one per open; none left: silence
    std::vector<std::string> paths, events;   // the USB path of every open; open, close, destroyed
    std::vector<std::string> writes;          // every request, as written
    int openResult = 0;
    int openErrno = 0;        // the error number a failed open leaves
    bool writesFail = false;  // every write takes nothing and records a failure
    // What a wait with nothing arriving gives: DataReady for a hung device
    // (always "readable", never a byte), Failed makes every wait fail.
    IoStatus idleWait = IoStatus::TimedOut;
    bool hungUp = false;    // an unplugged printer: every read fails with EIO
    size_t writeLimit = 0;  // the most one write takes (0: all): a node that takes part of a large write
    // Each write, not each open, starts the next answer: a device kept open
    // between exchanges.
    bool answerEachWrite = false;

    // The next answer, all of it there at once.
    void addAnswer(const std::string& hex) { addAnswer(bytesFromHex(hex)); }
    void addAnswer(const std::vector<uint8_t>& bytes)
    {
        answers.push_back({{0, std::string(bytes.begin(), bytes.end())}});
    }
};

class ScriptedConnector : public HCIOConnector {
public:
    ScriptedConnector(ScriptedPrinter& printer, FakeClock& clock) : m_Printer(printer), m_Clock(clock) {}
    ~ScriptedConnector() override { m_Printer.events.push_back("destroyed"); }
    int open() override
    {
        m_Printer.events.push_back("open");
        if (!m_Printer.answerEachWrite) takeNextAnswer();
        if (m_Printer.openResult != 0) errno = m_Printer.openErrno;
        return m_Printer.openResult;
    }
    int close() override { return m_Printer.events.push_back("close"), 0; }
    // Hands over what arrived of the first pending piece; the rest stays for the next read.
    int32_t read(uint8_t* buffer, int32_t length) override
    {
        if (m_Printer.hungUp) {
            record(IoStatus::Gone);
            m_Error = EIO;
            return -1;
        }
        if (m_Pending.empty() || m_Pending.front().atMicroseconds > m_Clock.microseconds)
            return -1;  // nothing there: what a non-blocking read gives
        std::string& bytes = m_Pending.front().bytes;
        const size_t take = std::min(static_cast<size_t>(length), bytes.size());
        bytes.copy(reinterpret_cast<char*>(buffer), take);
        bytes.erase(0, take);
        if (bytes.empty()) m_Pending.pop_front();
        return static_cast<int32_t>(take);
    }
    int queryDevice(uint8_t*, int32_t) override { return 0; }
    int32_t write(const uint8_t* buffer, int32_t length) override
    {
        if (m_Printer.writesFail) {
            record(IoStatus::Failed);
            m_Error = EIO;
            return 0;
        }
        size_t take = static_cast<size_t>(length);
        if (m_Printer.writeLimit > 0) take = std::min(take, m_Printer.writeLimit);
        m_Printer.writes.emplace_back(reinterpret_cast<const char*>(buffer), take);
        if (m_Printer.answerEachWrite) takeNextAnswer();
        return static_cast<int32_t>(take);
    }
    // Advances the clock the way a select() with that limit (in ms) would.
    IoStatus waitReadable(int32_t timeLimit) override
    {
        const long long limit = 1000LL * timeLimit;
        if (m_Printer.idleWait == IoStatus::Failed) return IoStatus::Failed;
        if (m_Printer.hungUp) return IoStatus::DataReady;
        if (!m_Pending.empty() && m_Pending.front().atMicroseconds <= m_Clock.microseconds + limit) {
            m_Clock.microseconds = std::max(m_Clock.microseconds, m_Pending.front().atMicroseconds);
            return IoStatus::DataReady;
        }
        m_Clock.waited(limit);
        return m_Printer.idleWait;
    }
    IoStatus waitWritable(int32_t) override { return IoStatus::WriteReady; }

private:
    void takeNextAnswer()
    {
        m_Pending.clear();
        if (m_Printer.answers.empty()) return;
        m_Pending = m_Printer.answers.front();
        m_Printer.answers.pop_front();
    }

    ScriptedPrinter& m_Printer;
    FakeClock& m_Clock;
    std::deque<Arrival> m_Pending;
};

// Connects every path to the scripted printer, as given.
class ScriptedConnectorFactory : public ConnectorFactory {
public:
    ScriptedConnectorFactory(ScriptedPrinter& printer, FakeClock& clock) : m_Printer(printer), m_Clock(clock) {}
    std::unique_ptr<HCIOConnector> connect(const char* path, bool& opened) override
    {
        m_Printer.paths.push_back(path);
        auto connector = std::make_unique<ScriptedConnector>(m_Printer, m_Clock);
        opened = connector->open() == 0;
        return connector;
    }

private:
    ScriptedPrinter& m_Printer;
    FakeClock& m_Clock;
};

// The scripted printer on the fake clock, installed for the lifetime of the object.
struct ScopedScriptedPrinter {
    ScopedFakeClock fake;
    ScriptedPrinter printer;
    ScriptedConnectorFactory factory{printer, fake.clock};
    Seam<ConnectorFactory>::Override installed{factory};
};
