#include "sim/devices/ServedPrinter.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace corvelsim {

ServedPrinter::ServedPrinter(const PrinterPlan& plan, const NetworkLife& life)
    : m_Plan(plan), m_State(factoryState(life)), m_Responder(m_State, m_Plan.faults)
{}

bool ServedPrinter::openFiles(std::string& error)
{
    if (!m_Plan.statePath.empty()) {
        if (!m_StateFile.open(m_Plan.statePath, m_State, error)) return false;
        m_StateInFile = true;
    }
    if (!m_Plan.logPath.empty() && !m_Log.open(m_Plan.logPath)) {
        error = "cannot open the request log '" + m_Plan.logPath + "': " + std::strerror(errno);
        return false;
    }
    return true;
}

bool ServedPrinter::attachUsb(::_UMockdevTestbed* testbed, std::string& error)
{
    if (m_Plan.usb.bus == 0) return true;
    m_Usb = UsbPrinterDevice::attach(testbed, m_Plan.usb, error);
    return m_Usb != nullptr;
}

void ServedPrinter::addPorts(const Testbed& testbed, const std::vector<PrinterPlacement>& placements)
{
    for (const PrinterPlacement& placement : placements) {
        auto master = testbed.masters().find(placement.lp);
        if (master == testbed.masters().end()) continue;  // no lp node
        PrinterPort port;
        port.lp = placement.lp;
        port.fd = master->second;
        port.serial = placement.serial;
        m_Ports.push_back(std::move(port));
    }
    if (m_Usb) {
        PrinterPort port;
        port.lp = -1;  // no pty to flush: the device drops an unread answer itself
        port.fd = m_Usb->serverFd();
        port.usbAddress = m_Usb->address();
        port.serial = serial();
        m_Ports.push_back(std::move(port));
    }
}

bool ServedPrinter::vanishesNow()
{
    if (m_Plan.faults.vanishAfter >= 0 && m_Answered >= m_Plan.faults.vanishAfter) return true;
    ++m_Answered;
    return false;
}

Decision ServedPrinter::respond(const Request& request)
{
    Decision decision;
    auto respond = [&] { decision = m_Responder.answer(request); };
    std::string error;
    if (!m_StateInFile) {
        respond();
    } else if (!m_StateFile.update(m_State, respond, error)) {
        std::fprintf(stderr, "corvelsim: %s; the state is kept in memory only from now on\n", error.c_str());
    }
    return decision;
}

}  // namespace corvelsim
