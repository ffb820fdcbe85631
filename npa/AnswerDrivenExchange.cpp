// The channel's answer-driven exchanges: the request is written whole and the
// answer read as soon as it is complete, all within one deadline, in place of
// the fixed waits.
#include <cerrno>

#include "npa/AnswerAssembler.h"
#include "npa/ExchangeReport.h"
#include "npa/NPAChannel.h"
#include "transport/CommTransport.h"
#include "transport/Deadline.h"

namespace npa {

namespace {

// Bytes taken from the transport per read.
constexpr int32_t kReadPiece = 4096;

// How an exchange that stopped before its answer was whole ended.
ExchangeReport::Outcome outcomeOf(IoEnd end)
{
    switch (end) {
    case IoEnd::Gone: return ExchangeReport::Outcome::Gone;
    case IoEnd::Deadline: return ExchangeReport::Outcome::NoAnswer;
    case IoEnd::Failed:
    case IoEnd::Done: break;
    }
    return ExchangeReport::Outcome::IoFailed;
}

}  // namespace

}  // namespace npa

template <>
npa::AnswerDrivenTiming& Seam<npa::AnswerDrivenTiming>::systemDefault()
{
    static npa::AnswerDrivenTiming fixedWaits;
    return fixedWaits;
}

using npa::ExchangeReport;

const ExchangeReport& NPAChannel::answerDriven(const uint8_t* request, int32_t length, bool slow,
                                               const npa::AnswerAssembler::WholeTest& alsoWhole)
{
    const npa::AnswerDrivenTiming& timing = Seam<npa::AnswerDrivenTiming>::get();
    ExchangeReport& report = m_LastReport;
    report = ExchangeReport{};
    report.path = devicePath;
    report.request.assign(request, request + (length > 0 ? length : 0));
    report.deadlineMs = slow ? timing.slowDeadlineMs : timing.deadlineMs;
    const long long started = Seam<Clock>::get().monotonicMs();
    const Deadline deadline(report.deadlineMs);

    npa::AnswerAssembler assembler(alsoWhole);
    const bool reuse = timing.keepDeviceOpen && transport.isOpenOn(devicePath.c_str());
    if (!reuse && transport.open(devicePath.c_str()) != 0) {
        report.outcome = transport.deviceGone() ? ExchangeReport::Outcome::Gone : ExchangeReport::Outcome::OpenFailed;
        report.error = transport.lastError();
    } else {
        IoEnd end = transport.writeAll(report.request.data(), static_cast<int32_t>(report.request.size()), deadline);
        std::vector<uint8_t> piece(npa::kReadPiece);
        while (end == IoEnd::Done && !assembler.whole() && !assembler.overflowed()) {
            int32_t got = 0;
            end = transport.readSome(piece.data(), npa::kReadPiece, deadline, got);
            assembler.add(piece.data(), static_cast<size_t>(got));
        }
        if (assembler.overflowed()) {
            report.outcome = ExchangeReport::Outcome::Malformed;
        } else if (assembler.whole()) {
            report.outcome = assembler.refused() ? ExchangeReport::Outcome::Refused : ExchangeReport::Outcome::Answered;
        } else {
            report.outcome = npa::outcomeOf(end);
            report.error = transport.lastError();
        }
        const bool answeredWhole =
            report.outcome == ExchangeReport::Outcome::Answered || report.outcome == ExchangeReport::Outcome::Refused;
        if (!timing.keepDeviceOpen || !answeredWhole) transport.close();
    }
    report.received = assembler.received();
    report.content = assembler.content();
    report.elapsedMs = Seam<Clock>::get().monotonicMs() - started;
    if (timing.observer != nullptr) {
        timing.observer->exchanged(report);
    }
    return report;
}
