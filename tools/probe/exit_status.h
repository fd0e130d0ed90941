#pragma once

enum class ExitStatus {
    Done = 0,
    Failure = 1,       // the helper answered with `failure`, or the doctor has found something wrong
    Usage = 2,         // the command line makes no sense
    NoPipe = 3,        // nobody served the pipe in time
    NoAnswer = 4,      // the connection was lost, or no answer came in time
    Busy = 5,          // the pipe was there, but served another client or didn't listen until the time was over
    NothingThere = 6,  // no such log, run, event store or helper
    Unreadable = 7,    // a file is there, but can't be read or makes no sense
    NotAllowed = 8,    // the helper is another user's, or has more rights
    StillRuns = 9,     // it was asked to end, but hasn't in time
};
