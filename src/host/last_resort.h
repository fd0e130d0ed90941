#pragma once

// Sees to it that an exception that nobody catches, in practice out of memory, ends the process at once: exit code 3,
// the log's waiting lines and one with the reason as far as they can be written without memory, and no message box of
// the C++ runtime. To be called before anything else. Functions that the system calls are `noexcept` for its sake.
void EndOnUncaughtException();
