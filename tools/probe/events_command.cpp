#include "tools/probe/events_command.h"

#include "tools/probe/event_words.h"
#include "tools/probe/helper_files.h"
#include "tools/probe/report.h"

ExitStatus ShowEvents() {
    std::string store;
    const ExitStatus status = ReadEventStore(store);
    if (status != ExitStatus::Done) return status;
    const auto lines = EventsInWords(store);
    if (!lines) {
        ReportError("the event store is empty, cut or damaged; the next helper that saves events replaces it");
        return ExitStatus::Unreadable;
    }
    for (const std::string& line : *lines) ReportLine(line);
    return ExitStatus::Done;
}
