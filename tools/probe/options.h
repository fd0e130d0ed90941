#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

// One thing to write to the pipe, and the answers to wait for.
struct Command {
    // What the verbose mode says is written: the body of the frame, or a description of raw bytes.
    std::string m_Text;
    std::string m_Bytes;
    unsigned m_Answers = 1;
    // Only answers to m_RequestId count; of raw bytes the ids aren't known, so that any answer does.
    bool m_IsRaw = false;
    std::uint64_t m_RequestId = 0;
};

struct Options {
    std::string m_Pipe = "TollmereSteamHelper";
    std::chrono::milliseconds m_Timeout{5000};
    bool m_Json = false;
    bool m_Verbose = false;
    bool m_Help = false;  // nothing else counts then
    std::vector<Command> m_Commands;
};

// Reads `arguments`, the program's name among them as the first. On a false `error` says in one line what is wrong.
bool ParseOptions(const std::vector<std::string>& arguments, Options& options, std::string& error);
