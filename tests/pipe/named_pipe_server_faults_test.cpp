// Each failing call of the pipe server: its lines, and what follows.

#include "pipe/named_pipe_server.h"
#include "platform/posix/testing/faults.h"
#include "tests/pipe/pipe_server_fixture.h"

namespace {

using platform_testing::FailCall;
using testing::IsSupersetOf;
using testing::StartsWith;

class NamedPipeServerFaults : public PipeServerFixture {
  protected:
    ~NamedPipeServerFaults() override { platform_testing::ClearFaults(); }
};

TEST_F(NamedPipeServerFaults, AFailedReadOrWriteEndsTheConnectionAndTheNextOneIsServed) {
    enum When { kBeforeTheRead, kInTheHandler };
    struct {
        const char* call;
        When when;
        const char* line;
    } const rows[] = {
        {"GetOverlappedResult", kBeforeTheRead, "Failed to read from pipe."},
        {"ReadFile", kInTheHandler, "Error reading from pipe."},
        {"WriteFile", kInTheHandler, "Error writing to pipe."},
        {"GetOverlappedResult", kInTheHandler, "Failed to write to pipe."},
    };
    ASSERT_TRUE(Start());
    int times = 0;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.line);
        OnData([&](const std::string&) {
            if (row.when == kInTheHandler) FailCall(row.call, ERROR_NO_DATA);
            Send("answer");
        });
        ASSERT_TRUE(Connect());
        log.Lines();
        if (row.when == kBeforeTheRead) FailCall(row.call, ERROR_NO_DATA);
        Write("b");
        ASSERT_TRUE(Disconnected(++times));
        EXPECT_THAT(log.Lines(), IsSupersetOf({testing::Matcher<std::string>(row.line),
                                               testing::Matcher<std::string>(StartsWith("Last error: 232 (0xe8)")),
                                               testing::Matcher<std::string>("Disconnected.")}));
        client.Close();
    }
}

TEST_F(NamedPipeServerFaults, AStaleSignalOfAnEarlierWriteEndsNothing) {
    OnData([&](const std::string& bytes) {
        if (bytes == "a") FailCall("GetOverlappedResult", ERROR_IO_INCOMPLETE);
        Send(bytes);
    });
    ASSERT_TRUE(Start());
    ASSERT_TRUE(Connect());
    ASSERT_TRUE(Write("a"));
    ASSERT_EQ(Read(1), "a");
    platform_testing::ClearFaults();
    EXPECT_EQ(disconnects, 0);
}

// A pipe that can't be created anew leaves none; the owner still hears of the lost client.
TEST_F(NamedPipeServerFaults, AClientIsSeenToLeaveWithoutANewPipe) {
    ASSERT_TRUE(Start());
    ASSERT_TRUE(Connect());
    ASSERT_TRUE(Write("a"));
    ASSERT_EQ(Read(1), "a");
    FailCall("CreateNamedPipeA", ERROR_NOT_ENOUGH_MEMORY);
    client.Close();
    ASSERT_TRUE(Disconnected(1));
    EXPECT_THAT(log.Lines(), IsSupersetOf({"Unable to create pipe."}));
}

TEST_F(NamedPipeServerFaults, NoHandleIsLeftBehind) {
    const auto serve = [&](int from, int to) {
        for (int i = from; i <= to; ++i) {
            ASSERT_TRUE(Connect());
            ASSERT_TRUE(Write("a"));
            ASSERT_EQ(Read(1), "a");
            client.Close();
            ASSERT_TRUE(Disconnected(i));
        }
    };
    log.Lines();
    ASSERT_TRUE(Start());
    serve(1, 2);
    log.Lines();
    const int after2 = platform_testing::OpenHandleCount();
    serve(3, 200);
    log.Lines();
    EXPECT_EQ(platform_testing::OpenHandleCount(), after2);
}

}  // namespace
