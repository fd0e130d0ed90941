#include "pipe/named_pipe_server.h"

#include <future>
#include <thread>

#include "tests/pipe/pipe_server_fixture.h"

namespace {

using testing::ElementsAre;
using testing::StartsWith;

using NamedPipeServerTest = PipeServerFixture;

// To the server in several reads; back in one write after another, of which most are queued before any is read.
TEST_F(NamedPipeServerTest, MoreThanTheBufferKeepsItsOrderBothWays) {
    constexpr std::size_t kBlock = 50'000;
    std::string sent(12 * kBlock, '\0');
    for (std::size_t i = 0; i < sent.size(); ++i) sent[i] = static_cast<char>(i * 31 + i / 251);
    std::string received;
    std::size_t largest = 0;
    std::atomic<bool> answered = false;
    OnData([&](const std::string& bytes) {
        received += bytes;
        largest = std::max(largest, bytes.size());
        if (received.size() < sent.size()) return;
        for (std::size_t i = 0; i < sent.size(); i += kBlock) EXPECT_TRUE(Send(received.substr(i, kBlock)));
        answered = true;
    });
    ASSERT_TRUE(StartAndConnect());
    ASSERT_TRUE(Write(sent));
    ASSERT_TRUE(support::WaitUntil([&] { return answered.load(); }));
    EXPECT_TRUE(Read(sent.size()) == sent);
    EXPECT_LE(largest, 65536u);
}

TEST_F(NamedPipeServerTest, ListensAgainWhenTheClientLeaves) {
    ASSERT_TRUE(StartAndConnect() && IsServed());
    EXPECT_THAT(log.Lines(), ElementsAre("Creating pipe [" + FullName() + "]", "Connecting pipe...",
                                         "Waiting for pipe to connect...", "Pipe connected."));
    client.Close();
    ASSERT_TRUE(Disconnected(1));
    // Whether the read was already pending decides between two wordings of the first line.
    EXPECT_THAT(log.Lines(), ElementsAre(testing::AnyOf("Failed to read from pipe.", "Error reading from pipe."),
                                         StartsWith("Last error: 109 (0x6d)"), "Disconnected.", "Destroying pipe...",
                                         "Creating pipe [" + FullName() + "]", "Connecting pipe...",
                                         "Waiting for pipe to connect..."));
    EXPECT_TRUE(Connect() && IsServed());
}

TEST_F(NamedPipeServerTest, WhatCannotBeSentStaysWithItsCaller) {
    const char notConnected[] = "Can't send message - not connected.";
    const char invalid[] = "Invalid message specified.";
    const auto isKept = [](OutgoingFrame frame) {
        const bool had = frame.m_Data != nullptr;
        return !NamedPipeServer::Send(frame) && (frame.m_Data != nullptr) == had;
    };
    EXPECT_TRUE(isKept(Block("x")) && isKept({}));
    EXPECT_THAT(log.Lines(), ElementsAre(notConnected, notConnected));

    std::atomic<bool> kept = false;
    OnData([&](const std::string& bytes) {
        kept = isKept({}) && isKept(Block(""));
        Send(bytes);
    });
    ASSERT_TRUE(StartAndConnect() && IsServed());
    EXPECT_TRUE(kept);
    EXPECT_THAT(log.Lines(), testing::IsSupersetOf({invalid, invalid}));

    client.Close();
    ASSERT_TRUE(Disconnected(1));
    log.Lines();
    EXPECT_TRUE(isKept(Block("x")));
    EXPECT_THAT(log.Lines(), ElementsAre(notConnected));
}

TEST_F(NamedPipeServerTest, TheStopWaitsForARunningHandlerAndLetsNoOtherIn) {
    std::promise<void> firstEntered;
    std::promise<void> release;
    std::atomic<int> entered = 0;
    std::atomic<int> finished = 0;
    OnData([&](const std::string&) {
        if (++entered == 1) {
            firstEntered.set_value();
            release.get_future().wait();
        }
        ++finished;
    });
    ASSERT_TRUE(StartAndConnect());
    ASSERT_TRUE(Write("first"));
    firstEntered.get_future().wait();
    ASSERT_TRUE(Write("delivered if the stop comes later than the release"));

    int runningAtStop = -1;
    std::thread worker([&] {
        NamedPipeServer::StopDeliveries();
        runningAtStop = entered - finished;
    });
    release.set_value();
    worker.join();
    EXPECT_EQ(runningAtStop, 0);

    const int enteredAtStop = entered;
    Write("never delivered");
    EXPECT_TRUE(NamedPipeServer::Destroy());
    EXPECT_EQ(entered, enteredAtStop);
}

TEST_F(NamedPipeServerTest, StopsInEveryStateAndStartsAgain) {
    OnData([&](const std::string& bytes) {
        Send(bytes);
        for (int i = 0; bytes == "many" && i < 12; ++i) Send(std::string(50'000, 'x'));
    });
    const auto leaveWithAnswersWaiting = [&] {
        const bool answered = Connect() && Write("many") && !Read(1).empty();
        client.Close();
        return answered;
    };
    const std::function<bool()> states[] = {
        [] { return true; },
        [&] { return Connect(); },
        [&] { return Connect() && IsServed(); },
        [&] { return Connect() && Write("many") && !Read(1).empty(); },
        [&] { return leaveWithAnswersWaiting(); },
        [&] { return leaveWithAnswersWaiting() && Connect(); },
        [&] { return leaveWithAnswersWaiting() && Connect() && IsServed(); },
    };
    for (int round = 0; round < 20; ++round) {
        for (const auto& reach : states) {
            ASSERT_TRUE(Start());
            ASSERT_TRUE(reach());
            Stop();
            client.Close();
            ASSERT_THAT(log.Lines(), testing::Not(testing::Contains(StartsWith("Failed to unregister"))));
        }
    }
}

}  // namespace
