#include "telemetry/event_store_path.h"

#include "platform/owners.h"

static void MakeFolder(const WideString& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        CreateDirectoryW(path.c_str(), nullptr);
    }
}

static bool GetStoreFolder(const KNOWNFOLDERID& knownFolder, WideString& path) {
    path.clear();
    OwnedTaskText folder;
    if (SHGetKnownFolderPath(knownFolder, 0, nullptr, folder.Receive()) < S_OK) return false;
    path = folder.Get();
    for (const WCHAR* const name : {WIDE_TEXT("\\Tollmere Games"), WIDE_TEXT("\\Launcher")}) {
        path += name;
        MakeFolder(path);
    }
    return true;
}

bool GetUserStoreFolder(WideString& path) {
    return GetStoreFolder(FOLDERID_LocalAppData, path);
}

bool GetCommonStoreFolder(WideString& path) {
    return GetStoreFolder(FOLDERID_ProgramData, path);
}

bool GetEventStorePath(WideString& path) {
    path.clear();
    if (g_TelemetryHooks == nullptr || g_TelemetrySource == nullptr) return false;
    if (!(g_TelemetrySource->UseUserFolder() ? GetUserStoreFolder(path) : GetCommonStoreFolder(path))) return false;
    path += WIDE_TEXT("\\") + Utf8ToWide(g_TelemetrySource->GetFileName());
    return true;
}

bool IsFile(const WideString& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}
