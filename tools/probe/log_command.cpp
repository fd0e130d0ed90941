#include "tools/probe/log_command.h"

#include <cinttypes>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <thread>

#include "tools/probe/helper_files.h"
#include "tools/probe/log_follower.h"
#include "tools/probe/log_runs.h"
#include "tools/probe/report.h"
#include "tools/probe/verdict.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr char kNoBeginning[] = "(in a log that is gone)";

void PrintJson(const Json& json) {
    // The system's own texts are in its code page.
    ReportJson(json.dump(-1, ' ', false, Json::error_handler_t::replace));
}

Json ToJson(const LogRun& run, std::size_t number) {
    const RunVerdict verdict = JudgeRun(run.m_Texts);
    Json json = {{"run", number}, {"process_id", run.m_ProcessId}};
    if (run.m_HasBeginning) json["begin"] = run.m_Begin;
    json["end"] = run.m_End;
    json["verdict"] = verdict.m_Text;
    if (!verdict.m_Code.empty()) json["code"] = verdict.m_Code;
    return json;
}

void PrintRun(const LogRun& run, std::size_t number, bool asJson) {
    if (asJson) {
        PrintJson(ToJson(run, number));
        return;
    }
    char front[96];
    std::snprintf(front, sizeof front, "%3zu  %7" PRIu64 "  %-23s  %-23s  ", number, run.m_ProcessId,
                  run.m_HasBeginning ? run.m_Begin.c_str() : kNoBeginning, run.m_End.c_str());
    ReportLine(front + JudgeRun(run.m_Texts).m_Text);
}

void PrintLogLine(const std::string& line, bool asJson) {
    if (!asJson) {
        ReportLine(line);
        return;
    }
    const std::optional<LogLine> parsed = ParseLogLine(line);
    PrintJson(parsed ? Json{{"time", parsed->m_Time},
                            {"process_id", parsed->m_ProcessId},
                            {"thread", parsed->m_Thread},
                            {"text", parsed->m_Text}}
                     : Json{{"text", line}});
}

// Until somebody ends the program, or the time-out that was given is over.
ExitStatus Follow(const Options& options) {
    constexpr std::chrono::milliseconds kPause{200};
    const std::optional<std::filesystem::path> log = LogFile();
    if (!log) {
        ReportError("the system doesn't tell where the helper's files are");
        return ExitStatus::NothingThere;
    }
    LogFollower follower(*log, OldLogFile(*log));
    const auto end = std::chrono::steady_clock::now() + options.m_Timeout;
    for (;;) {
        const bool isLast = options.m_HasTimeout && std::chrono::steady_clock::now() >= end;
        for (const std::string& line : follower.NewLines()) PrintLogLine(line, options.m_Json);
        if (isLast) return ExitStatus::Done;
        std::this_thread::sleep_for(kPause);
    }
}

}  // namespace

ExitStatus ShowLog(const Options& options) {
    if (options.m_Follow) return Follow(options);
    std::string log;
    std::string problem;
    const ExitStatus status = ReadLog(log, problem);
    if (status != ExitStatus::Done) {
        ReportError(problem);
        return status;
    }
    const std::vector<LogRun> runs = SplitIntoRuns(log);
    if (runs.empty() || options.m_Run > runs.size()) {
        ReportError("the log has " + std::to_string(runs.size()) + " runs");
        return ExitStatus::NothingThere;
    }
    if (options.m_Run != 0) {
        for (const std::string& line : runs[runs.size() - options.m_Run].m_Lines) PrintLogLine(line, options.m_Json);
        return ExitStatus::Done;
    }
    if (!options.m_Json) ReportLine("run  process  begin                    end                      verdict");
    for (std::size_t i = 0; i < runs.size(); ++i) PrintRun(runs[i], runs.size() - i, options.m_Json);
    return ExitStatus::Done;
}
