#pragma once

// One asynchronous operation of the platform, bound to a function that runs on the wait thread when it completes.
//
// The order of use: Initialize; pass &m_Overlapped to the call that starts the operation; if that answers
// ERROR_IO_PENDING, set m_IoPending. A call that completes at once signals the event too, so the callback runs either
// way. In the callback clear m_IoPending and ask GetOverlappedResult for the outcome. Cleanup ends the use; the object
// can then be initialised again, any number of times.
//
// The object must not move, and must outlive the started operation. Failures are logged.

#include <functional>
#include <mutex>

#include "platform/windows_api.h"

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

    // Disarms the object and returns it to idle; on an idle object it does nothing. Doesn't wait for a callback that is
    // running. `ignorePending` says that the call may come from inside a callback on the wait thread, where the wait
    // reports that it is still in use; from anywhere else that is logged as a failure.
    void Cleanup(bool ignorePending);

    // Makes sure that no callback of this object starts any more, and gives its wait, or all ones. Whoever takes the
    // wait unregisters it, blocking, without holding CompletionLock: after that no callback is running either.
    HANDLE Disarm();

    // Held by the wait thread while a callback runs, and by every operation of this class. Whoever works on several
    // objects at a time holds it around all of that. Recursive: callbacks arm and clean operations.
    static std::recursive_mutex& CompletionLock();

    OVERLAPPED m_Overlapped = {};  // hEvent all ones: no event
    bool m_IoPending = false;      // guarded by CompletionLock, like everything below

  private:
    static void CALLBACK OnEventSignaled(void* parameter, BOOLEAN timerOrWaitFired);
    void Reset();

    Callback m_Callback;  // never empty
    HANDLE m_WaitHandle;  // all ones: no wait
    bool m_OneShot = false;
    unsigned m_Arming = 0;  // counts Initialize, to tell one use of the object from the next
};
