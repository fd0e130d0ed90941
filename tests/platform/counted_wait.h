#pragma once

#include <atomic>

#include "platform/windows_api.h"
#include "tests/support/limits.h"

// A registered wait that counts its callbacks. Gone, and no callback running, when the object is.
class CountedWait {
  public:
    explicit CountedWait(HANDLE event, ULONG flags = 0) {
        m_Registered =
            RegisterWaitForSingleObject(&m_Wait, event, OnFired, this, INFINITE, flags | WT_EXECUTEINWAITTHREAD);
    }
    ~CountedWait() {
        if (m_Registered) UnregisterWaitEx(m_Wait, INVALID_HANDLE_VALUE);
    }
    CountedWait(const CountedWait&) = delete;
    CountedWait& operator=(const CountedWait&) = delete;

    int Signals() const { return m_Signals; }
    bool Reaches(int signals) const {
        return test_support::WaitUntil([&] { return m_Signals == signals; });
    }

  private:
    static void CALLBACK OnFired(void* parameter, BOOLEAN) { ++static_cast<CountedWait*>(parameter)->m_Signals; }

    std::atomic<int> m_Signals = 0;
    HANDLE m_Wait = nullptr;
    BOOL m_Registered = FALSE;
};

// An event with an owner.
class OwnedEvent {
  public:
    explicit OwnedEvent(bool manualReset)
        : m_Event(CreateEventW(nullptr, manualReset ? TRUE : FALSE, FALSE, nullptr)) {}
    ~OwnedEvent() { CloseHandle(m_Event); }
    OwnedEvent(const OwnedEvent&) = delete;
    OwnedEvent& operator=(const OwnedEvent&) = delete;

    operator HANDLE() const { return m_Event; }

  private:
    const HANDLE m_Event;
};

// After this every wait has fired that was to fire because of anything before it: the wait thread takes the waits in
// turns, and here it has come round twice.
inline bool WaitThreadHasComeRound() {
    const OwnedEvent event(false);
    const CountedWait wait(event);
    SetEvent(event);
    if (!wait.Reaches(1)) return false;
    SetEvent(event);
    return wait.Reaches(2);
}
