#pragma once

// The time-out that ends a process without a launcher: 20 s after the start or after the launcher has gone, unless one
// connects. When it runs out it sets the service's m_ReadyToExit, and the worker does the rest.
//
// Schedule and Cancel run on the worker before the pipe exists or if it can't be created, and otherwise on the wait
// thread, inside the pipe's completions. Failures log a line; nothing then takes the time-out's place until the next
// Schedule.

class SteamService;

// Starts the time-out for `service`, which must live until StopTimedShutdown. One that runs already, or has run out,
// stays as it is.
void ScheduleTimedShutdown(SteamService* service);

// Ends it; logs its line whether or not there is one. Doesn't wait for a time-out that is just running out.
void CancelTimedShutdown();

// Ends it without a line and waits for a time-out that is just running out: afterwards the service isn't touched any
// more. For the worker, when nothing can schedule another.
void StopTimedShutdown();
