// Any command line, as UTF-16 with or without sense, through the splitting and the options.

#include "fuzz/input.h"
#include "host/options.h"
#include "service/game_launch.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const bool isText = input.Below(2) == 0;
    const std::string bytes = input.Rest();
    WideString commandLine;
    if (isText) {
        commandLine = Utf8ToWide(bytes.c_str());
    } else {
        for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
            const auto low = static_cast<unsigned char>(bytes[i]);
            const auto high = static_cast<unsigned char>(bytes[i + 1]);
            commandLine += static_cast<WCHAR>(high << 8 | low);
        }
    }
    for (GlobalConfig* const option : GlobalConfigRegistry()) option->m_WasSet = false;
    ProcessCommandLine(GlobalConfigRegistry(), commandLine.c_str());
    BuildLaunchArguments(commandLine.c_str(), commandLine);
    return 0;
}
