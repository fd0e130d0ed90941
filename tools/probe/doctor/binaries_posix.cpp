#include <dlfcn.h>
#include <elf.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <memory>

#include "support/temp_folder.h"
#include "tools/probe/doctor/binaries.h"

namespace fs = std::filesystem;

namespace {

struct Unloader {
    void operator()(void* library) const { dlclose(library); }
};

template <typename T>
bool ReadAt(const std::string& bytes, std::uint64_t offset, T& value) {
    if (offset > bytes.size() || sizeof value > bytes.size() - offset) return false;
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return true;
}

// All that is to be mapped is there. The system takes a cut file as it is, and ends the process that looks behind the
// end.
bool IsWhole(const std::string& bytes) {
    Elf64_Ehdr header;
    if (!ReadAt(bytes, 0, header) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) return false;
    for (std::uint64_t i = 0; i < header.e_phnum; ++i) {
        Elf64_Phdr part;
        if (!ReadAt(bytes, header.e_phoff + i * sizeof part, part)) return false;
        if (part.p_offset > bytes.size() || part.p_filesz > bytes.size() - part.p_offset) return false;
    }
    return true;
}

}  // namespace

// The native build puts no version into its programs.
ProgramLook LookAtProgram(const fs::path& program) {
    const bool mayRun = access(program.c_str(), X_OK) == 0;
    return {mayRun ? "" : "you may not run " + program.string(), ""};
}

LibraryLook LookAtLibrary(const fs::path& library, const std::vector<std::string>& names) {
    if (!IsWhole(support::ReadAll(library))) return {"it is no library of this system, or is cut", {}};
    const std::unique_ptr<void, Unloader> loaded(dlopen(library.c_str(), RTLD_LAZY | RTLD_LOCAL));
    if (!loaded) return {dlerror(), {}};
    LibraryLook look;
    for (const std::string& name : names) {
        if (dlsym(loaded.get(), name.c_str()) == nullptr) look.m_Missing.push_back(name);
    }
    return look;
}

fs::path OwnFolder() {
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error).parent_path();
}

const char* HelperName() {
    return "tollmere_steam_helper";
}
