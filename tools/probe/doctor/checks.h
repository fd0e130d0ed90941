#pragma once

// What the doctor looks at. Each changes nothing and starts nothing. Free-threaded.

#include <filesystem>

#include "tools/probe/doctor/check.h"
#include "tools/probe/options.h"

Check CheckProgram(const std::filesystem::path& helper);

// `needsSteam` becomes false if the library is the stand-in, which plays the Steam client itself.
Check CheckLibrary(const std::filesystem::path& helper, bool& needsSteam);
Check CheckSteam(bool needsSteam);

// Of the options, or else of this process's environment, where the helper takes them from.
Check CheckAppId(const Options& options);
Check CheckDirectory(const Options& options);

Check CheckLog();
Check CheckStore();
Check CheckLastRun();

// Connects only if the options say so; takes up to their time-out.
Check CheckPipe(const Options& options);
