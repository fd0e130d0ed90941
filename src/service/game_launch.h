#pragma once

// The second half of a launch request. This process starts the game, not the launcher: the game becomes the child of
// the process that is attached to Steam, with its environment.

#include <string>

#include "diagnostics/text.h"

// The game's arguments: those that this process was started with, in their own case, those with a blank in double
// quotes, and then what the launcher asked for. Nothing is escaped: a quote inside an argument is passed on as it is,
// and an empty argument is lost. `ownCommandLine` is this process's, its own path first.
WideString BuildLaunchArguments(const WCHAR* ownCommandLine, const WideString& requested);

// Starts the game; all three texts are UTF-8. True with its process id. Logs what it starts and how that went. The
// child isn't watched: it may outlive this process. Wait thread.
bool StartGame(const std::string& gameExe, const std::string& workingDirectory, const std::string& commandLine,
               DWORD& processId);
