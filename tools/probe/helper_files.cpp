#include "tools/probe/helper_files.h"

#include <chrono>
#include <fstream>
#include <iterator>
#include <thread>

#include "support/temp_folder.h"
#include "tools/probe/known_folders.h"
#include "tools/probe/report.h"

namespace fs = std::filesystem;

namespace {

// The helper opens its files for itself alone, for the moment of a write.
constexpr int kTries = 50;
constexpr std::chrono::milliseconds kPause{20};

// In one go, because the helper can't write meanwhile.
bool ReadWhole(const fs::path& file, std::string& bytes) {
    for (int i = 0; i < kTries; ++i) {
        if (i > 0) std::this_thread::sleep_for(kPause);
        std::ifstream stream(file, std::ios::binary);
        if (!stream) continue;
        bytes.assign(std::istreambuf_iterator<char>(stream), {});
        return true;
    }
    return false;
}

fs::path Below(const fs::path& folder, const char* name) {
    return folder / "Tollmere Games" / "Launcher" / name;
}

ExitStatus Read(const std::optional<fs::path>& folder, const char* name, std::string& bytes) {
    if (!folder) {
        ReportError("the system doesn't tell where the helper's files are");
        return ExitStatus::NothingThere;
    }
    const fs::path file = Below(*folder, name);
    std::error_code error;
    if (fs::status(file, error).type() == fs::file_type::not_found) {
        ReportError("there is no " + support::ToUtf8(file));
        return ExitStatus::NothingThere;
    }
    if (ReadWhole(file, bytes)) return ExitStatus::Done;
    ReportError("another program holds this file, or you may not read it: " + support::ToUtf8(file));
    return ExitStatus::Unreadable;
}

}  // namespace

ExitStatus ReadLog(std::string& bytes) {
    const std::optional<fs::path> folder = ProgramDataFolder();
    std::string latest;
    const ExitStatus status = Read(folder, "tollmere_steam_helper.log", latest);
    if (status != ExitStatus::Done) return status;
    // The first line of a run may be the last of the log before. Nobody holds that one, and as a rule it isn't there.
    bytes = support::ReadAll(Below(*folder, "tollmere_steam_helper.old.txt")) + latest;
    return status;
}

ExitStatus ReadEventStore(std::string& bytes) {
    return Read(LocalDataFolder(), "steam_events.json", bytes);
}
