// A hostile printer: the fuzzer's bytes are everything the printer sends back,
// for every run mode of the utility. The first byte picks the command line;
// the rest is a script of what each read and each wait of the device finds:
//
//   0x00-0x7F  c+1 answer bytes follow, read at once or over several reads
//   0x80-0x9F  the device signals readable but the read finds nothing
//   0xA0-0xBF  the printer pauses: a wait passes a second without data
//   0xC0-0xDF  the answer ends: the printer is silent until the next open
//   0xE0-0xEF  the read returns 0 bytes without an error (an empty packet)
//   0xF0-0xF7  the read fails with EIO: the printer is gone, and every later
//              open, read and write fails
//   0xF8-0xFF  the read is interrupted by a signal (EINTR)
//
// Each run must end (a bound on the connector calls and on the fake time),
// stay inside its buffers (ASan) and exit with a status its mode documents.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "app/Application.h"
#include "tests/support/FakeClock.h"
#include "transport/ConnectorFactory.h"
#include "transport/HCUSBTransport.h"

namespace {

// What the printer says, one control byte at a time.
struct PrinterScript {
    const uint8_t* data = nullptr;
    size_t size = 0;
    size_t position = 0;
    size_t pieceLeft = 0;  // answer bytes of the current piece not read yet
    bool silentUntilOpen = false;
    bool gone = false;
    long callsWhenGone = 0;
    long long goneAtMicroseconds = 0;
    long calls = 0;
    long callLimit = 0;
    long long timeLimitMicroseconds = 0;

    bool atEnd() const { return silentUntilOpen || position >= size; }
    uint8_t peek() const { return data[position]; }
    uint8_t next() { return data[position++]; }
};

PrinterScript script;
FakeClock fakeClock;
const char* runMode = "";

// Standard error as it was before the run's output was swapped away.
FILE* realStderr = stderr;

[[noreturn]] void fail(const std::string& what)
{
    std::fprintf(realStderr, "fuzz_hostile_printer: %s\n", what.c_str());
    std::fflush(realStderr);
    std::abort();
}

constexpr long kCallsAfterGone = 8;
constexpr long long kSecondsAfterGone = 6;

// Every connector call counts; a run that outlives the bounds is stuck.
void countCall()
{
    if (++script.calls > script.callLimit)
        fail(std::string(runMode) + ": more than " + std::to_string(script.callLimit) + " connector calls");
    if (fakeClock.microseconds > script.timeLimitMicroseconds)
        fail(std::string(runMode) + ": the run went on for " + std::to_string(fakeClock.microseconds / 1000000) + " s");
    // A printer gone ends the run: at most the exchange under way finishes
    // its fixed wait, nothing is tried again.
    if (script.gone && (script.calls - script.callsWhenGone > kCallsAfterGone ||
                        fakeClock.microseconds - script.goneAtMicroseconds > kSecondsAfterGone * 1000000LL))
        fail(std::string(runMode) + ": the run went on after the printer was gone");
}

void goneNow()
{
    script.gone = true;
    script.callsWhenGone = script.calls;
    script.goneAtMicroseconds = fakeClock.microseconds;
}

enum class Event { Answer, NothingThere, Pause, AnswerEnds, EndOfFile, Gone, Interrupted };

Event eventOf(uint8_t control)
{
    if (control < 0x80) return Event::Answer;
    if (control < 0xA0) return Event::NothingThere;
    if (control < 0xC0) return Event::Pause;
    if (control < 0xE0) return Event::AnswerEnds;
    if (control < 0xF0) return Event::EndOfFile;
    if (control < 0xF8) return Event::Gone;
    return Event::Interrupted;
}

// A device node driven by the script. A wait with nothing to come lets a
// whole second pass on the fake clock, so quiet times end after a few waits.
class HostileConnector : public HCIOConnector {
public:
    int open() override
    {
        countCall();
        script.silentUntilOpen = false;
        return script.gone ? 1 : 0;
    }
    int close() override { return countCall(), 0; }
    int32_t write(const uint8_t*, int32_t length) override
    {
        countCall();
        if (script.gone) return failWith(IoStatus::Gone, EIO);
        record(IoStatus::Ok);
        return length;
    }
    int queryDevice(uint8_t*, int32_t) override { return 0; }
    IoStatus waitWritable(int32_t) override { return countCall(), IoStatus::WriteReady; }

    IoStatus waitReadable(int32_t) override
    {
        countCall();
        // A hung-up node is always readable; its reads fail.
        if (script.pieceLeft > 0 || script.gone) return IoStatus::DataReady;
        if (!script.atEnd()) {
            switch (eventOf(script.peek())) {
            case Event::Pause: script.next(); break;
            case Event::AnswerEnds:
                script.next();
                script.silentUntilOpen = true;
                break;
            default: return IoStatus::DataReady;  // the read decides what it finds
            }
        }
        fakeClock.waited(1000000);
        return IoStatus::TimedOut;
    }

    int32_t read(uint8_t* buffer, int32_t length) override
    {
        countCall();
        if (script.gone) return failWith(IoStatus::Gone, EIO);
        if (script.pieceLeft > 0) return readPiece(buffer, length);
        if (script.atEnd()) return nothingThere();
        const uint8_t control = script.next();
        switch (eventOf(control)) {
        case Event::Answer: {
            const size_t available = script.size - script.position;
            script.pieceLeft =
                static_cast<size_t>(control) + 1 < available ? static_cast<size_t>(control) + 1 : available;
            return readPiece(buffer, length);
        }
        case Event::NothingThere:
        case Event::Pause: return nothingThere();
        case Event::AnswerEnds: script.silentUntilOpen = true; return nothingThere();
        case Event::EndOfFile: record(IoStatus::Ok); return 0;
        case Event::Gone: goneNow(); return failWith(IoStatus::Gone, EIO);
        case Event::Interrupted: return failWith(IoStatus::Interrupted, EINTR);
        }
        return -1;
    }

private:
    // The rest of a piece stays for the next read, as the device node keeps it.
    int32_t readPiece(uint8_t* buffer, int32_t length)
    {
        size_t count = script.pieceLeft;
        if (count > static_cast<size_t>(length)) count = static_cast<size_t>(length);
        if (count > 0) std::memcpy(buffer, script.data + script.position, count);
        script.position += count;
        script.pieceLeft -= count;
        record(count > 0 ? IoStatus::Ok : IoStatus::TryAgain);
        return count > 0 ? static_cast<int32_t>(count) : -1;
    }

    int32_t nothingThere() { return failWith(IoStatus::TryAgain, EAGAIN); }

    int32_t failWith(IoStatus status, int error)
    {
        record(status);
        m_Error = error;
        return -1;
    }
};

// Every path reaches the hostile printer; the connector opens as its script says.
class HostileConnectorFactory : public ConnectorFactory {
public:
    std::unique_ptr<HCIOConnector> connect(const char*, bool& opened) override
    {
        auto connector = std::make_unique<HostileConnector>();
        opened = connector->open() == 0;
        return connector;
    }
};

// One command line and the exit statuses its mode documents.
struct Run {
    std::vector<std::string> args;
    std::vector<int> statuses;  // empty: any status (a byte the printer sent)
};

std::string tempDir;
std::vector<Run> runs;

const char kCaPem[] = "-----BEGIN CERTIFICATE-----\n"
                      "MIIBlzCCAT2gAwIBAgIUOJIbZ5ustSJcH1q8N6kQte0jCx0wCgYIKoZIzj0EAwIw\n"
                      "ITENMAsGA1UECgwEQWNtZTEQMA4GA1UEAwwHRnV6eiBDQTAeFw0yNjExMjMxNjEz\n"
                      "MzRaFw0zNjExMjAxNjEzMzRaMCExDTALBgNVBAoMBEFjbWUxEDAOBgNVBAMMB0Z1\n"
                      "enogQ0EwWTATBgcqhkjOPQIBBggqhkjOPQMBBwNCAATU/uF8z5Moy+sqdnoOSBy/\n"
                      "Lek8LFTku2539KU6BhPFeNg8cworiF7nOCDTtW649zyqRMFzFASP2sn9kks1abZH\n"
                      "o1MwUTAdBgNVHQ4EFgQU9yK3zEVBDIjIdDtJa18cIKWmLbcwHwYDVR0jBBgwFoAU\n"
                      "9yK3zEVBDIjIdDtJa18cIKWmLbcwDwYDVR0TAQH/BAUwAwEB/zAKBggqhkjOPQQD\n"
                      "AgNIADBFAiEAiy/DH83oC/wuI3eXwp2pPRrqueYWBve34e4hEN498n4CIDoF0Zel\n"
                      "E5q2QJeT/GQ+ussYxBQSwfcrBhHl274gOKN9\n"
                      "-----END CERTIFICATE-----\n";

std::string writeTempFile(const std::string& name, const std::string& content)
{
    const std::string path = tempDir + "/" + name;
    std::FILE* file = std::fopen(path.c_str(), "w");
    if (file == nullptr || std::fputs(content.c_str(), file) < 0 || std::fclose(file) != 0) {
        std::fprintf(stderr, "fuzz_hostile_printer: cannot write %s\n", path.c_str());
        std::abort();
    }
    return path;
}

void removeTempFiles()
{
    for (const char* name : {"ca.pem", "basic.conf", "dot1x.conf", "icer.conf", "read-ssid.hex", "printer.csr"})
        std::remove((tempDir + "/" + name).c_str());
    rmdir(tempDir.c_str());
}

// Keep the order in step with scripts/hostile-seeds.sh: a seed's first byte
// is its run's index here.
void makeRuns()
{
    char name[] = "/tmp/fuzz_hostile_printerXXXXXX";
    if (mkdtemp(name) == nullptr) std::abort();
    tempDir = name;
    std::atexit(removeTempFiles);
    const std::string ca = writeTempFile("ca.pem", kCaPem);
    const std::string basic =
        writeTempFile("basic.conf", "# office\n--ssid=\"Office Net\"\n--security=\"WPA2\"\n--passwd=\"horse\"\n");
    const std::string dot1x = writeTempFile(
        "dot1x.conf", "--security=802.1x\n--ssid=Lab\n--encryption=WEP-STATIC\n--WEP-key1=0123456789\n"
                      "--802-auth-ext=\"PEAP|EAP-TLS\"\n--802-auth-inner=MSCHAPv2\n--802-user=u\n--802-pwd=p\n");
    const std::string icer = writeTempFile("icer.conf", "--802-CA-cer-file=" + ca + "\n");
    const std::string packet = writeTempFile("read-ssid.hex", "A5 00 06 50 E0 D8 00 28 08\n");
    const std::string csr = tempDir + "/printer.csr";

    const std::vector<int> settings = {0, 1, 255};
    runs = {
        {{"-c", "--ssid=net", "--security=WPA2", "--passwd=secret"}, settings},
        {{"-c", "-file", basic}, settings},
        {{"-ca", "--security=OPEN", "--encryption=WEP", "--WEP-key1=0123456789", "--ssid=Old"}, settings},
        {{"-ca", "--security=SHARED", "--encryption=WEP", "--WEP-key2=abcde", "--WEP-transmit=2"}, settings},
        {{"-ca", "--security=WPA-PER", "--encryption=AES", "--ssid=Lab", "--psk=passphrase"}, settings},
        {{"-ca", "--security=WPA-ENT", "--encryption=TKIP", "--ssid=Lab", "--psk=passphrase"}, settings},
        {{"-ca", "--security=802.1x", "--ssid=AcmeCorp", "--encryption=AES", "--802-auth-ext=EAP-TLS",
          "--802-user=printer1"},
         settings},
        {{"-ca", "-file", dot1x}, settings},
        {{"-t"}, {}},
        {{"-a"}, {0, 1}},
        {{"-s"}, settings},
        {{"-ip"}, settings},
        {{"-r"}, {0, 1}},
        {{"-802s"}, {}},  // the status byte as the printer sent it
        {{"-cer"}, {0}},  // 0 whatever the printer answers, or if it went away
        {{"-npa", "-file", packet, "/dev/usb/lp0"}, {0}},
        {{"-npa"}, {0}},
        {{"-rcerdefs"}, {0, 1}},
        {{"-csr", "--cer-org=Acme", "--cer-country=DE", "--cer-common=printer1", "--cer-path=" + csr}, {0, 1}},
        {{"-icer", "--802-CA-cer-file=" + ca}, {0, 1, 2}},
        {{"-icer", "--802-signed-cer-file=" + ca}, {0, 1, 2}},
        {{"-icer", "-file", icer}, {0, 1, 2}},
        {{"--ssid=Home"}, {0}},
        {{"-h"}, {0}},
    };
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    makeRuns();
    // A password prompt must never wait for the fuzzer's terminal.
    const int devNull = ::open("/dev/null", O_RDONLY);
    if (devNull < 0 || dup2(devNull, STDIN_FILENO) < 0) std::abort();
    ::close(devNull);
    static HostileConnectorFactory factory;
    static Seam<ConnectorFactory>::Override installedFactory(factory);
    static Seam<Clock>::Override installedClock(fakeClock);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0) return 0;
    const Run& run = runs[data[0] % runs.size()];
    script = PrinterScript{};
    script.data = data + 1;
    script.size = size - 1;
    // Each byte of the script is taken by at most two calls and may pause a
    // second; beyond that a run makes only its mode's own bounded attempts.
    script.callLimit = 100000 + 4 * static_cast<long>(size);
    script.timeLimitMicroseconds = (3600 + static_cast<long long>(size)) * 1000000;
    fakeClock.microseconds = 0;
    runMode = run.args[0].c_str();

    std::vector<const char*> argv = {"corvelcfg"};
    for (const std::string& arg : run.args) argv.push_back(arg.c_str());

    // The run's output goes nowhere: only the standard streams' FILE objects
    // are swapped, so sanitizer reports (written to descriptor 2) still show.
    static FILE* const sink = std::fopen("/dev/null", "w");
    FILE* const out = stdout;
    realStderr = stderr;
    stdout = sink;
    stderr = sink;
    const int status = runCorvelcfg(static_cast<int>(argv.size()), argv.data());
    stdout = out;
    stderr = realStderr;

    bool documented = run.statuses.empty();
    for (int allowed : run.statuses) documented = documented || status == allowed;
    if (!documented) fail(run.args[0] + " exited with the undocumented status " + std::to_string(status));
    return 0;
}
