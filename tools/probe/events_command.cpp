#include "tools/probe/events_command.h"

#include "tools/probe/event_words.h"
#include "tools/probe/helper_files.h"
#include "tools/probe/report.h"

ExitStatus ShowEvents(const Options& options) {
    std::string store;
    std::string problem;
    const ExitStatus status = ReadEventStore(store, problem);
    if (status != ExitStatus::Done) {
        ReportError(problem);
        return status;
    }
    const auto lines = options.m_Json ? EventsAsJson(store) : EventsInWords(store);
    if (!lines) {
        ReportError("the event store is empty, cut or damaged; the next helper that saves events replaces it");
        return ExitStatus::Unreadable;
    }
    for (const std::string& line : *lines) options.m_Json ? ReportJson(line) : ReportLine(line);
    return ExitStatus::Done;
}
