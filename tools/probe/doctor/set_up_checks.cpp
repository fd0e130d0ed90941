#include <cstdio>

#include "support/system.h"
#include "support/temp_folder.h"
#include "tools/probe/doctor/checks.h"

namespace fs = std::filesystem;

namespace {

constexpr std::uint32_t kLargestAppId = 2147483647;
constexpr std::size_t kTooLongText = 64;        // bytes, of SteamAppId
constexpr std::size_t kTooLongDirectory = 260;  // bytes

// As the helper reads it: the number that the text begins with, 0 without one.
std::uint32_t AppIdIn(const std::string& text) {
    unsigned value = 0;
    return text.size() < kTooLongText && std::sscanf(text.c_str(), "%u", &value) == 1 ? value : 0;
}

}  // namespace

Check CheckAppId(const Options& options) {
    const std::string name = "app-id";
    std::optional<std::string> text = support::Variable("SteamAppId");
    std::string source = " from SteamAppId in the environment";
    if (options.m_AppId) {
        text = std::to_string(*options.m_AppId);
        source = " from --app-id";
    }
    if (!text) return Failing(name, "no-app-id", "neither --app-id nor SteamAppId in the environment is given");
    const std::uint32_t appId = AppIdIn(*text);
    if (appId == 0 || appId > kLargestAppId) return Failing(name, "no-app-id", "\"" + *text + "\"" + source);
    return Healthy(name, std::to_string(appId) + source);
}

Check CheckDirectory(const Options& options) {
    const std::string name = "directory";
    std::string directory = support::Variable("SteamLocation").value_or("");
    std::string source = " from SteamLocation in the environment";
    if (options.m_Directory) {
        directory = *options.m_Directory;
        source = " from --dir";
    }
    if (directory.empty()) return Healthy(name, "none is given: the helper takes its launcher's folder");
    std::error_code error;
    if (directory.size() >= kTooLongDirectory) {
        return Failing(name, "game-directory-missing", "260 bytes or more, which the helper doesn't use," + source);
    }
    if (!fs::is_directory(support::FromUtf8(directory), error)) {
        return Failing(name, "game-directory-missing", directory + source);
    }
    return Healthy(name, directory + source);
}
