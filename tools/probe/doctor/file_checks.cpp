#include "support/temp_folder.h"
#include "tools/probe/doctor/checks.h"
#include "tools/probe/doctor/file_access.h"
#include "tools/probe/doctor/processes.h"
#include "tools/probe/event_words.h"
#include "tools/probe/failures.h"
#include "tools/probe/helper_files.h"
#include "tools/probe/log_runs.h"
#include "tools/probe/verdict.h"

namespace fs = std::filesystem;

Check CheckLog() {
    const std::string name = "log";
    const std::optional<fs::path> log = LogFile();
    const std::string problem = log ? WhyNotWritable(*log) : "the system doesn't tell where it is";
    const std::string place = log ? support::ToUtf8(*log) : "";
    if (problem.empty()) return Healthy(name, place);
    return Wrong(name, "The helper can't write its log.",
                 "Make the log's folder, which the launcher's installer does, let the user write there, and close what "
                 "holds the file. Nothing else is affected.",
                 place + ": " + problem);
}

Check CheckStore() {
    const std::string name = "store";
    std::string bytes;
    std::string problem;
    const ExitStatus status = ReadEventStore(bytes, problem);
    if (status == ExitStatus::NothingThere) return Healthy(name, "none yet: " + problem);
    if (status == ExitStatus::Done) {
        const auto lines = EventsInWords(bytes);
        if (lines) return Healthy(name, std::to_string(bytes.size()) + " bytes");
        problem = "it is empty, cut or damaged";
    }
    return Wrong(name, "The event store can't be read.",
                 "Close what holds the file. A damaged one may be deleted; the next helper that saves events replaces "
                 "it.",
                 problem);
}

Check CheckLastRun() {
    const std::string name = "last-run";
    std::string log;
    std::string problem;
    if (ReadLog(log, problem) != ExitStatus::Done) return Healthy(name, "not known: " + problem);
    const std::vector<LogRun> runs = SplitIntoRuns(log);
    if (runs.empty()) return Healthy(name, "not known: the log is empty");
    const LogRun& run = runs.back();
    const RunVerdict verdict = JudgeRun(run.m_Texts);
    const std::string detail = "process " + std::to_string(run.m_ProcessId) + ", " + run.m_End + ": " + verdict.m_Text;
    if (verdict.m_HasEnd) {
        return verdict.m_Code.empty() ? Healthy(name, detail) : Failing(name, verdict.m_Code, detail);
    }
    const std::optional<ProcessLook> process = LookAtProcess(static_cast<std::uint32_t>(run.m_ProcessId));
    if (process && (IsHelperName(process->m_Name) || process->m_Name.empty())) return Healthy(name, detail);
    return Failing(name, "ended-without-reason", detail);
}
