#include "host/options.h"

#include <algorithm>
#include <cwctype>
#include <exception>
#include <string>

#include "diagnostics/log.h"
#include "platform/owners.h"

GlobalBool g_SteamTestTelemetry(WIDE_TEXT("-steamTestTelemetry"));
GlobalInt g_SteamAppID(WIDE_TEXT("-steamAppID"));
GlobalString g_SteamLocation(WIDE_TEXT("-steamLocation"));

static void LowerCase(WideString& text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](WCHAR unit) { return static_cast<WCHAR>(std::towlower(unit)); });
}

GlobalConfig::GlobalConfig(const WCHAR* name) : m_Name(name) {
    LowerCase(m_Name);
    GlobalConfigRegistry().push_back(this);
}

void GlobalConfig::ParseArguments(int argc, const WCHAR* const* argv) {
    for (int i = 0; i < argc; ++i) {
        WideString arg = argv[i];
        const std::size_t found = arg.find(m_Name);
        if (found == WideString::npos) continue;
        m_WasSet = true;

        std::size_t start = found + m_Name.size();
        if (start < arg.size()) {
            ++start;  // the one character behind the name: any character
        } else if (TakesValue() && i + 1 < argc && *argv[i + 1] != 0 && *argv[i + 1] != '-') {
            arg = argv[++i];
            start = 0;
        }
        const WideString value = arg.substr(start);
        Log(" %s=%s", WideToUtf8(m_Name.c_str()).c_str(), WideToUtf8(value.c_str()).c_str());
        SetValue(value);
    }
}

void GlobalInt::SetValue(const WideString& text) {
    try {
        m_Value = std::stoi(std::wstring(text.begin(), text.end()));
    } catch (const std::exception&) {
        m_WasSet = false;
        m_Value = 0;
    }
}

std::vector<GlobalConfig*>& GlobalConfigRegistry() {
    // Built on first use: the options are constructed in no certain order relative to other files.
    static std::vector<GlobalConfig*> registry;
    return registry;
}

void ProcessCommandLine(const std::vector<GlobalConfig*>& registry, const WCHAR* lpCmdLine) {
    if (lpCmdLine == nullptr) return;
    WideString commandLine = lpCmdLine;
    LowerCase(commandLine);

    int argc = 0;
    const OwnedLocal<LPWSTR> argv(CommandLineToArgvW(commandLine.c_str(), &argc));
    if (!argv) argc = 0;
    Log("Processing %d command line arguments", argc);
    for (GlobalConfig* const option : registry) option->ParseArguments(argc, argv.Get());
}
