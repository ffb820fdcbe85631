// A bounded first-in first-out store of bytes, guarded by an error-checking
// lock so that its operations may call one another.
#pragma once

#include <pthread.h>

#include <cstddef>
#include <cstdint>

class ByteFifo {
public:
    // Holds at most `capacity` bytes; the store has one cell more, which
    // always stays free so that "empty" and "full" differ.
    explicit ByteFifo(size_t capacity);
    ~ByteFifo();

    ByteFifo(const ByteFifo&) = delete;
    ByteFifo& operator=(const ByteFifo&) = delete;

    bool isEmpty();
    size_t freeSpace();
    size_t usedSpace();
    // Stores all `count` bytes, or nothing (false) when they do not fit.
    bool put(const uint8_t* bytes, size_t count);
    // Takes `count` bytes, or nothing (false) when fewer are held.
    bool get(uint8_t* buffer, size_t count);

    size_t capacity() const { return m_Capacity; }

private:
    // Holds the lock for one operation. An operation called from inside
    // another finds the lock already held by its own thread: the lock call
    // fails instead of blocking, the operation works under the caller's lock
    // and leaves the release to it.
    class Guard {
    public:
        explicit Guard(pthread_mutex_t& lock) : m_Lock(lock), m_Owned(pthread_mutex_lock(&lock) == 0) {}
        ~Guard()
        {
            if (m_Owned) pthread_mutex_unlock(&m_Lock);
        }
        Guard(const Guard&) = delete;
        Guard& operator=(const Guard&) = delete;

    private:
        pthread_mutex_t& m_Lock;
        bool m_Owned;
    };

    size_t cells() const { return m_Capacity + 1; }

    uint8_t* m_Data = nullptr;  // capacity + 1 cells
    size_t m_Capacity = 0;
    size_t m_ReadPosition = 0;   // next byte to take
    size_t m_WritePosition = 0;  // next free cell
    pthread_mutexattr_t m_LockAttributes;
    pthread_mutex_t m_Lock;
};
