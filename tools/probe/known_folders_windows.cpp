#include <windows.h>
// The order matters: the others need the types of windows.h.
#include <knownfolders.h>
#include <objbase.h>
#include <shlobj.h>

#include "tools/probe/known_folders.h"

namespace fs = std::filesystem;

static std::optional<fs::path> PathOf(const KNOWNFOLDERID& id) {
    wchar_t* text = nullptr;
    const HRESULT result = SHGetKnownFolderPath(id, 0, nullptr, &text);
    std::optional<fs::path> folder;
    if (result == S_OK) folder = text;
    CoTaskMemFree(text);  // also after a failure
    return folder;
}

std::optional<fs::path> ProgramDataFolder() {
    return PathOf(FOLDERID_ProgramData);
}

std::optional<fs::path> LocalDataFolder() {
    return PathOf(FOLDERID_LocalAppData);
}
