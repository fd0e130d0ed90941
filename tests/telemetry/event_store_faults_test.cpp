#include "platform/posix/testing/faults.h"
#include "tests/telemetry/store_fixture.h"

namespace {

using EventStoreFaults = StoreFixture;

TEST_F(EventStoreFaults, AFileThatCannotBeOpenedStaysAsItWas) {
    const std::string old = Document({Entry("old", "1")});
    struct {
        const char* call;
        int skip;
        bool saved;
    } const rows[] = {
        {"SHGetKnownFolderPath", 1, false},  // for the writing
        {"CreateFileW", 1, false},
        {"CreateFileW", 0, true},  // for the reading: the file's events are lost, the new ones are not
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.call);
        WriteStore(old);
        Queue("new", 2);
        platform_testing::FailCall(row.call, ERROR_ACCESS_DENIED, row.skip);
        EXPECT_EQ(SaveEvents(), row.saved);
        EXPECT_EQ(ReadStore(), row.saved ? Document({Entry("new", "2")}) : old);
        platform_testing::ClearFaults();
        source.m_Events.clear();
    }
}

TEST_F(EventStoreFaults, EachSaveClosesWhatItOpened) {
    log.ArmFlushTimer();
    const int handles = platform_testing::OpenHandleCount();
    for (const char* const call : {"ReadFile", "WriteFile", "DeleteFileW"}) {
        WriteStore("no store");
        platform_testing::FailCall(call, ERROR_ACCESS_DENIED);
        EXPECT_TRUE(SaveEvents());
        EXPECT_EQ(platform_testing::OpenHandleCount(), handles) << call;
        platform_testing::ClearFaults();
    }
}

}  // namespace
