// One user's way to the printer: the USB path and a transport. Every exchange
// opens the transport on the path, writes one request, waits, reads the answer,
// closes again and judges what came back.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "npa/AnswerAssembler.h"
#include "npa/ExchangeReport.h"

class CommTransport;

class NPAChannel {
public:
    // Takes a reference on the USB transport singleton, given back on destruction.
    explicit NPAChannel(const std::string& devicePath);
    ~NPAChannel();

    NPAChannel(const NPAChannel&) = delete;
    NPAChannel& operator=(const NPAChannel&) = delete;

    // Sends `request` and collects the framed answer packets for up to
    // `timeLimitSeconds` after a 2-second wait. `answer` receives the content of
    // every kept packet after its flags byte. Returns the number of bytes
    // collected (0 when none, also when the device cannot be opened).
    int32_t exchangeNPA(const uint8_t* request, int32_t length, std::vector<uint8_t>& answer, int timeLimitSeconds);
    // The same; with answer-driven exchanges `alsoWhole` may end the answer
    // before its last packet (the fixed waits ignore it).
    int32_t exchangeNPA(const uint8_t* request, int32_t length, std::vector<uint8_t>& answer, int timeLimitSeconds,
                        const npa::AnswerAssembler::WholeTest& alsoWhole);

    // One settings request: -1 refused or no answer, 0 accepted (answer ends
    // with 0x01), 1 answered otherwise.
    int sendSettings(const uint8_t* request, int32_t length);

    // The polled exchanges: -1 refused, 0 success, non-zero when attempts ran out.
    int pollConnection(const uint8_t* request, int32_t length);   // until the answer ends with 0x00
    int pollDeviceState(const uint8_t* request, int32_t length);  // until the answer ends with 0x2D
    int pollReset(const uint8_t* request, int32_t length);        // until the answer ends with 0x01
    int pollAddress(const uint8_t* request, int32_t length);      // prints the IPv4 address found
    int pollText(const uint8_t* request, int32_t length);         // prints the text value found

    const std::string& getDevicePath() const { return devicePath; }
    // True once the printer's device went away (reported on standard error).
    bool deviceGone() const;

    // What the last answer-driven exchange of this channel did (outcome None
    // while the fixed waits are in force).
    const npa::ExchangeReport& lastReport() const { return m_LastReport; }

    // A further channel to the same printer over the same transport, for a
    // client that makes exchanges of its own (the certificate manager).
    std::unique_ptr<NPAChannel> duplicate() const;

private:
    // How one polled exchange waits, retries and judges an answer.
    struct PollRule {
        size_t answerSize;
        unsigned waitAfterWrite;  // seconds between writing and reading
        int attempts;             // at most
        unsigned pauseBetween;    // seconds before each further attempt
        bool canRefuse;           // whether the refusal flags end the polling
        bool (*isSuccess)(const std::vector<uint8_t>& answer, int32_t got, int32_t requestLength);
    };
    enum class PollOutcome { Refused, Success, OutOfAttempts };

    // Runs the attempts of `rule`; `answer` and `got` hold the last answer read.
    PollOutcome poll(const uint8_t* request, int32_t length, const PollRule& rule, std::vector<uint8_t>& answer,
                     int32_t& got);
    // Polls that report only whether the awaited state came: 0 it came, 1 it did not.
    int pollUntilSeen(const uint8_t* request, int32_t length, const PollRule& rule);

    // One attempt of a polled exchange: open, write, wait, one read, close.
    // Returns the byte count read into `buffer` (0 to buffer.size()).
    int32_t readOnce(const uint8_t* request, int32_t length, std::vector<uint8_t>& buffer, unsigned waitSeconds);

    // One answer-driven exchange (Seam<npa::AnswerDrivenTiming> enabled): open,
    // write whole, read until the answer is whole or the deadline passes, close.
    const npa::ExchangeReport& answerDriven(const uint8_t* request, int32_t length, bool slow,
                                            const npa::AnswerAssembler::WholeTest& alsoWhole);

    std::string devicePath;
    CommTransport& transport;
    npa::ExchangeReport m_LastReport;
};
