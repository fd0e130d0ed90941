#include <initializer_list>
#include <string>

#include "support/system.h"
#include "tools/probe/known_folders.h"

namespace fs = std::filesystem;

// A variable that is empty counts as none, as for the helper.
static std::optional<std::string> FirstVariable(std::initializer_list<const char*> names) {
    for (const char* const name : names) {
        std::optional<std::string> value = support::Variable(name);
        if (value && !value->empty()) return value;
    }
    return std::nullopt;
}

static std::optional<fs::path> Folder(std::initializer_list<const char*> names, const char* belowHome) {
    if (const auto folder = FirstVariable(names)) return fs::path(*folder);
    const auto home = FirstVariable({"HOME"});
    return home ? std::optional(fs::path(*home) / belowHome) : std::nullopt;
}

std::optional<fs::path> ProgramDataFolder() {
    return Folder({"TOLLMERE_PROGRAM_DATA", "XDG_STATE_HOME"}, ".local/state");
}

std::optional<fs::path> LocalDataFolder() {
    return Folder({"TOLLMERE_LOCAL_APP_DATA", "XDG_DATA_HOME"}, ".local/share");
}
