#include "bench/pipe/start_config.h"

#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace pipe_bench {

namespace {

std::filesystem::path FromUtf8(const std::string& text) {
    return {std::u8string(text.begin(), text.end())};
}

StartContender ToContender(const nlohmann::json& json) {
    StartContender contender{json.at("name"), json.at("pipe"), {}};
    test_support::ChildProcess::Start& start = contender.m_Start;
    auto command = json.at("command").get<std::vector<std::string>>();
    if (command.empty()) throw std::runtime_error(contender.m_Name + ": no command");
    start.m_Program = FromUtf8(command.front());
    start.m_Arguments.assign(command.begin() + 1, command.end());
    if (json.contains("environment")) {
        for (const auto& [name, value] : json["environment"].items()) start.m_Changes[name] = value.get<std::string>();
    }
    start.m_Directory =
        json.contains("directory") ? FromUtf8(json["directory"].get<std::string>()) : start.m_Program.parent_path();
    return contender;
}

}  // namespace

std::vector<StartContender> ReadStartConfig(const std::string& path) {
    std::ifstream file(FromUtf8(path));
    if (!file) throw std::runtime_error("can't be read: " + path);
    std::vector<StartContender> contenders;
    for (const nlohmann::json& json : nlohmann::json::parse(file)) contenders.push_back(ToContender(json));
    return contenders;
}

}  // namespace pipe_bench
