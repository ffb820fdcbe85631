// The receive store of the libusb connector: bulk packets go in, reads of any
// size come out.
#include "transport/ByteFifo.h"

#include <cstring>

ByteFifo::ByteFifo(size_t capacity) : m_Data(new uint8_t[capacity + 1]()), m_Capacity(capacity)
{
    pthread_mutexattr_init(&m_LockAttributes);
    pthread_mutexattr_settype(&m_LockAttributes, PTHREAD_MUTEX_ERRORCHECK);
    pthread_mutex_init(&m_Lock, &m_LockAttributes);
}

ByteFifo::~ByteFifo()
{
    delete[] m_Data;
    m_Data = nullptr;
    m_Capacity = 0;
    m_ReadPosition = 0;
    m_WritePosition = 0;
    pthread_mutex_destroy(&m_Lock);
    pthread_mutexattr_destroy(&m_LockAttributes);
}

bool ByteFifo::isEmpty()
{
    Guard guard(m_Lock);
    return m_ReadPosition == m_WritePosition;
}

size_t ByteFifo::freeSpace()
{
    Guard guard(m_Lock);
    if (m_Data == nullptr) return 0;
    if (m_WritePosition == m_ReadPosition) return m_Capacity;
    if (m_WritePosition < m_ReadPosition) return m_ReadPosition - m_WritePosition - 1;
    return m_Capacity - m_WritePosition + m_ReadPosition;
}

size_t ByteFifo::usedSpace()
{
    Guard guard(m_Lock);
    if (m_Data == nullptr) return 0;
    return m_Capacity - freeSpace();
}

bool ByteFifo::put(const uint8_t* bytes, size_t count)
{
    Guard guard(m_Lock);
    if (count > freeSpace()) return false;
    if (count == 0) return true;
    // At most two copies: up to the end of the store, then from its start.
    const size_t first = count < cells() - m_WritePosition ? count : cells() - m_WritePosition;
    std::memcpy(m_Data + m_WritePosition, bytes, first);
    std::memcpy(m_Data, bytes + first, count - first);
    m_WritePosition = (m_WritePosition + count) % cells();
    return true;
}

bool ByteFifo::get(uint8_t* buffer, size_t count)
{
    Guard guard(m_Lock);
    if (count > usedSpace()) return false;
    if (count == 0) return true;
    const size_t first = count < cells() - m_ReadPosition ? count : cells() - m_ReadPosition;
    std::memcpy(buffer, m_Data + m_ReadPosition, first);
    std::memcpy(buffer + first, m_Data, count - first);
    m_ReadPosition = (m_ReadPosition + count) % cells();
    return true;
}
