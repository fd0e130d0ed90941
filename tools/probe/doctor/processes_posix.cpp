#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "support/system.h"
#include "tools/probe/doctor/pipe_owner_posix.h"
#include "tools/probe/doctor/processes.h"

namespace fs = std::filesystem;

std::optional<ProcessLook> LookAtProcess(std::uint32_t id) {
    const std::string folder = "/proc/" + std::to_string(id);
    struct stat status;
    if (stat(folder.c_str(), &status) != 0) return std::nullopt;
    std::error_code error;
    ProcessLook look{id, fs::read_symlink(folder + "/exe", error).filename().string(), Relation::OtherUser};
    if (status.st_uid == getuid()) look.m_Relation = Relation::Equal;
    return look;
}

std::optional<std::uint32_t> SteamProcessId() {
    std::ifstream file(support::Variable("HOME").value_or("") + "/.steam/steam.pid");
    std::uint32_t id = 0;
    return file >> id ? std::optional(id) : std::nullopt;
}

std::vector<ProcessLook> FindHelpers(const std::string& pipe) {
    const std::optional<ProcessLook> owner = LookAtProcess(PipeOwner(pipe));
    return owner && IsHelperName(owner->m_Name) ? std::vector{*owner} : std::vector<ProcessLook>();
}
