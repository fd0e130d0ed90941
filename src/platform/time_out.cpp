#include "platform/time_out.h"

TimeOutStart ArmTimeOut(OwnedEvent& event, OwnedWait& wait, WAITORTIMERCALLBACK callback, void* context,
                        ULONG milliseconds) {
    const HANDLE newEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (newEvent == nullptr) return TimeOutStart::NoEvent;
    event.Reset(newEvent);
    HANDLE newWait = nullptr;
    if (!RegisterWaitForSingleObject(&newWait, newEvent, callback, context, milliseconds,
                                     WT_EXECUTEINWAITTHREAD | WT_EXECUTEONLYONCE)) {
        event.Reset();
        return TimeOutStart::NoWait;
    }
    wait.Reset(newWait);
    return TimeOutStart::Armed;
}
