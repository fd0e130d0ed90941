#include <windows.h>

#include "tools/probe/doctor/pipe_look.h"
#include "tools/probe/doctor/windows_text.h"

PipeState LookAtPipe(const std::string& name) {
    // Asks for an instance that listens, and opens none. What answers late is busy.
    constexpr DWORD kShortest = 1;
    if (WaitNamedPipeW((L"\\\\.\\pipe\\" + ToWide(name)).c_str(), kShortest)) return PipeState::Waiting;
    return GetLastError() == ERROR_FILE_NOT_FOUND ? PipeState::None : PipeState::Busy;
}
