#pragma once

// Locks whose rules the compiler holds: clang refuses code that touches what is GUARDED_BY a lock, or calls what
// REQUIRES one, without holding it (its manual: "Thread Safety Analysis"). Other compilers ignore the marks.

#include <mutex>

#include "platform/no_destructor.h"
#include "platform/windows_api.h"

#if defined(__clang__)
#define THREAD_SAFETY(attribute) __attribute__((attribute))
#else
#define THREAD_SAFETY(attribute)
#endif
#define GUARDED_BY(lock) THREAD_SAFETY(guarded_by(lock))
#define REQUIRES(lock)   THREAD_SAFETY(requires_capability(lock))

// The thread that holds it may take it again. It is never destroyed, because threads of the system may still take it
// while the process's statics go. Taking it leaves the last error as it is: the runtime's own lock may change it.
class THREAD_SAFETY(capability("lock")) RecursiveLock {
  public:
    void Acquire() THREAD_SAFETY(acquire_capability()) {
        const DWORD error = GetLastError();
        m_Mutex->lock();
        SetLastError(error);
    }
    bool TryAcquire() THREAD_SAFETY(try_acquire_capability(true)) { return m_Mutex->try_lock(); }
    void Release() THREAD_SAFETY(release_capability()) { m_Mutex->unlock(); }

  private:
    NoDestructor<std::recursive_mutex> m_Mutex;
};

// Holds the lock as long as it lives.
class THREAD_SAFETY(scoped_lockable) LockGuard {
  public:
    explicit LockGuard(RecursiveLock& lock) THREAD_SAFETY(acquire_capability(lock)) : m_Lock(lock) { m_Lock.Acquire(); }
    ~LockGuard() THREAD_SAFETY(release_capability()) { m_Lock.Release(); }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;

  private:
    RecursiveLock& m_Lock;
};
