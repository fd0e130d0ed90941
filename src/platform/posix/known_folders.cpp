#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

#include "platform/posix/allocation_faults.h"
#include "platform/posix/environment.h"
#include "platform/posix/fault_check.h"
#include "platform/posix/text_conversion.h"
#include "platform/posix/windows_calls.h"

using namespace posix_layer;

namespace {

constexpr HRESULT ToResult(DWORD code) {
    return static_cast<HRESULT>(0x80070000 | code);
}

bool IsSame(const KNOWNFOLDERID& a, const KNOWNFOLDERID& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// The first of the two variables that is set, else the folder below the user's own.
std::optional<std::string> Folder(const char* forTests, const char* common, const char* belowHome) {
    if (auto folder = FirstVariable({forTests, common})) return folder;
    const std::optional<std::string> home = FirstVariable({"HOME"});
    return home ? std::optional(*home + belowHome) : std::nullopt;
}

}  // namespace

HRESULT SHGetKnownFolderPath(const KNOWNFOLDERID& folder, DWORD, HANDLE, LPWSTR* path) {
    const SystemAllocations scope;
    *path = nullptr;
    if (const auto fault = TakeFault(__func__)) return ToResult(*fault);
    std::optional<std::string> found;
    if (IsSame(folder, FOLDERID_ProgramData)) {
        found = Folder("TOLLMERE_PROGRAM_DATA", "XDG_STATE_HOME", "/.local/state");
    } else if (IsSame(folder, FOLDERID_LocalAppData)) {
        found = Folder("TOLLMERE_LOCAL_APP_DATA", "XDG_DATA_HOME", "/.local/share");
    }
    if (!found) return ToResult(ERROR_FILE_NOT_FOUND);

    const std::u16string wide = ToWide(*found);
    *path = static_cast<LPWSTR>(std::malloc((wide.size() + 1) * sizeof(WCHAR)));
    if (*path == nullptr) return ToResult(ERROR_NOT_ENOUGH_MEMORY);
    std::copy_n(wide.c_str(), wide.size() + 1, *path);
    // Windows leaves this behind in a process that impersonates nobody.
    SetLastError(ERROR_NO_TOKEN);
    return S_OK;
}

void CoTaskMemFree(void* memory) {
    std::free(memory);
}
