#include "service/game_launch.h"

#include "diagnostics/log.h"

WideString BuildLaunchArguments(const WCHAR* ownCommandLine, const WideString& requested) {
    WideString arguments;
    int argc = 0;
    LPWSTR* const argv = CommandLineToArgvW(ownCommandLine, &argc);
    for (int i = 1; argv != nullptr && i < argc; ++i) {
        const WideString entry = argv[i];
        const bool hasBlank = entry.find(WCHAR{' '}) != WideString::npos;
        if (hasBlank) arguments += WCHAR{'"'};
        arguments += entry;
        if (hasBlank) arguments += WCHAR{'"'};
        arguments += WCHAR{' '};
    }
    if (argv != nullptr) LocalFree(argv);
    return arguments + requested;
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

    // The platform writes into the text.
    WideString arguments = BuildLaunchArguments(GetCommandLineW(), wideCommandLine);
    Log("Launch Args: %s", WideToUtf8(arguments.c_str()).c_str());

    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    if (CreateProcessW(wideExe.c_str(), arguments.data(), nullptr, nullptr, FALSE, 0, nullptr, wideDirectory.c_str(),
                       &startup, &process) != TRUE) {
        Log("Failed to create process");
        return false;
    }
    // Nobody waits for the game.
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    processId = process.dwProcessId;
    Log("Process created successfully. Process ID: %d", static_cast<int>(processId));
    return true;
}
