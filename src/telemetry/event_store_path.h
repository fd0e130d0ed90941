#pragma once

// Where the store file is. Nothing is logged.

#include "diagnostics/text.h"
#include "telemetry/telemetry.h"

// The full path of the store file; its folders are made if they are missing. False, with `path` empty, if telemetry
// isn't published or the platform knows no such folder.
bool GetEventStorePath(WideString& path) REQUIRES(g_TelemetryLock);

// The folder below that of the user, and below that of all users. On false `path` is empty.
bool GetUserStoreFolder(WideString& path);
bool GetCommonStoreFolder(WideString& path);

// Whether there is something at the path, and it is no folder.
bool IsFile(const WideString& path);
