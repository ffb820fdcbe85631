// The libusb connector as it stands now: it has no device access yet and
// behaves like a connector whose device was not found. Reaching the device
// through libusb (enumeration, claiming the printer interface, bulk reads
// into a FIFO and bulk writes) comes in a later change.
#include "transport/LibUsbConnector.h"

LibUsbConnector::LibUsbConnector(uint8_t interfaceClass) : m_InterfaceClass(interfaceClass)
{
    m_Kind = 3;
}

int LibUsbConnector::openDevice(int bus, int device)
{
    (void)bus;
    (void)device;
    record(IoStatus::Failed);
    return 1;
}

// The plain open is never offered by this connector: openDevice is the way in.
int LibUsbConnector::open()
{
    record(IoStatus::Failed);
    return 1;
}

// Without a handle there is nothing to close.
int LibUsbConnector::close()
{
    record(IoStatus::Failed);
    return 1;
}

// Without a handle no byte arrives: nothing read.
int32_t LibUsbConnector::read(uint8_t* buffer, int32_t length)
{
    (void)buffer;
    (void)length;
    return 0;
}

int LibUsbConnector::queryDevice(uint8_t* buffer, int32_t length)
{
    (void)buffer;
    (void)length;
    return 0;
}

// Without a handle no byte goes out.
int32_t LibUsbConnector::write(const uint8_t* buffer, int32_t length)
{
    (void)buffer;
    (void)length;
    return 0;
}

IoStatus LibUsbConnector::waitReadable(int32_t timeLimit)
{
    (void)timeLimit;
    record(IoStatus::Failed);
    return IoStatus::Failed;
}

IoStatus LibUsbConnector::waitWritable(int32_t timeLimit)
{
    (void)timeLimit;
    record(IoStatus::Failed);
    return IoStatus::Failed;
}
