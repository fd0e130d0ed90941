#include "pipe/overlapped_operation.h"

#include <utility>

#include "diagnostics/last_error.h"
#include "diagnostics/log.h"

RecursiveLock g_CompletionLock;

OverlappedOperation::OverlappedOperation() : m_Callback([] {}) {
    m_Overlapped.hEvent = INVALID_HANDLE_VALUE;
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
    const LockGuard lock(g_CompletionLock);
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
    HANDLE wait = nullptr;
    if (!RegisterWaitForSingleObject(&wait, event, OnEventSignaled, this, INFINITE, flags)) {
        ReportLastError("Failed to start waiting on overlapped event.");
        return false;
    }
    m_WaitHandle.Reset(wait);
    return true;
}

OverlappedOperation::Start OverlappedOperation::NoteStart(BOOL started) {
    if (started) return Start::Done;
    if (GetLastError() != ERROR_IO_PENDING) return Start::Failed;
    SetLastError(ERROR_SUCCESS);
    m_IoPending = true;
    return Start::Pending;
}

OverlappedOperation::Result OverlappedOperation::TakeResult(HANDLE file, DWORD& count) {
    m_IoPending = false;
    if (GetOverlappedResult(file, &m_Overlapped, &count, FALSE)) return Result::Completed;
    if (GetLastError() != ERROR_IO_INCOMPLETE) return Result::Failed;
    SetLastError(ERROR_SUCCESS);
    m_IoPending = true;
    return Result::StillPending;
}

void OverlappedOperation::Cleanup(bool ignorePending) {
    const LockGuard lock(g_CompletionLock);
    // A null event: the call doesn't wait for a running callback, which may well be the caller.
    if (m_WaitHandle && !UnregisterWaitEx(m_WaitHandle.Release(), nullptr)) {
        if (ignorePending && GetLastError() == ERROR_IO_PENDING) {
            SetLastError(ERROR_SUCCESS);
        } else {
            ReportLastError("Failed to unregister overlapped wait.");
        }
    }
    if (m_Overlapped.hEvent != INVALID_HANDLE_VALUE && !CloseHandle(m_Overlapped.hEvent)) {
        ReportLastError("Failed to close overlapped event handle.");
    }
    Reset();
}

void CALLBACK OverlappedOperation::OnEventSignaled(void* parameter, BOOLEAN) noexcept {
    auto* const operation = static_cast<OverlappedOperation*>(parameter);
    const LockGuard lock(g_CompletionLock);
    const unsigned arming = operation->m_Arming;
    operation->m_Callback();
    // A callback that has armed its own object again (after a connection that was lost at once) must keep it.
    if (operation->m_OneShot && operation->m_Arming == arming) operation->Cleanup(true);
}
