// The transport's answer-driven reads and writes: each wait is short and the
// deadline is checked between them, so neither a printer that takes no data
// nor one that drips its answer can hold the caller past the deadline.
#include <algorithm>
#include <cerrno>

#include "transport/Deadline.h"
#include "transport/HCUSBTransport.h"

namespace {

// The longest single wait: short enough to notice the deadline in time.
constexpr long long kLongestWaitMs = 50;

// The wait limit for the connector's unit, at most kLongestWaitMs and at
// most what is left before the deadline (never 0: a zero wait would spin).
int32_t waitLimit(const HCIOConnector& connector, const Deadline& deadline)
{
    const long long ms = std::clamp(deadline.remainingMs(), 1LL, kLongestWaitMs);
    const long long unit = std::max(connector.waitUnitMicroseconds(), 1);
    return static_cast<int32_t>(std::max(ms * 1000 / unit, 1LL));
}

}  // namespace

IoEnd HCUSBTransport::writeAll(const uint8_t* buffer, int32_t length, const Deadline& deadline)
{
    if (!m_Connector || m_DeviceGone) {
        return IoEnd::Gone;
    }
    int32_t written = 0;
    while (written < length) {
        if (deadline.passed()) {
            return IoEnd::Deadline;
        }
        const int32_t wrote = m_Connector->write(buffer + written, length - written);
        if (wrote > 0) {
            written += std::min(wrote, length - written);
            continue;
        }
        if (wrote < 0) {
            checkGone();
            if (m_DeviceGone) {
                return IoEnd::Gone;
            }
            if (m_Connector->getStatus() != static_cast<int32_t>(IoStatus::TryAgain)) {
                m_LastError = m_Connector->getError() != 0 ? m_Connector->getError() : EIO;
                return IoEnd::Failed;
            }
        }
        // Nothing taken now (a full node): wait until it takes more.
        const IoStatus status = m_Connector->waitWritable(waitLimit(*m_Connector, deadline));
        if (status == IoStatus::Gone) {
            checkGone();
            return IoEnd::Gone;
        }
    }
    return IoEnd::Done;
}

IoEnd HCUSBTransport::readSome(uint8_t* buffer, int32_t length, const Deadline& deadline, int32_t& got)
{
    got = 0;
    if (!m_Connector || m_DeviceGone) {
        return IoEnd::Gone;
    }
    while (true) {
        const int32_t arrived = m_Connector->readArrived(buffer, length);
        if (arrived > 0) {
            got = std::min(arrived, length);
            return IoEnd::Done;
        }
        if (arrived < 0) {
            checkGone();
            if (m_DeviceGone) {
                return IoEnd::Gone;
            }
        }
        if (deadline.passed()) {
            return IoEnd::Deadline;
        }
        const IoStatus status = m_Connector->waitReadable(waitLimit(*m_Connector, deadline));
        if (status == IoStatus::Gone) {
            checkGone();
            return IoEnd::Gone;
        }
        if (status == IoStatus::Failed) {
            m_LastError = m_Connector->getError() != 0 ? m_Connector->getError() : EIO;
            return IoEnd::Failed;
        }
    }
}
