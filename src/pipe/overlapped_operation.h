#pragma once

// One asynchronous operation of the platform, bound to a function that runs on a wait thread when it completes.
//
// The order of use: Initialize; pass &m_Overlapped to the call that starts the operation, and its result to NoteStart.
// A call that completes at once signals the event too, so the callback runs either way. The callback asks TakeResult
// for the outcome. Cleanup ends the use; the object can then be initialised again, any number of times.
//
// The object must not move, and must outlive the started operation. Failures are logged.

#include <functional>

#include "pipe/completion_lock.h"
#include "platform/owners.h"

class OverlappedOperation {
  public:
    using Callback = std::function<void()>;

    OverlappedOperation();
    ~OverlappedOperation();
    OverlappedOperation(const OverlappedOperation&) = delete;
    OverlappedOperation& operator=(const OverlappedOperation&) = delete;

    // Arms the object: true when the event exists and the wait is registered. A one-shot object fires once and goes
    // back to idle by itself; a repeating one fires for each completion until Cleanup. On an object that is in use
    // this logs a line and answers false, but the callback and the mode are the new ones already.
    //
    // `callback` may clean up its own object only if it uses no captured state afterwards.
    bool Initialize(Callback callback, bool oneShot);

    // What the call that starts the operation has come to. Both of the good ones end in the callback.
    enum class Start { Done, Pending, Failed };
    // To be called directly behind that call, with its result. Done and Pending leave no last error.
    Start NoteStart(BOOL started) REQUIRES(g_CompletionLock);

    // What a signal is worth. StillPending: it was that of an earlier operation, which had completed at once or was cut
    // off by its connection's end.
    enum class Result { Completed, Failed, StillPending };
    // In the callback: the outcome of the operation on `file`, and the number of bytes that it has moved. On Failed the
    // last error says why.
    Result TakeResult(HANDLE file, DWORD& count) REQUIRES(g_CompletionLock);

    // Disarms the object and returns it to idle; on an idle object it does nothing. `ignorePending` says that a
    // callback of the object may be running, or be about to run: the wait then reports that it is still in use, which
    // is otherwise logged as a failure. A callback that is still on its way to the lock does nothing; the object must
    // be there for it.
    void Cleanup(bool ignorePending);

    OVERLAPPED m_Overlapped = {};  // hEvent INVALID_HANDLE_VALUE: no event
    bool m_IoPending GUARDED_BY(g_CompletionLock) = false;

  private:
    static void CALLBACK OnEventSignaled(void* parameter, BOOLEAN timerOrWaitFired) noexcept;
    void Reset() REQUIRES(g_CompletionLock);

    Callback m_Callback GUARDED_BY(g_CompletionLock);     // never empty
    OwnedWait m_WaitHandle GUARDED_BY(g_CompletionLock);  // INVALID_HANDLE_VALUE: no wait
    bool m_OneShot GUARDED_BY(g_CompletionLock) = false;
    unsigned m_Arming GUARDED_BY(g_CompletionLock) = 0;  // counts Initialize, to tell one use from the next
};
