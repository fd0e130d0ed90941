#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace pipe_bench {

struct NamedPipe {
    std::string m_Name;  // in the results
    std::string m_Pipe;
};

struct LoadOptions {
    // The first says what the others have to answer, to the byte. Those from m_Floors only have to answer as much.
    std::vector<NamedPipe> m_Contenders;
    std::vector<NamedPipe> m_Floors;
    unsigned m_Rounds = 100;
    unsigned m_WarmUpRounds = 2;  // of each kind, thrown away
    unsigned m_Requests = 100;    // at full speed, of each contender in each round
    unsigned m_Batches = 10;      // of each size, of each contender in each round
    std::chrono::seconds m_PacedTime{10};
    std::chrono::seconds m_Limit{300};  // for everything
    std::string m_Output;
};

// Reads `arguments`, the program's name among them as the first. Returns the status to exit with if that is all that
// the program has to do: it was asked for help, or the arguments make no sense, which has been said then.
std::optional<int> ParseLoadOptions(std::vector<std::string> arguments, LoadOptions& options);

}  // namespace pipe_bench
