#include "service/game_launch.h"

#include "diagnostics/log.h"
#include "platform/error_mode.h"
#include "platform/owners.h"

WideString BuildLaunchArguments(const WCHAR* ownCommandLine, const WideString& requested) {
    WideString arguments;
    int argc = 0;
    const OwnedLocal<LPWSTR> argv(CommandLineToArgvW(ownCommandLine, &argc));
    for (int i = 1; argv && i < argc; ++i) {
        const WideString entry = argv.Get()[i];
        const bool hasBlank = entry.find(WCHAR{' '}) != WideString::npos;
        if (hasBlank) arguments += WCHAR{'"'};
        arguments += entry;
        if (hasBlank) arguments += WCHAR{'"'};
        arguments += WCHAR{' '};
    }
    return arguments + requested;
}

// The platform writes into `arguments`.
static bool StartProcess(const WideString& file, WideString& arguments, const WideString& directory,
                         PROCESS_INFORMATION& process) {
    const NoErrorDialogs scope;
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    return CreateProcessW(file.c_str(), arguments.data(), nullptr, nullptr, FALSE, 0, nullptr, directory.c_str(),
                          &startup, &process) == TRUE;
}

bool StartGame(const std::string& gameExe, const std::string& workingDirectory, const std::string& commandLine,
               DWORD& processId) {
    const WideString wideExe = Utf8ToWide(gameExe.c_str());
    const WideString wideDirectory = Utf8ToWide(workingDirectory.c_str());
    const WideString wideCommandLine = Utf8ToWide(commandLine.c_str());
    Log("Game Exe: %s", gameExe.c_str());
    Log("Working Directory: %s", workingDirectory.c_str());
    Log("Command Line: %s", commandLine.c_str());
    Log("Original Command Line: %s", WideToUtf8(GetCommandLineW()).c_str());

    WideString arguments = BuildLaunchArguments(GetCommandLineW(), wideCommandLine);
    Log("Launch Args: %s", WideToUtf8(arguments.c_str()).c_str());

    PROCESS_INFORMATION process = {};
    if (!StartProcess(wideExe, arguments, wideDirectory, process)) {
        Log("Failed to create process");
        return false;
    }
    // Nobody waits for the game.
    const OwnedHandle thread(process.hThread);
    const OwnedHandle game(process.hProcess);
    processId = process.dwProcessId;
    Log("Process created successfully. Process ID: %d", static_cast<int>(processId));
    return true;
}
