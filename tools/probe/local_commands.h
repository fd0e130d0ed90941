#pragma once

#include <CLI/CLI.hpp>

#include "tools/probe/options.h"

// Adds the commands that need no pipe. `options` is set when one of them is parsed, and must live until then.
void AddLocalCommands(CLI::App& app, Options& options);
