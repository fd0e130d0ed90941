// Each failing call of the pipe: its lines, and what follows.

#include "pipe/named_pipe_server.h"
#include "platform/posix/testing/faults.h"
#include "tests/pipe/pipe_server_fixture.h"

namespace {

using platform_testing::FailCall;
using platform_testing::RunBefore;
using testing::Contains;
using testing::ElementsAre;
using testing::IsSupersetOf;
using testing::Matcher;
using testing::StartsWith;

class NamedPipeServerFaults : public PipeServerFixture {
  protected:
    ~NamedPipeServerFaults() override { platform_testing::ClearFaults(); }
};

TEST_F(NamedPipeServerFaults, AFailedReadOrWriteEndsTheConnectionAndAStaleSignalDoesNot) {
    struct {
        const char* call;
        DWORD error;
        bool inTheHandler;
        std::string line;  // empty: the connection goes on
    } const rows[] = {
        {"GetOverlappedResult", ERROR_NO_DATA, false, "Failed to read from pipe."},
        {"ReadFile", ERROR_NO_DATA, true, "Error reading from pipe."},
        {"WriteFile", ERROR_NO_DATA, true, "Error writing to pipe."},
        {"GetOverlappedResult", ERROR_NO_DATA, true, "Failed to write to pipe."},
        {"GetOverlappedResult", ERROR_IO_INCOMPLETE, false, ""},
        {"GetOverlappedResult", ERROR_IO_INCOMPLETE, true, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.line);
        const bool ends = !row.line.empty();
        disconnects = 0;
        OnData([&](const std::string&) {
            if (row.inTheHandler) FailCall(row.call, row.error);
            Send("answer");
        });
        ASSERT_TRUE(StartAndConnect());
        log.Lines();
        if (!row.inTheHandler) FailCall(row.call, row.error);
        Write("b");
        ASSERT_TRUE(support::WaitUntil([] { return platform_testing::PendingFaultCount() == 0; }));
        ASSERT_TRUE(Disconnected(ends ? 1 : 0));
        const std::vector<std::string> lines = log.Lines();
        EXPECT_TRUE(!ends || testing::Value(lines, IsSupersetOf({row.line, std::string("Disconnected.")})));
        EXPECT_EQ(testing::Value(lines, Contains(StartsWith("Last error: 232 (0xe8)"))), ends);
        Stop();
        EXPECT_EQ(disconnects, ends ? 1 : 0);
        client.Close();
    }
}

// A pipe that can't be recreated leaves none; the owner still hears of the lost client.
TEST_F(NamedPipeServerFaults, AClientIsSeenToLeaveWithoutANewPipe) {
    ASSERT_TRUE(StartAndConnect() && IsServed());
    FailCall("CreateNamedPipeA", ERROR_NOT_ENOUGH_MEMORY);
    client.Close();
    ASSERT_TRUE(Disconnected(1));
    EXPECT_THAT(log.Lines(), Contains("Unable to create pipe."));
}

TEST_F(NamedPipeServerFaults, AClientThatComesBeforeThePipeListensIsServed) {
    RunBefore("ConnectNamedPipe", [&] { EXPECT_TRUE(client.TryOpen(Name())); });
    ASSERT_TRUE(Start());
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    EXPECT_TRUE(IsServed());
    EXPECT_THAT(log.Lines(), ElementsAre("Creating pipe [" + FullName() + "]", "Connecting pipe...", "Connected pipe.",
                                         "Pipe connected."));

    // At a return the same happens inside the completion that ends the visit before.
    launcher::PipeClient next;
    RunBefore("ConnectNamedPipe", [&] { EXPECT_TRUE(next.TryOpen(Name())); });
    client.Close();
    ASSERT_TRUE(Disconnected(1));
    client = std::move(next);
    EXPECT_TRUE(IsServed());
    EXPECT_EQ(connects, 2);
}

TEST_F(NamedPipeServerFaults, OneThatHasGoneAgainIsTakenForAVisit) {
    std::string received;
    OnData([&](const std::string& bytes) { received += bytes; });
    RunBefore("ConnectNamedPipe", [&] {
        EXPECT_TRUE(client.TryOpen(Name()));
        EXPECT_TRUE(Write("last words"));
        client.Close();
    });
    ASSERT_TRUE(Start());
    ASSERT_TRUE(Disconnected(1));
    EXPECT_EQ(received, "last words");
    EXPECT_THAT(log.Lines(), IsSupersetOf<Matcher<std::string>>({"Connected pipe.", "Error reading from pipe.",
                                                                 StartsWith("Last error: 109 (0x6d)"),
                                                                 "Waiting for pipe to connect..."}));
}

TEST_F(NamedPipeServerFaults, AClientThatCannotBeAnnouncedIsAFailureToConnect) {
    RunBefore("ConnectNamedPipe", [&] { EXPECT_TRUE(client.TryOpen(Name())); });
    FailCall("SetEvent", ERROR_INVALID_HANDLE);
    EXPECT_FALSE(Start());
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_EQ(log.Lines().back(), "Unable to connect pipe: 6 (0x6)");
}

// The system may still be writing from it: a freed block would reach the client as something else.
TEST_F(NamedPipeServerFaults, APipeThatCannotBeClosedKeepsTheBlockInFlight) {
    std::atomic<bool> sent = false;
    const std::string block(1'000'000, 'x');
    OnData([&](const std::string&) { sent = Send(block); });
    ASSERT_TRUE(StartAndConnect());
    ASSERT_TRUE(Write("go"));
    ASSERT_TRUE(support::WaitUntil([&] { return sent.load(); }));
    NamedPipeServer::StopDeliveries();
    log.ArmFlushTimer();
    FailCall("CloseHandle", ERROR_INVALID_HANDLE);
    EXPECT_FALSE(NamedPipeServer::Destroy());
    EXPECT_THAT(log.Lines(), IsSupersetOf<Matcher<std::string>>(
                                 {"Unable to close pipe handle.", StartsWith("Last error: 6 (0x6)")}));
    EXPECT_TRUE(Read(block.size()) == block);
}

TEST(OverlappedOperationFaults, EachFailingCallHasItsLineAndLeavesAnObjectThatCanBeUsedAgain) {
    struct {
        const char* call;
        const char* line;
        bool armed;
    } const rows[] = {
        {"CreateEventW", "Unable to create overlapped event.", false},
        {"RegisterWaitForSingleObject", "Failed to start waiting on overlapped event.", false},
        {"UnregisterWaitEx", "Failed to unregister overlapped wait.", true},
        {"CloseHandle", "Failed to close overlapped event handle.", true},
    };
    test_support::LogCapture log;
    OverlappedOperation operation;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.call);
        if (!row.armed) FailCall(row.call, ERROR_NOT_ENOUGH_MEMORY);
        EXPECT_EQ(operation.Initialize([] {}, false), row.armed);
        if (row.armed) FailCall(row.call, ERROR_INVALID_HANDLE);
        operation.Cleanup(false);

        EXPECT_THAT(log.Lines(), ElementsAre(row.line, StartsWith("Last error: ")));
        EXPECT_TRUE(operation.Initialize([] {}, true));
        operation.Cleanup(false);
        EXPECT_THAT(log.Lines(), ElementsAre());
    }
    const LockGuard lock(g_CompletionLock);
    DWORD count = 0;
    FailCall("GetOverlappedResult", ERROR_IO_INCOMPLETE);
    EXPECT_EQ(operation.TakeResult(nullptr, count), OverlappedOperation::Result::StillPending);
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS) << "that is no failure for a later report to find";
}

}  // namespace
