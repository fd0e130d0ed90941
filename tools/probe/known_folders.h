#pragma once

// Where the system has the folders that the helper's files are below. Nothing if the system doesn't tell.
// Free-threaded.

#include <filesystem>
#include <optional>

// Shared by all users: the log's.
std::optional<std::filesystem::path> ProgramDataFolder();
// The user's own: the event store's.
std::optional<std::filesystem::path> LocalDataFolder();
