#include "tools/probe/run.h"

#include <tollmere_version.h>

#include <cstdio>

#include "tools/probe/conversation.h"
#include "tools/probe/doctor/doctor_command.h"
#include "tools/probe/events_command.h"
#include "tools/probe/log_command.h"
#include "tools/probe/report.h"
#include "tools/probe/stop_command.h"
#include "tools/probe/usage.h"

ExitStatus RunProbe(const std::vector<std::string>& arguments) {
    Options options;
    std::string error;
    if (!ParseOptions(arguments, options, error)) {
        ReportError(error);
        ReportError("`probe --help` tells the rest");
        return ExitStatus::Usage;
    }
    if (options.m_Help) {
        std::fputs(kUsage, stdout);
        return ExitStatus::Done;
    }
    if (options.m_Version) {
        std::puts("probe " TOLLMERE_VERSION);
        return ExitStatus::Done;
    }
    switch (options.m_Task) {
        case Task::ShowLog:
            return ShowLog(options);
        case Task::ShowEvents:
            return ShowEvents(options);
        case Task::Stop:
            return StopHelper(options);
        case Task::Doctor:
            return RunDoctor(options);
        case Task::Converse:
            break;
    }
    return Converse(options);
}
