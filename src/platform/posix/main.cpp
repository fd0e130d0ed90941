// The process's entry on anything but Windows: what the system does there before it calls wWinMain.

#include <pthread.h>
#include <signal.h>

#include <fstream>
#include <optional>
#include <string>
#include <thread>

#include "platform/posix/allocation_faults.h"
#include "platform/posix/environment.h"
#include "platform/posix/layer_clock.h"
#include "platform/posix/message_windows.h"
#include "platform/posix/testing/faults.h"
#include "platform/posix/windows_calls.h"

namespace {

// To be called before there is any other thread: all of them inherit the mask.
sigset_t BlockEndingSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

// Who asks a Windows program to end posts WM_CLOSE to its windows.
void TurnSignalsIntoClose(const sigset_t& signals) {
    std::thread([signals] {
        for (int signal = 0; sigwait(&signals, &signal) == 0;) posix_layer::PostCloseToAllWindows();
    }).detach();
}

// The command line behind the program's own name.
LPWSTR Parameters() {
    LPWSTR at = GetCommandLineW();
    bool quoted = false;
    for (; *at != 0 && (quoted || (*at != u' ' && *at != u'\t')); ++at) quoted = (*at == u'"') != quoted;
    while (*at == u' ' || *at == u'\t') ++at;
    return at;
}

void ReportToTests() {
    const std::optional<std::string> path = posix_layer::GetVariable("TOLLMERE_TEST_REPORT");
    if (!path) return;
    std::ofstream(*path) << platform_testing::PendingFaultCount() << ' ' << platform_testing::OpenHandleCount() << ' '
                         << platform_testing::AllocationCount() << '\n';
}

}  // namespace

int main() {
    const sigset_t signals = BlockEndingSignals();
    signal(SIGPIPE, SIG_IGN);
    TurnSignalsIntoClose(signals);
    posix_layer::WatchClockFifo();
    const auto instance = reinterpret_cast<HINSTANCE>(GetModuleHandleW(nullptr));
    const LPWSTR parameters = Parameters();
    posix_layer::StartCountingAllocations();
    const int code = wWinMain(instance, nullptr, parameters, 0);
    posix_layer::StopCountingAllocations();
    ReportToTests();
    return code;
}
