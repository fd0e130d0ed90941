// What Windows reads from the program's file.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tollmere_version.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/windows_api.h"
#include "tests/e2e/machine.h"

namespace e2e {

namespace {

// A text of a program's version resource; nothing if there is none.
std::wstring VersionText(const char* program, const std::wstring& name) {
    const std::filesystem::path path = BinFolder() / ProgramFile(program);
    std::string block(GetFileVersionInfoSizeW(path.c_str(), nullptr), '\0');
    WCHAR* text = nullptr;
    UINT size = 0;
    if (!GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(block.size()), block.data()) ||
        !VerQueryValueW(block.data(), (L"\\StringFileInfo\\040904B0\\" + name).c_str(), reinterpret_cast<void**>(&text),
                        &size)) {
        return {};
    }
    return text;
}

class Executable : public testing::Test {
  protected:
    ~Executable() override { FreeLibrary(m_Module); }

    // What stands at an address of the program, counted from its begin.
    template <typename T>
    const T* At(DWORD address) const {
        // The two low bits say how it was loaded.
        return reinterpret_cast<const T*>((reinterpret_cast<std::uintptr_t>(m_Module) & ~std::uintptr_t{3}) + address);
    }
    // Nothing if there is none.
    std::string Resource(const WCHAR* name, const WCHAR* type) const {
        const HRSRC found = FindResourceW(m_Module, name, type);
        if (found == nullptr) return {};
        return {static_cast<const char*>(LockResource(LoadResource(m_Module, found))), SizeofResource(m_Module, found)};
    }

    const HMODULE m_Module = LoadLibraryExW((BinFolder() / ProgramFile("tollmere_steam_helper")).c_str(), nullptr,
                                            LOAD_LIBRARY_AS_IMAGE_RESOURCE);
};

TEST_F(Executable, IsAHardenedGuiProgramThatNeedsNothingButTheSystem) {
    ASSERT_NE(m_Module, nullptr);
    const auto& headers = *At<IMAGE_NT_HEADERS64>(static_cast<DWORD>(At<IMAGE_DOS_HEADER>(0)->e_lfanew));
    EXPECT_EQ(headers.FileHeader.Machine, IMAGE_FILE_MACHINE_AMD64);
    const IMAGE_OPTIONAL_HEADER64& optional = headers.OptionalHeader;
    EXPECT_EQ(optional.Subsystem, IMAGE_SUBSYSTEM_WINDOWS_GUI);
    constexpr WORD kHardening = IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE | IMAGE_DLLCHARACTERISTICS_NX_COMPAT |
                                IMAGE_DLLCHARACTERISTICS_HIGH_ENTROPY_VA;
    EXPECT_EQ(optional.DllCharacteristics & kHardening, kHardening);
    EXPECT_GT(optional.DataDirectory[IMAGE_DIRECTORY_ENTRY_BASERELOC].Size, 0u) << "it can't be moved";

    std::vector<std::string> imported;
    const auto* import =
        At<IMAGE_IMPORT_DESCRIPTOR>(optional.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress);
    for (; import->Name != 0; ++import) imported.emplace_back(_strlwr(std::string(At<char>(import->Name)).data()));
    EXPECT_THAT(imported, testing::IsSubsetOf({"advapi32.dll", "kernel32.dll", "msvcrt.dll", "ole32.dll", "shell32.dll",
                                               "shlwapi.dll", "user32.dll", "winmm.dll"}));
    EXPECT_THAT(imported, testing::Contains("kernel32.dll"));
}

TEST_F(Executable, CarriesItsManifestAndItsIconInEachSize) {
    const std::string manifest = Resource(CREATEPROCESS_MANIFEST_RESOURCE_ID, RT_MANIFEST);
    for (const char* const text :
         {"<requestedExecutionLevel level=\"asInvoker\" uiAccess=\"false\"/>", ">true/PM</dpiAware>",
          "{e2011457-1546-43c5-a5fe-008deee3d3f0}", "{35138b9a-5d96-4fbd-8e2d-a2440225f93a}",
          "{4a2f28e3-53b9-4441-ba9c-d69d4a4a6e38}", "{1f676c76-80e1-4239-95bb-83d0f6d0da78}",
          "{8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a}"}) {
        EXPECT_THAT(manifest, testing::HasSubstr(text));
    }

    // A header of six bytes, then 14 for each picture: the width first (0 means 256), its resource's number last.
    const std::string group = Resource(L"IDI_LAUNCHER_ICON", RT_GROUP_ICON);
    std::vector<int> widths;
    for (std::size_t entry = 6; entry + 14 <= group.size(); entry += 14) {
        widths.push_back(static_cast<unsigned char>(group[entry]));
        WORD number = 0;
        std::memcpy(&number, group.data() + entry + 12, sizeof number);
        EXPECT_NE(Resource(MAKEINTRESOURCEW(number), RT_ICON), "");
    }
    EXPECT_THAT(widths, testing::UnorderedElementsAre(16, 32, 48, 0));
}

TEST(Version, OfEachProgramIsThatOfTheBuildWithItsCommit) {
    const std::wstring version = L"" TOLLMERE_VERSION;
    for (const char* const program : {"tollmere_steam_helper", "probe"}) {
        EXPECT_EQ(VersionText(program, L"ProductVersion"), version) << program;
        EXPECT_EQ(VersionText(program, L"FileVersion"), version.substr(0, version.find(L'+'))) << program;
    }
}

}  // namespace

}  // namespace e2e
