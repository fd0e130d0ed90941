#include <windows.h>

#include <algorithm>
#include <thread>

#include "support/open_pipe.h"
#include "support/temp_folder.h"

namespace support {

bool OpenPipe(launcher::PipeClient& pipe, const std::string& name, launcher::Milliseconds limit) {
    constexpr launcher::Milliseconds kPause{2};
    const std::wstring path = L"\\\\.\\pipe\\" + FromUtf8(name).wstring();
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!pipe.TryOpen(name)) {
        const auto left = std::chrono::ceil<launcher::Milliseconds>(end - std::chrono::steady_clock::now()).count();
        if (left <= 0) return false;
        // It fails at once where there is no pipe.
        if (!WaitNamedPipeW(path.c_str(), static_cast<DWORD>(std::min<long long>(left, INFINITE - 1)))) {
            std::this_thread::sleep_for(kPause);
        }
    }
    return true;
}

}  // namespace support
