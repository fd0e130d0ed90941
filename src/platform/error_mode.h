#pragma once

#include "platform/windows_api.h"

// While it lives, what fails on the calling thread (a damaged DLL, an empty drive) fails with its code and without a
// dialog of the system, behind which the thread would wait until somebody clicks. The mode of the process, which
// children inherit, stays.
class NoErrorDialogs {
  public:
    NoErrorDialogs() { SetThreadErrorMode(SEM_FAILCRITICALERRORS, &m_Before); }
    ~NoErrorDialogs() { SetThreadErrorMode(m_Before, nullptr); }
    NoErrorDialogs(const NoErrorDialogs&) = delete;
    NoErrorDialogs& operator=(const NoErrorDialogs&) = delete;

  private:
    DWORD m_Before = 0;
};
