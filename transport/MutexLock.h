// Holds a POSIX mutex for one scope: the connectors guard their reads and
// writes with plain pthread mutexes.
#pragma once

#include <pthread.h>

class MutexLock {
public:
    explicit MutexLock(pthread_mutex_t& mutex) : m_Mutex(mutex) { pthread_mutex_lock(&m_Mutex); }
    ~MutexLock() { pthread_mutex_unlock(&m_Mutex); }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

private:
    pthread_mutex_t& m_Mutex;
};
