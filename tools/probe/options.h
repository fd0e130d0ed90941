#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
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

// What the run is about: the pipe and its commands, or one of the commands that need no pipe.
enum class Task { Converse, ShowLog, ShowEvents, Stop, Doctor };

struct Options {
    Task m_Task = Task::Converse;
    std::uint32_t m_Run = 0;        // of the log: the last is 1; 0 for the list of them all
    std::uint32_t m_ProcessId = 0;  // of the helper to stop; 0 if none is given
    bool m_Follow = false;          // the log, from its present end
    // What the doctor looks at; without a value the helper beside this program, and what the environment says.
    std::optional<std::string> m_Helper;
    std::optional<std::uint32_t> m_AppId;
    std::optional<std::string> m_Directory;
    bool m_Connect = false;  // the doctor may
    std::string m_Pipe = "TollmereSteamHelper";
    std::chrono::milliseconds m_Timeout{5000};
    bool m_HasTimeout = false;  // it was given
    bool m_Json = false;
    bool m_Verbose = false;
    bool m_Help = false;     // nothing else counts then
    bool m_Version = false;  // nor then
    std::vector<Command> m_Commands;
};

// Reads `arguments`, the program's name among them as the first. On a false `error` says in one line what is wrong.
bool ParseOptions(const std::vector<std::string>& arguments, Options& options, std::string& error);
