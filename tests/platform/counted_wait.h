#pragma once

#include <atomic>
#include <deque>

#include "platform/no_destructor.h"
#include "platform/owners.h"
#include "support/limits.h"

inline OwnedHandle MakeEvent(bool manualReset) {
    return OwnedHandle(CreateEventW(nullptr, manualReset ? TRUE : FALSE, FALSE, nullptr));
}

// A registered wait that counts its callbacks.
class CountedWait {
  public:
    explicit CountedWait(const OwnedHandle& event, ULONG flags = 0) {
        flags |= WT_EXECUTEINWAITTHREAD;
        m_Registered = RegisterWaitForSingleObject(&m_Wait, event.Get(), OnFired, &m_Signals, INFINITE, flags);
    }
    ~CountedWait() {
        if (m_Registered) UnregisterWaitEx(m_Wait, nullptr);
    }
    CountedWait(const CountedWait&) = delete;
    CountedWait& operator=(const CountedWait&) = delete;

    int Signals() const { return m_Signals; }
    bool Reaches(int signals) const {
        return support::WaitUntil([&] { return m_Signals >= signals; });
    }

  private:
    static void CALLBACK OnFired(void* parameter, BOOLEAN) { ++*static_cast<std::atomic<int>*>(parameter); }

    // Never destroyed: a callback may come late.
    static std::atomic<int>& NewCounter() {
        static NoDestructor<std::deque<std::atomic<int>>> counters;
        return counters->emplace_back(0);
    }

    std::atomic<int>& m_Signals = NewCounter();
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
