#pragma once

// The last error is a value to be consumed: whoever reports it clears it, so that each failure is told once. It is one
// value for each thread.

#include "platform/windows_api.h"

// Reads and clears the calling thread's last error. If there was one, logs `message` (a line of its own; null for none)
// and a line with the code and the system's text for it, which is in the system's code page and not converted. With
// no last error nothing is logged. The result is the code, 0 for none.
//
// Call it directly after the failed call: anything between the two may change the last error.
DWORD ReportLastError(const char* message);

// Puts the calling thread's last error back at its end, so that what happens in between goes unnoticed by the caller.
class KeptLastError {
  public:
    KeptLastError() : m_Code(GetLastError()) {}
    ~KeptLastError() { SetLastError(m_Code); }
    KeptLastError(const KeptLastError&) = delete;
    KeptLastError& operator=(const KeptLastError&) = delete;

    // The caller finds 0.
    void Clear() { m_Code = ERROR_SUCCESS; }

  private:
    DWORD m_Code;
};
