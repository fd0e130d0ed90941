#include <windows.h>

#include <algorithm>
#include <memory>

#include "support/temp_folder.h"
#include "tools/probe/doctor/binaries.h"
#include "tools/probe/doctor/pe_file.h"
#include "tools/probe/doctor/windows_text.h"

namespace fs = std::filesystem;

namespace {

// What is damaged fails with its code, and without a dialog of the system.
class NoErrorDialogs {
  public:
    NoErrorDialogs() { SetThreadErrorMode(SEM_FAILCRITICALERRORS, &m_Before); }
    ~NoErrorDialogs() { SetThreadErrorMode(m_Before, nullptr); }
    NoErrorDialogs(const NoErrorDialogs&) = delete;
    NoErrorDialogs& operator=(const NoErrorDialogs&) = delete;

  private:
    DWORD m_Before = 0;
};

// Maps the file as a start does, checks of the system and of virus scanners included, but runs none of it and loads
// nothing that it needs.
std::string WhyNotMapped(const fs::path& library) {
    const NoErrorDialogs scope;
    const HMODULE mapped = LoadLibraryExW(library.c_str(), nullptr, DONT_RESOLVE_DLL_REFERENCES);
    if (mapped == nullptr) return WindowsReason(GetLastError());
    FreeLibrary(mapped);
    return {};
}

// The names of sets of functions stand for no file that would have to be there.
bool IsFunctionSet(const std::wstring& library) {
    const auto begins = [&](const wchar_t* front) { return _wcsnicmp(library.c_str(), front, 4) == 0; };
    return begins(L"api-") || begins(L"ext-");
}

bool CanBeFound(const std::string& import, const fs::path& folder) {
    const std::wstring name = ToWide(import);
    std::error_code error;
    return IsFunctionSet(name) || fs::exists(folder / name, error) ||
           SearchPathW(nullptr, name.c_str(), nullptr, 0, nullptr, nullptr) != 0;
}

// With the commit that it was built from, if its properties name one.
std::string VersionOf(const fs::path& program) {
    DWORD ignored = 0;
    std::string block(GetFileVersionInfoSizeW(program.c_str(), &ignored), '\0');
    const wchar_t* version = nullptr;
    UINT length = 0;  // with its end
    if (block.empty() || !GetFileVersionInfoW(program.c_str(), 0, static_cast<DWORD>(block.size()), block.data()) ||
        !VerQueryValueW(block.data(), L"\\StringFileInfo\\040904B0\\ProductVersion",
                        reinterpret_cast<void**>(const_cast<wchar_t**>(&version)), &length) ||
        length == 0) {
        return {};
    }
    return support::ToUtf8(fs::path(std::wstring(version, length - 1)));
}

}  // namespace

ProgramLook LookAtProgram(const fs::path& program) {
    PeFile file;
    return {ReadPeFile(support::ReadAll(program), file), VersionOf(program)};
}

LibraryLook LookAtLibrary(const fs::path& library, const std::vector<std::string>& names) {
    LibraryLook look;
    PeFile file;
    const std::string damage = ReadPeFile(support::ReadAll(library), file);
    const std::string refusal = WhyNotMapped(library);
    if (!damage.empty() || !refusal.empty()) {
        look.m_Problem = damage + (damage.empty() || refusal.empty() ? "" : "; ") + refusal;
        return look;
    }
    for (const std::string& import : file.m_Imports) {
        if (CanBeFound(import, library.parent_path())) continue;
        look.m_Problem = "it needs " + import + ", which isn't there; " + WindowsReason(ERROR_MOD_NOT_FOUND);
    }
    for (const std::string& name : names) {
        if (std::find(file.m_Exports.begin(), file.m_Exports.end(), name) == file.m_Exports.end()) {
            look.m_Missing.push_back(name);
        }
    }
    return look;
}

fs::path OwnFolder() {
    wchar_t path[4096];
    GetModuleFileNameW(nullptr, path, static_cast<DWORD>(std::size(path)));
    return fs::path(path).parent_path();
}

const char* HelperName() {
    return "tollmere_steam_helper.exe";
}
