#include "sim/devices/PrinterServer.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace corvelsim {

namespace {
// The utility writes a request in one go; bytes of an unfinished packet that
// sit this long are left over from a run that gave up.
constexpr auto kStaleInput = std::chrono::milliseconds(300);
}  // namespace

PrinterServer::PrinterServer(Testbed& testbed, std::vector<std::unique_ptr<ServedPrinter>> printers)
    : m_Testbed(testbed), m_Printers(std::move(printers))
{}

int PrinterServer::nextWaitMs(int timeoutMs, TimePoint now) const
{
    int wait = timeoutMs;
    for (const auto& printer : m_Printers) {
        for (const PrinterPort& port : printer->ports()) {
            if (port.outbox.empty()) continue;
            auto untilDue = std::chrono::duration_cast<std::chrono::milliseconds>(port.outbox.front().due - now);
            wait = std::min<int>(wait, untilDue.count() < 0 ? 0 : int(untilDue.count()));
        }
    }
    return wait;
}

void PrinterServer::serveOnce(int timeoutMs)
{
    std::vector<pollfd> fds;
    for (const auto& printer : m_Printers)
        for (const PrinterPort& port : printer->ports()) fds.push_back({port.fd, POLLIN, 0});
    int ready = poll(fds.data(), fds.size(), nextWaitMs(timeoutMs, std::chrono::steady_clock::now()));

    size_t i = 0;
    for (const auto& printer : m_Printers) {
        for (PrinterPort& port : printer->ports()) {
            const bool readable = fds[i++].revents & POLLIN;
            if (ready > 0 && readable) readInput(port);
            while (auto packet = port.reader.nextPacket()) handlePacket(*printer, port, *packet);
            TimePoint now = std::chrono::steady_clock::now();
            dropStaleInput(*printer, port, now);
            sendDue(port, now);
        }
    }
    // A hang-up reported without data would make poll return at once: pause.
    if (ready > 0) {
        bool onlyHangups = true;
        for (const pollfd& fd : fds) onlyHangups = onlyHangups && !(fd.revents & POLLIN);
        if (onlyHangups) usleep(5000);
    }
}

void PrinterServer::readInput(PrinterPort& port)
{
    // Large enough for any one bulk transfer, which arrives as one message.
    static uint8_t buffer[65536];
    for (;;) {
        ssize_t got = ::read(port.fd, buffer, sizeof buffer);
        if (got <= 0) break;  // EAGAIN: all read; EIO: nobody has the device open
        if (!port.usbAddress.empty()) port.bulkOut.push_back(size_t(got));
        port.reader.feed(buffer, size_t(got));
        port.lastInput = std::chrono::steady_clock::now();
    }
}

void PrinterServer::handlePacket(ServedPrinter& printer, PrinterPort& port, const Bytes& packet)
{
    if (!port.opening.empty()) {
        Bytes opening;
        opening.swap(port.opening);
        if (isCertMgrCall(packet)) {
            handleRequest(printer, port, decodeCertMgr(opening, packet), true);
            return;
        }
        Request lone;
        lone.raw = opening;
        lone.problem = "0x80 packet without a certificate-manager call after it";
        handleRequest(printer, port, lone, true);
    }
    if (isCertMgrOpening(packet)) {
        port.opening = packet;  // the call itself follows in the same write
        return;
    }
    if (isCertMgrCall(packet)) {
        Request call = decodeCertMgr({}, packet);
        call.problem = "certificate-manager call without its 0x80 packet";
        handleRequest(printer, port, call, true);
        return;
    }
    handleRequest(printer, port, decodePacket(packet), true);
}

void PrinterServer::handleRequest(ServedPrinter& printer, PrinterPort& port, const Request& request, bool answer)
{
    LogEntry entry;
    entry.port = port.lp;
    entry.usbAddress = port.usbAddress;
    entry.serial = port.serial;
    entry.bulkOut.swap(port.bulkOut);
    entry.request = &request;
    if (answer && printer.vanishesNow()) {
        entry.faults.push_back("vanish");
        printer.log(entry);
        if (port.lp >= 0) {
            m_Testbed.hangUp(port.lp);
        } else {
            shutdown(port.fd, SHUT_RDWR);  // the USB device sees its socket end
        }
        port.fd = -1;  // poll() skips it from now on
        port.outbox.clear();
        return;
    }
    if (answer) {
        // Whatever the utility left unread belongs to an earlier exchange.
        m_Testbed.discardUnread(port.lp);
        port.outbox.clear();

        const Decision decision = printer.respond(request);
        Delivery delivery = deliver(decision.answer, printer.faults());
        entry.faults = decision.faults;
        entry.faults.insert(entry.faults.end(), delivery.applied.begin(), delivery.applied.end());
        entry.answer = delivery.bytes;
        entry.answered = !delivery.bytes.empty();
        entry.accepted = decision.settingsAccepted;
        entry.certStatus = decision.certStatus;
        entry.delayMs = delivery.delayMs;
        // Each write waits in the outbox for its time: a slow delivery never
        // holds up the server, and the next request or a hang-up drops it.
        const TimePoint now = std::chrono::steady_clock::now();
        for (TimedWrite& write : writesOf(delivery))
            port.outbox.push_back({now + std::chrono::milliseconds(write.atMs), std::move(write.bytes)});
    }
    printer.log(entry);
}

void PrinterServer::finish()
{
    for (const auto& printer : m_Printers) {
        for (PrinterPort& port : printer->ports()) {
            readInput(port);
            while (auto packet = port.reader.nextPacket()) handlePacket(*printer, port, *packet);
            dropStaleInput(*printer, port, std::chrono::steady_clock::now(), true);
        }
    }
}

void PrinterServer::dropStaleInput(ServedPrinter& printer, PrinterPort& port, TimePoint now, bool force)
{
    if (!force && now - port.lastInput < kStaleInput) return;
    if (!port.opening.empty()) {
        Request lone;
        lone.raw.swap(port.opening);
        lone.problem = "0x80 packet without a certificate-manager call after it";
        handleRequest(printer, port, lone, true);
    }
    if (port.reader.hasPartial()) {
        Request partial;
        partial.raw = port.reader.dropPartial();
        partial.problem = "incomplete packet";
        handleRequest(printer, port, partial, false);
    }
}

void PrinterServer::sendDue(PrinterPort& port, TimePoint now)
{
    while (!port.outbox.empty() && port.outbox.front().due <= now) {
        Bytes& bytes = port.outbox.front().bytes;
        ssize_t sent = ::write(port.fd, bytes.data(), bytes.size());
        if (sent < 0) return;  // the pty is full: the rest goes in a later round
        bytes.erase(bytes.begin(), bytes.begin() + sent);
        if (!bytes.empty()) return;
        port.outbox.pop_front();
    }
}

}  // namespace corvelsim
