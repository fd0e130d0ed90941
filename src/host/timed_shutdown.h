#pragma once

// The time-out that ends a process without a launcher: 20 s after the start or after the launcher has gone, unless one
// connects. When it runs out it sets the service's m_ReadyToExit, and the worker does the rest.
//
// Any thread may call these: the pipe's completion lock guards the time-out. Failures log a line; nothing then takes
// the time-out's place until the next ScheduleTimedShutdown.

class SteamService;

// Starts the time-out for `service`, which must live until the time-out is cancelled or stopped. One that runs already,
// or has run out, stays as it is.
void ScheduleTimedShutdown(SteamService* service);

// Ends it; logs its line whether or not there is one. Afterwards the service may go: one that is just running out finds
// that it belongs to none.
void CancelTimedShutdown();

// The same without a line.
void StopTimedShutdown();
