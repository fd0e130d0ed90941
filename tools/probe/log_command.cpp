#include "tools/probe/log_command.h"

#include <cinttypes>
#include <cstdio>

#include "tools/probe/helper_files.h"
#include "tools/probe/log_runs.h"
#include "tools/probe/report.h"
#include "tools/probe/verdict.h"

namespace {

constexpr char kNoBeginning[] = "(in a log that is gone)";

void List(const std::vector<LogRun>& runs) {
    ReportLine("run  process  begin                    end                      verdict");
    for (std::size_t i = 0; i < runs.size(); ++i) {
        const LogRun& run = runs[i];
        char front[96];
        std::snprintf(front, sizeof front, "%3zu  %7" PRIu64 "  %-23s  %-23s  ", runs.size() - i, run.m_ProcessId,
                      run.m_HasBeginning ? run.m_Begin.c_str() : kNoBeginning, run.m_End.c_str());
        ReportLine(front + VerdictOn(run.m_Texts));
    }
}

}  // namespace

ExitStatus ShowLog(const Options& options) {
    std::string log;
    const ExitStatus status = ReadLog(log);
    if (status != ExitStatus::Done) return status;
    const std::vector<LogRun> runs = SplitIntoRuns(log);
    if (runs.empty() || options.m_Run > runs.size()) {
        ReportError("the log has " + std::to_string(runs.size()) + " runs");
        return ExitStatus::NothingThere;
    }
    if (options.m_Run == 0) {
        List(runs);
    } else {
        for (const std::string& line : runs[runs.size() - options.m_Run].m_Lines) ReportLine(line);
    }
    return ExitStatus::Done;
}
