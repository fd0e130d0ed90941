// What becomes of the helper's two files when somebody else holds or guards them.

#include <fstream>

#include "platform/windows_api.h"
#include "tests/e2e/helper_fixture.h"

namespace e2e {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kRotationSize = 1'048'576;

class Files : public HelperFixture {
  protected:
    void RunOnce() {
        StartService();
        CloseFromOutside();
    }
    fs::path OldLog() const { return fs::path(Surroundings().LogFile()).replace_extension(".old.txt"); }
    // Opens the file as another program would that lets others do no more than `share`.
    static HANDLE Hold(const fs::path& file, DWORD share) {
        const HANDLE held = CreateFileW(file.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, 0, nullptr);
        EXPECT_NE(held, INVALID_HANDLE_VALUE);
        return held;
    }
    static void Write(const fs::path& file, std::size_t size) { std::ofstream(file) << std::string(size, 'x'); }
};

TEST_F(Files, TheLogIsRotatedAtExactlyItsLimit) {
    RunOnce();
    // The first line of a run is written before the helper looks at the size.
    const std::size_t firstLine = test_support::ReadAll(Surroundings().LogFile()).find('\n') + 1;
    for (const std::size_t size : {kRotationSize - 1, kRotationSize}) {
        SCOPED_TRACE(size);
        Write(OldLog(), 10);
        Write(Surroundings().LogFile(), size - firstLine);
        RunOnce();
        const bool isFull = size == kRotationSize;
        EXPECT_EQ(fs::file_size(OldLog()), isFull ? kRotationSize : 10);
        EXPECT_EQ(fs::file_size(Surroundings().LogFile()) < kRotationSize, isFull);
    }
    fs::remove(OldLog());
}

TEST_F(Files, ALogThatSomebodyElseHoldsCostsItsLinesOnly) {
    Write(Surroundings().LogFile(), 10);
    const HANDLE held = Hold(Surroundings().LogFile(), 0);
    StartService();
    Connect();
    ExpectService(1);
    CloseFromOutside();
    CloseHandle(held);
    EXPECT_EQ(fs::file_size(Surroundings().LogFile()), 10u);
    EXPECT_TRUE(fs::exists(Surroundings().EventFile()));
}

// Held, not marked as read-only: for an administrator that would be no obstacle everywhere.
TEST_F(Files, AStoreThatCannotBeWrittenStaysAsItWas) {
    RunOnce();
    const std::string before = test_support::ReadAll(Surroundings().EventFile());
    const HANDLE held = Hold(Surroundings().EventFile(), FILE_SHARE_READ);
    RunOnce();
    EXPECT_EQ(test_support::ReadAll(Surroundings().EventFile()), before);
    CloseHandle(held);
    RunOnce();
    EXPECT_GT(test_support::ReadAll(Surroundings().EventFile()).size(), before.size());
}

}  // namespace

}  // namespace e2e
