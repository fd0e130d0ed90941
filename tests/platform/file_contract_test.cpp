#include <gtest/gtest.h>

#include "diagnostics/text.h"
#include "platform/owners.h"
#include "support/temp_folder.h"

namespace {

class FileContract : public testing::Test {
  protected:
    WideString Path(const char* name) const {
        return Utf8ToWide(support::ToUtf8(folder.Path() / support::FromUtf8(name)).c_str());
    }
    static OwnedFile Open(const WideString& path, DWORD access, DWORD disposition) {
        SetLastError(12345);
        return OwnedFile(CreateFileW(path.c_str(), access, 0, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
    }
    static void Write(const OwnedFile& file, const std::string& text) {
        ASSERT_TRUE(file);
        DWORD written = 0;
        EXPECT_TRUE(WriteFile(file.Get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr));
        EXPECT_EQ(written, text.size());
    }
    static void Append(const WideString& path, const std::string& text, DWORD lastError) {
        const OwnedFile file = Open(path, FILE_APPEND_DATA, OPEN_ALWAYS);
        EXPECT_EQ(GetLastError(), lastError);
        EXPECT_NE(SetFilePointer(file.Get(), 0, nullptr, FILE_END), DWORD{INVALID_SET_FILE_POINTER});
        Write(file, text);
    }
    static std::string Read(const WideString& path) {
        const OwnedFile file = Open(path, GENERIC_READ, OPEN_EXISTING);
        char bytes[100];
        DWORD count = 0;
        EXPECT_TRUE(ReadFile(file.Get(), bytes, sizeof bytes, &count, nullptr));
        LARGE_INTEGER size = {};
        EXPECT_TRUE(GetFileSizeEx(file.Get(), &size));
        EXPECT_EQ(size.QuadPart, count);
        return {bytes, count};
    }
    static DWORD ErrorOf(BOOL result) { return result ? DWORD{ERROR_SUCCESS} : GetLastError(); }

    const support::TempFolder folder;
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
        Write(Open(store, GENERIC_WRITE, CREATE_ALWAYS), text);
        EXPECT_EQ(Read(store), text);
    }
}

TEST(ModuleContract, APathThatDoesNotFitIsCut) {
    WCHAR path[6] = {0, 0, 0, 0, 0, 'x'};
    EXPECT_EQ(GetModuleFileNameW(GetModuleHandleW(nullptr), path, 5), 5u);
    EXPECT_EQ(path[5], 'x');
}

}  // namespace
