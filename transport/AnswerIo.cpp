// The transport's answer-driven reads and writes: each wait is short and the
// deadline is checked between them, so neither a printer that takes no data
// nor one that drips its answer can hold the caller past the deadline.
#include <algorithm>
#include <cerrno>

#include "transport/Deadline.h"
#include "transport/HCUSBTransport.h"

namespace {

// The wait limit in the connector's unit: at most the connector's longest
// wait and what is left before the deadline (never 0: a zero wait would spin).
int32_t waitLimit(const HCIOConnector& connector, const Deadline& deadline)
{
    const long long ms = std::clamp(deadline.remainingMs(), 1LL, static_cast<long long>(connector.longestWaitMs()));
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
        m_Connector->boundWriteWaits(static_cast<int32_t>(std::min(deadline.remainingMs(), 1LL << 30)));
        const int32_t wrote = m_Connector->write(buffer + written, length - written);
        if (wrote > 0) {
            written += std::min(wrote, length - written);
            continue;
        }
        // Nothing taken: a connector says why by its status (the libusb one
        // returns the bytes it wrote, 0 too, when a transfer fails).
        checkGone();
        if (m_DeviceGone) {
            return IoEnd::Gone;
        }
        const auto outcome = static_cast<IoStatus>(m_Connector->getStatus());
        const bool failed =
            wrote < 0 ? outcome != IoStatus::TryAgain : outcome == IoStatus::Failed || outcome == IoStatus::Unavailable;
        if (failed) {
            m_LastError = m_Connector->getError() != 0 ? m_Connector->getError() : EIO;
            return IoEnd::Failed;
        }
        // Nothing taken now (a full node): wait until it takes more.
        if (m_Connector->waitWritable(waitLimit(*m_Connector, deadline)) == IoStatus::Gone) {
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
