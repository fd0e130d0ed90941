// A game that writes down how it was started. README.md tells how to use it.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <thread>

#include "support/system.h"

namespace {

nlohmann::ordered_json Account(int argc, char** argv) {
    nlohmann::ordered_json account;
    account["command_line"] = support::CommandLine(argc, argv);
    account["arguments"] = support::Arguments(argc, argv);
    account["directory"] = support::CurrentDirectory();
    const std::optional<std::string> appId = support::Variable("SteamAppId");
    account["SteamAppId"] = appId ? nlohmann::ordered_json(*appId) : nlohmann::ordered_json(nullptr);
    account["process_id"] = support::ProcessId();
    account["parent_process_id"] = support::ParentProcessId();
    return account;
}

bool WriteAccount(const std::string& path, const nlohmann::ordered_json& account) {
    // What isn't UTF-8 is shown as U+FFFD: a record with a flaw tells more than none.
    const std::string text = account.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
    return support::ReplaceFile(path, text);
}

}  // namespace

int main(int argc, char** argv) {
    support::PrepareStandardStreams();
    const std::string path = support::Variable("SAMPLE_GAME_RECORD").value_or("");
    if (!path.empty() && !WriteAccount(path, Account(argc, argv))) {
        std::fprintf(stderr, "sample_game: cannot write %s\n", path.c_str());
        return 1;
    }
    const double seconds = std::atof(support::Variable("SAMPLE_GAME_SECONDS").value_or("0").c_str());
    if (seconds > 0) std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    return 0;
}
