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

TEST(ModuleContract, APathThatDoesNotFitIsCut) {
    WCHAR path[6] = {0, 0, 0, 0, 0, 'x'};
    EXPECT_EQ(GetModuleFileNameW(GetModuleHandleW(nullptr), path, 5), 5u);
    EXPECT_EQ(path[5], 'x');
}

}  // namespace
