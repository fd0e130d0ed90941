#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "diagnostics/text.h"
#include "tests/support/limits.h"
#include "tests/support/temp_folder.h"

namespace {

using test_support::FromUtf8;
using test_support::ToUtf8;

std::filesystem::path OwnFolder() {
    WCHAR path[kPathCapacity] = {};
    GetModuleFileNameW(GetModuleHandleW(nullptr), path, kPathCapacity);
    return FromUtf8(WideToUtf8(path)).parent_path();
}

class ProcessContract : public testing::Test {
  protected:
    ProcessContract() { SetEnvironmentVariableA("CONTRACT_REPORT", ToUtf8(Report()).c_str()); }
    ~ProcessContract() override { SetEnvironmentVariableA("CONTRACT_REPORT", nullptr); }

    std::filesystem::path Report() const { return folder.Path() / "report.txt"; }

    // 0 or the error. `directory` null: ours.
    DWORD Start(const std::filesystem::path& file, const char* commandLine, const std::filesystem::path* directory) {
        const WideString application = Utf8ToWide(ToUtf8(file).c_str());
        WideString line = Utf8ToWide(commandLine);
        const WideString wideDirectory = directory == nullptr ? WideString() : Utf8ToWide(ToUtf8(*directory).c_str());
        STARTUPINFOW startup = {};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION process = {};
        SetLastError(ERROR_SUCCESS);
        const BOOL started = CreateProcessW(application.c_str(), line.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                            directory == nullptr ? nullptr : wideDirectory.c_str(), &startup, &process);
        if (!started) return GetLastError();
        EXPECT_EQ(started, TRUE) << "the program compares with 1";
        EXPECT_NE(process.dwProcessId, 0u);
        EXPECT_TRUE(CloseHandle(process.hThread));
        EXPECT_TRUE(CloseHandle(process.hProcess));
        return ERROR_SUCCESS;
    }

    std::string TakeReport() const {
        // On Windows a file that has just got its name may be held by the renaming for another moment.
        std::string text;
        EXPECT_TRUE(test_support::WaitUntil([&] { return !(text = test_support::ReadAll(Report())).empty(); }));
        std::filesystem::remove(Report());
        return text;
    }

    const test_support::TempFolder folder;
    const std::filesystem::path child = OwnFolder() / CONTRACT_CHILD;
};

TEST_F(ProcessContract, TheChildGetsArgumentsDirectoryAndEnvironment) {
    const std::filesystem::path directory = folder.Path() / FromUtf8("My Games \xC3\xBC");
    std::filesystem::create_directory(directory);
    // There is no program's name in front: the first token is the first entry.
    ASSERT_EQ(Start(child, "first -x \"a b\" c\\\"d \xD0\x98", &directory), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(TakeReport(), "argument first\nargument -x\nargument a b\nargument c\"d\nargument \xD0\x98\ndirectory " +
                                ToUtf8(directory) + "\n");

    ASSERT_EQ(Start(child, "again", nullptr), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(TakeReport(), "argument again\ndirectory " + ToUtf8(std::filesystem::current_path()) + "\n");
}

TEST_F(ProcessContract, WithAnEmptyLineTheNameStandsInItsPlace) {
    ASSERT_EQ(Start(child, "", &folder.Path()), DWORD{ERROR_SUCCESS});
    EXPECT_THAT(TakeReport(), testing::StartsWith("argument " + ToUtf8(child)));
}

TEST_F(ProcessContract, WhatIsMissingIsTold) {
    const std::filesystem::path missing = folder.Path() / "missing";
    EXPECT_EQ(Start(missing, "x", &folder.Path()), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(Start(missing / "game.exe", "x", &folder.Path()), DWORD{ERROR_PATH_NOT_FOUND});
    EXPECT_EQ(Start(child, "x", &missing), DWORD{ERROR_DIRECTORY});
    EXPECT_NE(Start("", "x", &folder.Path()), DWORD{ERROR_SUCCESS});
}

TEST(ProbeContract, TheProcessListNamesUsAndOurParent) {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    ASSERT_NE(snapshot, INVALID_HANDLE_VALUE);
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof entry;
    int found = 0;
    for (BOOL more = Process32FirstW(snapshot, &entry); more; more = Process32NextW(snapshot, &entry)) {
        if (entry.th32ProcessID != GetCurrentProcessId()) continue;
        ++found;
        EXPECT_NE(entry.th32ParentProcessID, entry.th32ProcessID);
    }
    EXPECT_EQ(GetLastError(), DWORD{ERROR_NO_MORE_FILES});
    EXPECT_EQ(found, 1);
    EXPECT_TRUE(CloseHandle(snapshot));
}

TEST(ProbeContract, AProcessTellsItsExecutable) {
    const HANDLE process =
        OpenProcess(SYNCHRONIZE | PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, GetCurrentProcessId());
    ASSERT_NE(process, nullptr);
    HMODULE module = nullptr;
    DWORD needed = 0;
    ASSERT_TRUE(K32EnumProcessModules(process, &module, sizeof module, &needed));
    EXPECT_GE(needed, sizeof module);
    WCHAR path[kPathCapacity] = {}, own[kPathCapacity] = {};
    EXPECT_EQ(K32GetModuleFileNameExW(process, module, path, kPathCapacity),
              GetModuleFileNameW(nullptr, own, kPathCapacity));
    EXPECT_EQ(WideToUtf8(path), WideToUtf8(own));
    EXPECT_TRUE(CloseHandle(process));

    for (const DWORD nobody : {DWORD{0}, DWORD{0x7FFFFFF0}}) {
        EXPECT_EQ(OpenProcess(SYNCHRONIZE, FALSE, nobody), nullptr);
        EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
    }
}

TEST(ModuleContract, WhatIsNotThereIsTold) {
    EXPECT_EQ(LoadLibraryExW(WIDE_TEXT("no/such/module.dll"), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_MOD_NOT_FOUND});

    WCHAR path[5] = {};
    EXPECT_EQ(GetModuleFileNameW(nullptr, path, 5), 5u) << "cut, and the buffer full";
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
}

TEST(EnvironmentContract, SizesAndMissingVariables) {
    char value[8] = {};
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(GetEnvironmentVariableA("TOLLMERE_NOT_SET", value, sizeof value), 0u);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_ENVVAR_NOT_FOUND});

    ASSERT_TRUE(SetEnvironmentVariableA("TOLLMERE_CONTRACT", "1234567"));
    EXPECT_EQ(GetEnvironmentVariableA("TOLLMERE_CONTRACT", value, 7), 8u) << "the size that it needs";
    EXPECT_EQ(GetEnvironmentVariableA("TOLLMERE_CONTRACT", value, 8), 7u);
    EXPECT_STREQ(value, "1234567");
    WCHAR wide[8] = {};
    EXPECT_EQ(GetEnvironmentVariableW(WIDE_TEXT("TOLLMERE_CONTRACT"), wide, 8), 7u);
    EXPECT_EQ(WideToUtf8(wide), "1234567");
    ASSERT_TRUE(SetEnvironmentVariableA("TOLLMERE_CONTRACT", nullptr));
    EXPECT_EQ(GetEnvironmentVariableA("TOLLMERE_CONTRACT", value, 8), 0u);
}

TEST(EnvironmentContract, TheCurrentDirectoryIsChangedAndRestored) {
    WCHAR before[kPathCapacity] = {}, now[kPathCapacity] = {};
    const DWORD length = GetCurrentDirectoryW(kPathCapacity, before);
    ASSERT_GT(length, 0u);
    EXPECT_EQ(GetCurrentDirectoryW(1, now), length + 1);
    const test_support::TempFolder folder;
    ASSERT_TRUE(SetCurrentDirectoryW(Utf8ToWide(ToUtf8(folder.Path()).c_str()).c_str()));
    GetCurrentDirectoryW(kPathCapacity, now);
    EXPECT_EQ(WideToUtf8(now), ToUtf8(folder.Path()));
    EXPECT_FALSE(SetCurrentDirectoryW(WIDE_TEXT("missing")));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_TRUE(SetCurrentDirectoryW(before));
}

}  // namespace
