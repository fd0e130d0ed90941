#include "tools/probe/stop_command.h"

#include "tools/probe/helper_process.h"
#include "tools/probe/report.h"

ExitStatus StopHelper(const Options& options) {
    if (options.m_ProcessId == 0 && !CanFindHelper()) {
        ReportError("which helper? On this system `stop` needs --pid");
        return ExitStatus::Usage;
    }
    const ExitStatus status = EndHelper(options.m_ProcessId, options.m_Timeout);
    if (status == ExitStatus::NothingThere) {
        ReportError(options.m_ProcessId == 0 ? "no helper runs"
                                             : "process " + std::to_string(options.m_ProcessId) + " is no helper");
    } else if (status == ExitStatus::NotAllowed) {
        ReportError("the helper is another user's, or runs with more rights");
    } else if (status == ExitStatus::StillRuns) {
        ReportError("the helper still runs after " + std::to_string(options.m_Timeout.count()) + " ms");
    }
    return status;
}
