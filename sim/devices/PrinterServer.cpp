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

PrinterServer::PrinterServer(Testbed& testbed, PrinterState& state, const FaultSet& faults, RequestLog& log,
                             SharedStateFile* stateFile)
    : m_Testbed(testbed), m_State(state), m_Faults(faults), m_Log(log), m_Responder(state, faults),
      m_StateFile(stateFile)
{
    for (const auto& [lp, fd] : testbed.masters()) {
        Port port;
        port.lp = lp;
        port.fd = fd;
        m_Ports.push_back(std::move(port));
    }
}

void PrinterServer::addUsbPort(int fd, const std::string& address)
{
    Port port;
    port.lp = -1;  // no pty to flush: the device drops an unread answer itself
    port.fd = fd;
    port.usbAddress = address;
    m_Ports.push_back(std::move(port));
}

int PrinterServer::nextWaitMs(int timeoutMs, TimePoint now) const
{
    int wait = timeoutMs;
    for (const Port& port : m_Ports) {
        if (port.outbox.empty()) continue;
        auto untilDue = std::chrono::duration_cast<std::chrono::milliseconds>(port.outbox.front().due - now);
        wait = std::min<int>(wait, untilDue.count() < 0 ? 0 : int(untilDue.count()));
    }
    return wait;
}

void PrinterServer::serveOnce(int timeoutMs)
{
    std::vector<pollfd> fds;
    for (const Port& port : m_Ports) fds.push_back({port.fd, POLLIN, 0});
    int ready = poll(fds.data(), fds.size(), nextWaitMs(timeoutMs, std::chrono::steady_clock::now()));

    for (size_t i = 0; i < m_Ports.size(); ++i) {
        Port& port = m_Ports[i];
        if (ready > 0 && (fds[i].revents & POLLIN)) readInput(port);
        while (auto packet = port.reader.nextPacket()) handlePacket(port, *packet);
        TimePoint now = std::chrono::steady_clock::now();
        dropStaleInput(port, now);
        sendDue(port, now);
    }
    // A hang-up reported without data would make poll return at once: pause.
    if (ready > 0) {
        bool onlyHangups = true;
        for (const pollfd& fd : fds) onlyHangups = onlyHangups && !(fd.revents & POLLIN);
        if (onlyHangups) usleep(5000);
    }
}

void PrinterServer::readInput(Port& port)
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

void PrinterServer::handlePacket(Port& port, const Bytes& packet)
{
    if (!port.opening.empty()) {
        Bytes opening;
        opening.swap(port.opening);
        if (isCertMgrCall(packet)) {
            handleRequest(port, decodeCertMgr(opening, packet), true);
            return;
        }
        Request lone;
        lone.raw = opening;
        lone.problem = "0x80 packet without a certificate-manager call after it";
        handleRequest(port, lone, true);
    }
    if (isCertMgrOpening(packet)) {
        port.opening = packet;  // the call itself follows in the same write
        return;
    }
    if (isCertMgrCall(packet)) {
        Request call = decodeCertMgr({}, packet);
        call.problem = "certificate-manager call without its 0x80 packet";
        handleRequest(port, call, true);
        return;
    }
    handleRequest(port, decodePacket(packet), true);
}

void PrinterServer::handleRequest(Port& port, const Request& request, bool answer)
{
    LogEntry entry;
    entry.port = port.lp;
    entry.usbAddress = port.usbAddress;
    entry.bulkOut.swap(port.bulkOut);
    entry.request = &request;
    if (answer && m_Faults.vanishAfter >= 0 && m_Answered >= m_Faults.vanishAfter) {
        entry.faults.push_back("vanish");
        m_Log.write(entry);
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
        ++m_Answered;
        // Whatever the utility left unread belongs to an earlier exchange.
        m_Testbed.discardUnread(port.lp);
        port.outbox.clear();

        Decision decision;
        auto respond = [&] { decision = m_Responder.answer(request); };
        std::string error;
        if (!m_StateFile)
            respond();
        else if (!m_StateFile->update(m_State, respond, error))
            std::fprintf(stderr, "corvelsim: %s; the state is kept in memory only from now on\n", error.c_str());
        Delivery delivery = deliver(decision.answer, m_Faults);
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
    m_Log.write(entry);
}

void PrinterServer::finish()
{
    for (Port& port : m_Ports) {
        readInput(port);
        while (auto packet = port.reader.nextPacket()) handlePacket(port, *packet);
        dropStaleInput(port, std::chrono::steady_clock::now(), true);
    }
}

void PrinterServer::dropStaleInput(Port& port, TimePoint now, bool force)
{
    if (!force && now - port.lastInput < kStaleInput) return;
    if (!port.opening.empty()) {
        Request lone;
        lone.raw.swap(port.opening);
        lone.problem = "0x80 packet without a certificate-manager call after it";
        handleRequest(port, lone, true);
    }
    if (port.reader.hasPartial()) {
        Request partial;
        partial.raw = port.reader.dropPartial();
        partial.problem = "incomplete packet";
        handleRequest(port, partial, false);
    }
}

void PrinterServer::sendDue(Port& port, TimePoint now)
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
