#pragma once

enum class ExitStatus {
    Done = 0,
    Failure = 1,   // the helper answered with `failure`
    Usage = 2,     // the command line makes no sense
    NoPipe = 3,    // nobody served the pipe in time
    NoAnswer = 4,  // the connection was lost, or no answer came in time
};
