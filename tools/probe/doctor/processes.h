#pragma once

// Other processes, as far as the system lets one see them. Free-threaded.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// To this process. Whose rights can't be asked for is another user's.
enum class Relation { Equal, OtherRights, OtherUser };

struct ProcessLook {
    std::uint32_t m_Id = 0;
    std::string m_Name;  // of its program's file, in lower case and without ".exe"; empty if it can't be told
    Relation m_Relation = Relation::OtherUser;
};

// Nothing if there is no such process.
std::optional<ProcessLook> LookAtProcess(std::uint32_t id);

// The process that is Steam, by what Steam itself leaves behind for its library. It may have ended since, and its id
// may be another process's. Nothing if Steam hasn't run for this user.
std::optional<std::uint32_t> SteamProcessId();

// The helpers that can be told. Windows: of all users, with a helper's name or window. Elsewhere: who has the pipe.
std::vector<ProcessLook> FindHelpers(const std::string& pipe);

bool IsHelperName(const std::string& name);

// "process 4242 (name) of this user".
std::string Describe(const ProcessLook& process);
