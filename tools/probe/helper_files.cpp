#include "tools/probe/helper_files.h"

#include <chrono>
#include <thread>

#include "support/temp_folder.h"
#include "tools/probe/known_folders.h"

namespace fs = std::filesystem;

namespace {

// The helper opens its files for itself alone, for the moment of a write.
constexpr int kTries = 50;
constexpr std::chrono::milliseconds kPause{20};

bool ReadWhole(const fs::path& file, std::string& bytes) {
    for (int i = 0; i < kTries; ++i) {
        if (i > 0) std::this_thread::sleep_for(kPause);
        // In one go, because the helper can't write meanwhile.
        if (support::TryReadAll(file, bytes)) return true;
    }
    return false;
}

std::optional<fs::path> Below(const std::optional<fs::path>& folder, const char* name) {
    return folder ? std::optional(*folder / "Tollmere Games" / "Launcher" / name) : std::nullopt;
}

ExitStatus Read(const std::optional<fs::path>& file, std::string& bytes, std::string& problem) {
    if (!file) {
        problem = "the system doesn't tell where the helper's files are";
        return ExitStatus::NothingThere;
    }
    std::error_code error;
    if (fs::status(*file, error).type() == fs::file_type::not_found) {
        problem = "there is no " + support::ToUtf8(*file);
        return ExitStatus::NothingThere;
    }
    if (ReadWhole(*file, bytes)) return ExitStatus::Done;
    problem = "another program holds this file, or you may not read it: " + support::ToUtf8(*file);
    return ExitStatus::Unreadable;
}

}  // namespace

std::optional<fs::path> LogFile() {
    return Below(ProgramDataFolder(), "tollmere_steam_helper.log");
}

fs::path OldLogFile(const fs::path& log) {
    return log.parent_path() / "tollmere_steam_helper.old.txt";
}

ExitStatus ReadLog(std::string& bytes, std::string& problem) {
    const std::optional<fs::path> log = LogFile();
    std::string latest;
    const ExitStatus status = Read(log, latest, problem);
    if (status != ExitStatus::Done) return status;
    // The first line of a run may be the last of the log before. Nobody holds that one, and as a rule it isn't there.
    bytes = support::ReadAll(OldLogFile(*log)) + latest;
    return status;
}

ExitStatus ReadEventStore(std::string& bytes, std::string& problem) {
    return Read(Below(LocalDataFolder(), "steam_events.json"), bytes, problem);
}
