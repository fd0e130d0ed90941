#pragma once

#include <atomic>

#include "platform/owners.h"
#include "support/limits.h"

inline OwnedHandle MakeEvent(bool manualReset) {
    return OwnedHandle(CreateEventW(nullptr, manualReset ? TRUE : FALSE, FALSE, nullptr));
}

// A registered wait that counts its callbacks. Gone, and no callback running, when the object is.
class CountedWait {
  public:
    explicit CountedWait(const OwnedHandle& event, ULONG flags = 0) {
        flags |= WT_EXECUTEINWAITTHREAD;
        m_Registered = RegisterWaitForSingleObject(&m_Wait, event.Get(), OnFired, this, INFINITE, flags);
    }
    ~CountedWait() {
        if (m_Registered) UnregisterWaitEx(m_Wait, INVALID_HANDLE_VALUE);
    }
    CountedWait(const CountedWait&) = delete;
    CountedWait& operator=(const CountedWait&) = delete;

    int Signals() const { return m_Signals; }
    bool Reaches(int signals) const {
        return support::WaitUntil([&] { return m_Signals >= signals; });
    }

  private:
    static void CALLBACK OnFired(void* parameter, BOOLEAN) { ++static_cast<CountedWait*>(parameter)->m_Signals; }

    std::atomic<int> m_Signals = 0;
    HANDLE m_Wait = nullptr;
    BOOL m_Registered = FALSE;
};

// After this every wait has fired that was to fire because of anything before it: the wait thread takes the waits in
// turns, and here it has come round twice.
inline bool WaitThreadHasComeRound() {
    const OwnedHandle event = MakeEvent(false);
    const CountedWait wait(event);
    SetEvent(event.Get());
    if (!wait.Reaches(1)) return false;
    SetEvent(event.Get());
    return wait.Reaches(2);
}
