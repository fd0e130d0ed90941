// What Windows reads from the program file without running it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "platform/windows_api.h"
#include "tests/e2e/machine.h"
#include "tests/support/temp_folder.h"

namespace e2e {

namespace {

class Executable : public testing::Test {
  protected:
    Executable() {
        const std::filesystem::path file = BinFolder() / ProgramFile("tollmere_steam_helper");
        m_Bytes = test_support::ReadAll(file);
        m_Module = LoadLibraryExW(file.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    }
    ~Executable() override { FreeLibrary(m_Module); }
    void SetUp() override {
        ASSERT_GT(m_Bytes.size(), std::size_t{4096});
        ASSERT_NE(m_Module, nullptr);
    }

    template <typename T>
    const T* At(std::size_t offset) const {
        return offset <= m_Bytes.size() - sizeof(T) ? reinterpret_cast<const T*>(m_Bytes.data() + offset) : nullptr;
    }
    const IMAGE_NT_HEADERS64& Headers() const {
        return *At<IMAGE_NT_HEADERS64>(static_cast<std::size_t>(At<IMAGE_DOS_HEADER>(0)->e_lfanew));
    }
    // Where in the file an address of the loaded program is.
    std::size_t Offset(DWORD address) const {
        const auto* section = reinterpret_cast<const IMAGE_SECTION_HEADER*>(&Headers() + 1);
        for (int i = 0; i < Headers().FileHeader.NumberOfSections; ++i, ++section) {
            const DWORD within = address - section->VirtualAddress;
            if (address >= section->VirtualAddress && within < section->SizeOfRawData) {
                return section->PointerToRawData + within;
            }
        }
        return m_Bytes.size();
    }
    std::set<std::string> ImportedDlls() const {
        const auto& directory = Headers().OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
        std::set<std::string> names;
        const auto* import = At<IMAGE_IMPORT_DESCRIPTOR>(Offset(directory.VirtualAddress));
        for (; import != nullptr && import->Name != 0; ++import) {
            std::string name = m_Bytes.c_str() + Offset(import->Name);
            std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
            names.insert(name);
        }
        return names;
    }
    // Nothing if there is none.
    std::string Resource(const WCHAR* name, const WCHAR* type) const {
        const HRSRC found = FindResourceW(m_Module, name, type);
        if (found == nullptr) return {};
        const void* const data = LockResource(LoadResource(m_Module, found));
        return {static_cast<const char*>(data), SizeofResource(m_Module, found)};
    }

  private:
    std::string m_Bytes;
    HMODULE m_Module = nullptr;
};

TEST_F(Executable, IsAHardenedGuiProgramFor64Bits) {
    const IMAGE_NT_HEADERS64& headers = Headers();
    ASSERT_EQ(headers.Signature, static_cast<DWORD>(IMAGE_NT_SIGNATURE));
    EXPECT_EQ(headers.FileHeader.Machine, IMAGE_FILE_MACHINE_AMD64);
    EXPECT_EQ(headers.OptionalHeader.Subsystem, IMAGE_SUBSYSTEM_WINDOWS_GUI);
    constexpr WORD kHardening = IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE | IMAGE_DLLCHARACTERISTICS_NX_COMPAT |
                                IMAGE_DLLCHARACTERISTICS_HIGH_ENTROPY_VA;
    EXPECT_EQ(headers.OptionalHeader.DllCharacteristics & kHardening, kHardening);
    // Without these it can't be moved, whatever the flags say.
    EXPECT_EQ(headers.FileHeader.Characteristics & IMAGE_FILE_RELOCS_STRIPPED, 0);
    EXPECT_GT(headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_BASERELOC].Size, 0u);
}

TEST_F(Executable, NeedsNothingButTheSystem) {
    const std::set<std::string> imported = ImportedDlls();
    EXPECT_THAT(imported, testing::Contains("kernel32.dll"));
    EXPECT_THAT(imported, testing::IsSubsetOf({"advapi32.dll", "kernel32.dll", "msvcrt.dll", "ole32.dll", "shell32.dll",
                                               "shlwapi.dll", "user32.dll", "winmm.dll"}));
}

TEST_F(Executable, CarriesItsManifest) {
    const std::string manifest = Resource(CREATEPROCESS_MANIFEST_RESOURCE_ID, RT_MANIFEST);
    for (const char* const text :
         {"<requestedExecutionLevel level=\"asInvoker\" uiAccess=\"false\"/>", ">true/PM</dpiAware>",
          "{e2011457-1546-43c5-a5fe-008deee3d3f0}", "{35138b9a-5d96-4fbd-8e2d-a2440225f93a}",
          "{4a2f28e3-53b9-4441-ba9c-d69d4a4a6e38}", "{1f676c76-80e1-4239-95bb-83d0f6d0da78}",
          "{8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a}"}) {
        EXPECT_THAT(manifest, testing::HasSubstr(text));
    }
}

TEST_F(Executable, CarriesItsIconInEachSize) {
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

TEST_F(Executable, CarriesTheVersionOfTheBuild) {
    std::string block = Resource(MAKEINTRESOURCEW(VS_VERSION_INFO), RT_VERSION);
    ASSERT_FALSE(block.empty());
    VS_FIXEDFILEINFO* fixed = nullptr;
    UINT size = 0;
    ASSERT_TRUE(VerQueryValueW(block.data(), L"\\", reinterpret_cast<void**>(&fixed), &size));
    const std::string number = std::to_string(HIWORD(fixed->dwFileVersionMS)) + "." +
                               std::to_string(LOWORD(fixed->dwFileVersionMS)) + "." +
                               std::to_string(HIWORD(fixed->dwFileVersionLS));
    EXPECT_EQ(number, TOLLMERE_VERSION);
    WCHAR* text = nullptr;
    ASSERT_TRUE(VerQueryValueW(block.data(), L"\\StringFileInfo\\040904B0\\ProductVersion",
                               reinterpret_cast<void**>(&text), &size));
    EXPECT_EQ(std::wstring(text), std::wstring(number.begin(), number.end()));
}

}  // namespace

}  // namespace e2e
