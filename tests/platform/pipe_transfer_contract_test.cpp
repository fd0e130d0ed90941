#include "tests/platform/pipe_contract_fixture.h"

namespace {

TEST_F(PipeContract, AReadTakesAllThatIsThereAtOnce) {
    ASSERT_TRUE(ClientCame());
    ASSERT_TRUE(ClientWrites("one"));
    ASSERT_TRUE(ClientWrites("two"));
    Request read;
    EXPECT_EQ(Read(read), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(Received(read), "onetwo") << "byte mode keeps no bounds, and the event is signalled here too";
}

TEST_F(PipeContract, AClientThatGoesEndsWhatIsPending) {
    ASSERT_TRUE(ClientCame());
    Request read, write;
    EXPECT_EQ(Read(read), DWORD{ERROR_IO_PENDING});
    client.Close();
    EXPECT_EQ(Received(read), "error 109");
    EXPECT_EQ(Write(write, "late"), DWORD{ERROR_NO_DATA});
    EXPECT_TRUE(write.NotSignalled());
    EXPECT_EQ(Disconnect(), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(Read(read), DWORD{ERROR_PIPE_NOT_CONNECTED});
    EXPECT_EQ(Write(write, "later"), DWORD{ERROR_PIPE_NOT_CONNECTED});
}

TEST_F(PipeContract, WhatTheClientLeftIsReadBeforeItsEnd) {
    ASSERT_TRUE(ClientCame());
    ASSERT_TRUE(ClientWrites("last words"));
    client.Close();
    Request read;
    EXPECT_EQ(Read(read), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(Received(read), "last words");
    EXPECT_EQ(Read(read), DWORD{ERROR_BROKEN_PIPE});
    EXPECT_TRUE(read.NotSignalled());
}

TEST_F(PipeContract, ALargerWriteIsPendingUntilTheClientReads) {
    ASSERT_TRUE(ClientCame());
    for (const std::size_t size : {std::size_t{kCapacity} + 1, std::size_t{500'000}}) {
        SCOPED_TRACE(size);
        std::string bytes(size, '\0');
        for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 31 + i / 251);
        Request write;
        EXPECT_EQ(Write(write, bytes), DWORD{ERROR_IO_PENDING});
        EXPECT_TRUE(write.NotSignalled());
        EXPECT_EQ(write.Error(pipe), DWORD{ERROR_IO_INCOMPLETE});
        EXPECT_TRUE(ClientReads(size) == bytes);
        EXPECT_TRUE(write.Signalled());
        EXPECT_EQ(write.Error(pipe), DWORD{ERROR_SUCCESS});
        EXPECT_EQ(write.Count(), size);
    }
}

TEST_F(PipeContract, AWriteThatIsPendingEndsWithItsClient) {
    ASSERT_TRUE(ClientCame());
    Request write;
    const std::string bytes(4 * kCapacity, 'z');
    EXPECT_EQ(Write(write, bytes), DWORD{ERROR_IO_PENDING});
    client.Close();
    EXPECT_TRUE(write.Signalled());
    EXPECT_EQ(write.Error(pipe), DWORD{ERROR_BROKEN_PIPE});
}

TEST_F(PipeContract, ADisconnectEndsWhatIsPending) {
    ASSERT_TRUE(ClientCame());
    Request read, write;
    EXPECT_EQ(Read(read), DWORD{ERROR_IO_PENDING});
    const std::string bytes(4 * kCapacity, 'z');
    EXPECT_EQ(Write(write, bytes), DWORD{ERROR_IO_PENDING});
    EXPECT_EQ(Disconnect(), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(Received(read), "error 233");
    EXPECT_TRUE(write.Signalled());
    EXPECT_EQ(write.Error(pipe), DWORD{ERROR_PIPE_NOT_CONNECTED});
}

TEST_F(PipeContract, WithoutAClientThereIsNothingToReadOrWrite) {
    Request request;
    EXPECT_EQ(Read(request), DWORD{ERROR_PIPE_LISTENING});
    EXPECT_EQ(Write(request, "x"), DWORD{ERROR_PIPE_LISTENING});
    EXPECT_TRUE(request.NotSignalled());
}

}  // namespace
