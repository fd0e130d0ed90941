#pragma once

// A one-shot time-out of the system: an event that nothing ever signals, and a wait on it that runs out. Nothing here
// logs.

#include "platform/owners.h"

enum class TimeOutStart { Armed, NoEvent, NoWait };

// Calls `callback` with `context` on a wait thread, once, when the time is over. Both owners are empty
// before, and stay so on a failure; the last error then says why. The caller sees to it that the callback doesn't look
// at the owners before this returns.
TimeOutStart ArmTimeOut(OwnedEvent& event, OwnedWait& wait, WAITORTIMERCALLBACK callback, void* context,
                        ULONG milliseconds);
