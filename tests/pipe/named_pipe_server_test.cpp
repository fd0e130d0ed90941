#include "pipe/named_pipe_server.h"

#include <future>
#include <thread>

#include "tests/pipe/pipe_server_fixture.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsSupersetOf;
using testing::StartsWith;

using NamedPipeServerTest = PipeServerFixture;

TEST_F(NamedPipeServerTest, DeliversMoreThanTheBufferInSeveralReads) {
    std::string received;
    std::size_t largest = 0;
    const std::string sent(200'000, 'x');
    OnData([&](const std::string& bytes) {
        received += bytes;
        largest = std::max(largest, bytes.size());
        if (received.size() == sent.size()) Send("all");
    });
    ASSERT_TRUE(Start());
    ASSERT_TRUE(Connect());
    ASSERT_TRUE(Write(sent));
    EXPECT_EQ(Read(3), "all");
    EXPECT_EQ(received, sent);
    EXPECT_LE(largest, 65536u);
}

TEST_F(NamedPipeServerTest, ListensAgainWhenTheClientLeaves) {
    ASSERT_TRUE(Start());
    ASSERT_TRUE(Connect());
    ASSERT_TRUE(Write("a"));
    ASSERT_EQ(Read(1), "a") << "the next read is pending soon after";
    EXPECT_THAT(log.Lines(), ElementsAre("Creating pipe [" + FullName() + "]", "Connecting pipe...",
                                         "Waiting for pipe to connect...", "Pipe connected."));
    client.Close();
    ASSERT_TRUE(Disconnected(1));
    const auto lines = log.Lines();
    // Whether the read was already pending decides between two wordings of the first line.
    ASSERT_GE(lines.size(), 2u);
    EXPECT_THAT(lines[0], testing::AnyOf("Failed to read from pipe.", "Error reading from pipe."));
    EXPECT_THAT(lines[1], StartsWith("Last error: 109 (0x6d)"));
    const std::vector<std::string> rest(lines.end() - 5, lines.end());
    EXPECT_THAT(rest, ElementsAre("Disconnected.", "Destroying pipe...", "Creating pipe [" + FullName() + "]",
                                  "Connecting pipe...", "Waiting for pipe to connect..."));

    for (int round = 2; round <= 20; ++round) {
        ASSERT_TRUE(Connect());
        ASSERT_TRUE(Write("b"));
        ASSERT_EQ(Read(1), "b");
        client.Close();
        ASSERT_TRUE(Disconnected(round));
    }
}

TEST_F(NamedPipeServerTest, QueuesBehindAWriteInFlightAndKeepsTheOrder) {
    constexpr int kFrames = 12;
    constexpr std::size_t kSize = 50'000;
    OnData([&](const std::string&) {
        for (int i = 0; i < kFrames; ++i) EXPECT_TRUE(Send(std::string(kSize, static_cast<char>('a' + i))));
    });
    ASSERT_TRUE(Start());
    ASSERT_TRUE(Connect());
    ASSERT_TRUE(Write("go"));
    const std::string received = Read(kFrames * kSize);
    ASSERT_EQ(received.size(), kFrames * kSize);
    for (int i = 0; i < kFrames; ++i) {
        EXPECT_EQ(received.substr(static_cast<std::size_t>(i) * kSize, kSize),
                  std::string(kSize, static_cast<char>('a' + i)));
    }
}

TEST_F(NamedPipeServerTest, AClientThatLeavesWithItsAnswersWaitingTakesThemAlong) {
    std::promise<void> sent;
    OnData([&](const std::string& bytes) {
        if (bytes == "hello") {
            Send("hello");
            return;
        }
        for (int i = 0; i < 12; ++i) Send(std::string(50'000, 'x'));
        sent.set_value();
    });
    ASSERT_TRUE(Start());
    ASSERT_TRUE(Connect());
    ASSERT_TRUE(Write("go"));
    sent.get_future().wait();
    client.Close();
    ASSERT_TRUE(Disconnected(1));
    ASSERT_TRUE(Connect());
    ASSERT_TRUE(Write("hello"));
    EXPECT_EQ(Read(5), "hello");
}

TEST_F(NamedPipeServerTest, SendWithoutAClientLeavesTheFrameWithItsCaller) {
    const auto trySend = [](OutgoingFrame frame) {
        const bool had = frame.m_Data != nullptr;
        return !NamedPipeServer::Send(frame) && (frame.m_Data != nullptr) == had;
    };
    EXPECT_TRUE(trySend(Block("x")));
    EXPECT_TRUE(trySend({}));
    EXPECT_THAT(log.Lines(), ElementsAre("Can't send message - not connected.", "Can't send message - not connected."));

    std::atomic<int> refused = 0;
    OnData([&](const std::string&) {
        refused = trySend({}) + trySend(Block(""));
        Send("done");
    });
    ASSERT_TRUE(Start());
    ASSERT_TRUE(Connect());
    ASSERT_TRUE(Write("go"));
    EXPECT_EQ(Read(4), "done");
    EXPECT_EQ(refused, 2);
    EXPECT_THAT(log.Lines(), IsSupersetOf({"Invalid message specified.", "Invalid message specified."}));

    client.Close();
    ASSERT_TRUE(Disconnected(1));
    log.Lines();
    EXPECT_TRUE(trySend(Block("x")));
    EXPECT_THAT(log.Lines(), ElementsAre("Can't send message - not connected."));
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
    ASSERT_TRUE(Start());
    ASSERT_TRUE(Connect());
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
    const auto connected = [&](const std::string& bytes) { return Connect() && Write(bytes) && !Read(1).empty(); };
    OnData([&](const std::string& bytes) {
        Send("x");
        for (int i = 0; bytes == "many" && i < 12; ++i) Send(std::string(50'000, 'x'));
    });
    const std::function<bool()> states[] = {
        [] { return true; },                // listening
        [&] { return connected("one"); },   // a read pending
        [&] { return connected("many"); },  // a write pending, others queued
        [&] { return Connect(); },          // somewhere in the connecting
        [&] {
            client.Close();
            return Connect();
        }  // somewhere in the reconnecting
    };
    for (int round = 0; round < 20; ++round) {
        for (const auto& reach : states) {
            ASSERT_TRUE(Start());
            ASSERT_TRUE(reach());
            Stop();
            client.Close();
        }
    }
    EXPECT_THAT(log.Lines(), testing::Not(Contains(StartsWith("Failed to unregister"))));
}

}  // namespace
