#pragma once

#include <string>
#include <vector>

#include "tests/support/child_process.h"

namespace pipe_bench {

// A program that serves a pipe once it has started.
struct StartContender {
    std::string m_Name;  // in the results
    std::string m_Pipe;
    test_support::ChildProcess::Start m_Start;
};

// Reads
//     [{"name": "helper", "pipe": "TollmereSteamHelper", "command": ["PROGRAM", "ARGUMENT"],
//       "environment": {"SteamAppId": "480"}, "directory": "DIRECTORY"}]
// from the file `path`. The environment is what differs from the reader's own and may be left out, and so may the
// directory: it is the program's folder then. Throws std::runtime_error, or what nlohmann::json throws.
std::vector<StartContender> ReadStartConfig(const std::string& path);

}  // namespace pipe_bench
