#include <gtest/gtest.h>

#include <cstring>

#include "diagnostics/text.h"
#include "tests/support/temp_folder.h"

namespace {

class FileContract : public testing::Test {
  protected:
    WideString Path(const char* name) const {
        return Utf8ToWide(test_support::ToUtf8(folder.Path() / test_support::FromUtf8(name)).c_str());
    }
    static HANDLE Open(const WideString& path, DWORD access, DWORD disposition, DWORD share = 0) {
        SetLastError(12345);
        return CreateFileW(path.c_str(), access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    }
    static void Append(const WideString& path, const std::string& text, DWORD lastError) {
        const HANDLE file = Open(path, FILE_APPEND_DATA, OPEN_ALWAYS);
        ASSERT_NE(file, INVALID_HANDLE_VALUE);
        EXPECT_EQ(GetLastError(), lastError);
        EXPECT_NE(SetFilePointer(file, 0, nullptr, FILE_END), DWORD{INVALID_SET_FILE_POINTER});
        DWORD written = 0;
        EXPECT_TRUE(WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr));
        EXPECT_EQ(written, text.size());
        EXPECT_TRUE(CloseHandle(file));
    }
    static std::string Read(const WideString& path) {
        const HANDLE file = Open(path, GENERIC_READ, OPEN_EXISTING, FILE_SHARE_READ);
        char bytes[100];
        DWORD count = 0;
        EXPECT_TRUE(ReadFile(file, bytes, sizeof bytes, &count, nullptr));
        LARGE_INTEGER size = {};
        EXPECT_TRUE(GetFileSizeEx(file, &size));
        EXPECT_EQ(size.QuadPart, count);
        EXPECT_TRUE(CloseHandle(file));
        return {bytes, count};
    }
    static DWORD ErrorOf(BOOL result) { return result ? DWORD{ERROR_SUCCESS} : GetLastError(); }

    const test_support::TempFolder folder;
};

TEST_F(FileContract, ALogGrowsAndIsRotated) {
    const WideString log = Path("my \xC3\xBC.log"), old = Path("old.txt");
    Append(log, "one", ERROR_SUCCESS);
    Append(log, "two", ERROR_ALREADY_EXISTS);
    EXPECT_EQ(Read(log), "onetwo");

    EXPECT_TRUE(MoveFileW(log.c_str(), old.c_str()));
    EXPECT_FALSE(PathFileExistsW(log.c_str()));
    Append(log, "three", ERROR_SUCCESS);
    EXPECT_EQ(ErrorOf(MoveFileW(log.c_str(), old.c_str())), DWORD{ERROR_ALREADY_EXISTS});
    EXPECT_EQ(Read(old), "onetwo") << "what was there is kept";
    EXPECT_TRUE(DeleteFileW(old.c_str()));
    EXPECT_TRUE(MoveFileW(log.c_str(), old.c_str()));
    EXPECT_EQ(Read(old), "three");
}

TEST_F(FileContract, CreateAlwaysStartsAnew) {
    const WideString store = Path("store.json");
    for (const char* const text : {"a longer text", "short"}) {
        const HANDLE file = Open(store, GENERIC_WRITE, CREATE_ALWAYS);
        ASSERT_NE(file, INVALID_HANDLE_VALUE);
        DWORD written = 0;
        EXPECT_TRUE(WriteFile(file, text, static_cast<DWORD>(std::strlen(text)), &written, nullptr));
        EXPECT_TRUE(CloseHandle(file));
        EXPECT_EQ(Read(store), text);
    }
}

TEST_F(FileContract, AFileThatIsNotSharedIsOpenOnce) {
    const WideString path = Path("log");
    Append(path, "x", ERROR_SUCCESS);
    const HANDLE file = Open(path, FILE_APPEND_DATA, OPEN_ALWAYS);
    for (const DWORD access : {DWORD{FILE_READ_DATA}, DWORD{FILE_APPEND_DATA}}) {
        EXPECT_EQ(Open(path, access, OPEN_EXISTING), INVALID_HANDLE_VALUE);
        EXPECT_EQ(GetLastError(), DWORD{ERROR_SHARING_VIOLATION});
    }
    EXPECT_EQ(ErrorOf(DeleteFileW(path.c_str())), DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_EQ(ErrorOf(MoveFileW(path.c_str(), Path("moved").c_str())), DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_TRUE(CloseHandle(file));

    const HANDLE first = Open(path, FILE_READ_DATA, OPEN_EXISTING, FILE_SHARE_READ);
    const HANDLE second = Open(path, FILE_READ_DATA, OPEN_EXISTING, FILE_SHARE_READ);
    EXPECT_NE(second, INVALID_HANDLE_VALUE) << "two that only read";
    EXPECT_TRUE(CloseHandle(first));
    EXPECT_TRUE(CloseHandle(second));
}

TEST_F(FileContract, WhatIsMissingIsTold) {
    const WideString missing = Path("missing"), below = Path("missing/file"), here = Path("here");
    Append(here, "x", ERROR_SUCCESS);
    EXPECT_EQ(Open(missing, FILE_READ_DATA, OPEN_EXISTING), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(Open(below, FILE_APPEND_DATA, OPEN_ALWAYS), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_PATH_NOT_FOUND});

    struct {
        const char* call;
        DWORD error;
        DWORD expected;
    } const rows[] = {
        {"DeleteFileW", ErrorOf(DeleteFileW(missing.c_str())), ERROR_FILE_NOT_FOUND},
        {"DeleteFileW below", ErrorOf(DeleteFileW(below.c_str())), ERROR_PATH_NOT_FOUND},
        {"MoveFileW", ErrorOf(MoveFileW(missing.c_str(), Path("to").c_str())), ERROR_FILE_NOT_FOUND},
        {"MoveFileW below", ErrorOf(MoveFileW(here.c_str(), below.c_str())), ERROR_PATH_NOT_FOUND},
        {"PathFileExistsW", ErrorOf(PathFileExistsW(missing.c_str())), ERROR_FILE_NOT_FOUND},
        {"CreateDirectoryW", ErrorOf(CreateDirectoryW(below.c_str(), nullptr)), ERROR_PATH_NOT_FOUND},
    };
    for (const auto& row : rows) EXPECT_EQ(row.error, row.expected) << row.call;
    EXPECT_EQ(GetFileAttributesW(missing.c_str()), DWORD{INVALID_FILE_ATTRIBUTES});
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
}

TEST_F(FileContract, FoldersAreMadeOnceAndAreNoFiles) {
    const WideString path = Path("folder");
    EXPECT_TRUE(CreateDirectoryW(path.c_str(), nullptr));
    EXPECT_EQ(ErrorOf(CreateDirectoryW(path.c_str(), nullptr)), DWORD{ERROR_ALREADY_EXISTS});
    EXPECT_TRUE(PathFileExistsW(path.c_str()));
    EXPECT_NE(GetFileAttributesW(path.c_str()) & FILE_ATTRIBUTE_DIRECTORY, 0u);
    EXPECT_EQ(Open(path, FILE_READ_DATA, OPEN_EXISTING), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(ErrorOf(DeleteFileW(path.c_str())), DWORD{ERROR_ACCESS_DENIED});
    // Both separators are good in a path that the program has put together.
    const WideString inside = path + WIDE_TEXT("\\file");
    Append(inside, "x", ERROR_SUCCESS);
    EXPECT_EQ(GetFileAttributesW((path + WIDE_TEXT("/file")).c_str()) & FILE_ATTRIBUTE_DIRECTORY, 0u);
}

TEST(KnownFolderContract, TheTwoFoldersHavePaths) {
    for (const KNOWNFOLDERID* const folder : {&FOLDERID_ProgramData, &FOLDERID_LocalAppData}) {
        LPWSTR path = nullptr;
        ASSERT_EQ(SHGetKnownFolderPath(*folder, 0, nullptr, &path), S_OK);
        EXPECT_NE(path[0], 0);
        EXPECT_NE(WideString(path).back(), WIDE_TEXT("\\")[0]);
        CoTaskMemFree(path);
    }
    LPWSTR path = nullptr;
    const KNOWNFOLDERID unknown = {};
    EXPECT_LT(SHGetKnownFolderPath(unknown, 0, nullptr, &path), 0);
    EXPECT_EQ(path, nullptr);
}

}  // namespace
