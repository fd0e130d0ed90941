#include "pipe/overlapped_operation.h"

#include <utility>

#include "diagnostics/last_error.h"
#include "diagnostics/log.h"

std::recursive_mutex& OverlappedOperation::CompletionLock() {
    // Never destroyed: the wait thread outlives the process's statics.
    static std::recursive_mutex& lock = *new std::recursive_mutex;
    return lock;
}

OverlappedOperation::OverlappedOperation() : m_WaitHandle(INVALID_HANDLE_VALUE) {
    Reset();
}

OverlappedOperation::~OverlappedOperation() {
    Cleanup(false);
}

// Leaves the other words of the record alone: while an operation is in flight they are the system's, which may write
// its result at any moment until the pipe is closed.
void OverlappedOperation::Reset() {
    m_Overlapped.hEvent = INVALID_HANDLE_VALUE;
    m_OneShot = false;
    m_IoPending = false;
    m_Callback = [] {};
}

bool OverlappedOperation::Initialize(Callback callback, bool oneShot) {
    const std::lock_guard lock(CompletionLock());
    m_Callback = std::move(callback);
    m_OneShot = oneShot;
    if (m_IoPending || m_Overlapped.hEvent != INVALID_HANDLE_VALUE) {
        Log("Tried to re-initialize an overlapped!");
        return false;
    }
    ++m_Arming;
    m_Overlapped = {};
    m_Overlapped.hEvent = INVALID_HANDLE_VALUE;

    // A wait that repeats needs an event that resets itself, or it would fire for ever.
    const HANDLE event = CreateEventW(nullptr, oneShot ? TRUE : FALSE, FALSE, nullptr);
    if (event == nullptr) {
        ReportLastError("Unable to create overlapped event.");
        return false;
    }
    m_Overlapped.hEvent = event;

    const ULONG flags = WT_EXECUTEINWAITTHREAD | (oneShot ? WT_EXECUTEONLYONCE : 0);
    if (!RegisterWaitForSingleObject(&m_WaitHandle, event, OnEventSignaled, this, INFINITE, flags)) {
        ReportLastError("Failed to start waiting on overlapped event.");
        m_WaitHandle = INVALID_HANDLE_VALUE;
        return false;
    }
    return true;
}

void OverlappedOperation::Cleanup(bool ignorePending) {
    const std::lock_guard lock(CompletionLock());
    if (m_WaitHandle != INVALID_HANDLE_VALUE) {
        // A null event: the call doesn't wait for a running callback, which may well be the caller.
        if (!UnregisterWaitEx(m_WaitHandle, nullptr)) {
            if (ignorePending && GetLastError() == ERROR_IO_PENDING) {
                SetLastError(ERROR_SUCCESS);
            } else {
                ReportLastError("Failed to unregister overlapped wait.");
            }
        }
        m_WaitHandle = INVALID_HANDLE_VALUE;
    }
    if (m_Overlapped.hEvent != INVALID_HANDLE_VALUE && !CloseHandle(m_Overlapped.hEvent)) {
        ReportLastError("Failed to close overlapped event handle.");
    }
    Reset();
}

HANDLE OverlappedOperation::Disarm() {
    const std::lock_guard lock(CompletionLock());
    m_Callback = [] {};
    m_OneShot = false;
    return std::exchange(m_WaitHandle, INVALID_HANDLE_VALUE);
}

void CALLBACK OverlappedOperation::OnEventSignaled(void* parameter, BOOLEAN) {
    auto* const operation = static_cast<OverlappedOperation*>(parameter);
    const std::lock_guard lock(CompletionLock());
    const unsigned arming = operation->m_Arming;
    operation->m_Callback();
    // A callback that has armed its own object anew (a connection lost at once is listened for again) must keep it.
    if (operation->m_OneShot && operation->m_Arming == arming) operation->Cleanup(true);
}
