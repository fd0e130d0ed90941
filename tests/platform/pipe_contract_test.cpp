#include "tests/platform/pipe_contract_fixture.h"

namespace {

TEST_F(PipeContract, AClientThatCameFirstIsToldWithoutASignal) {
    ASSERT_TRUE(client.TryOpen(name));
    ASSERT_TRUE(ClientWrites("a"));
    Request connect, read;
    EXPECT_EQ(Connect(connect), DWORD{ERROR_PIPE_CONNECTED});
    EXPECT_TRUE(connect.NotSignalled());
    EXPECT_EQ(Read(read), DWORD{ERROR_SUCCESS}) << "the connection is good all the same";
}

TEST_F(PipeContract, AClientThatCameAndWentIsToldToo) {
    struct {
        std::string left;
        DWORD read;
    } const rows[] = {{"", ERROR_BROKEN_PIPE}, {"last words", ERROR_SUCCESS}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.left);
        ASSERT_TRUE(client.TryOpen(name));
        ASSERT_TRUE(ClientWrites(row.left));
        client.Close();
        Request connect, read;
        EXPECT_EQ(Connect(connect), DWORD{ERROR_NO_DATA});
        EXPECT_TRUE(connect.NotSignalled());
        EXPECT_EQ(Read(read), row.read);
        EXPECT_EQ(buffer.substr(0, row.left.size()), row.left);
        EXPECT_EQ(Disconnect(), DWORD{ERROR_SUCCESS});
        Close();
        Create();
    }
}

TEST_F(PipeContract, WithoutAClientThereIsNothingToReadOrWrite) {
    Request request;
    EXPECT_EQ(Read(request), DWORD{ERROR_PIPE_LISTENING});
    EXPECT_EQ(Write(request, "x"), DWORD{ERROR_PIPE_LISTENING});
    EXPECT_TRUE(request.NotSignalled());
}

TEST_F(PipeContract, WhatTheClientLeftIsReadAtOnceAndBeforeItsEnd) {
    ASSERT_TRUE(ClientCame());
    ASSERT_TRUE(ClientWrites("last "));
    ASSERT_TRUE(ClientWrites("words"));
    client.Close();
    Request read;
    EXPECT_EQ(Read(read), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(Received(read), "last words") << "byte mode keeps no bounds, and the event is signalled here too";
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

TEST_F(PipeContract, EitherEndEndsWhatIsPendingAndThePipeCanListenAgain) {
    struct {
        bool clientGoes;
        DWORD pending, write, disconnect;
    } const rows[] = {
        {true, ERROR_BROKEN_PIPE, ERROR_NO_DATA, ERROR_SUCCESS},
        {false, ERROR_PIPE_NOT_CONNECTED, ERROR_PIPE_NOT_CONNECTED, ERROR_PIPE_NOT_CONNECTED},
    };
    const std::string bytes(4 * kCapacity, 'z');
    for (const auto& row : rows) {
        SCOPED_TRACE(row.clientGoes);
        ASSERT_TRUE(ClientCame());
        Request read, write, late;
        EXPECT_EQ(Read(read), DWORD{ERROR_IO_PENDING});
        EXPECT_EQ(Write(write, bytes), DWORD{ERROR_IO_PENDING});
        if (row.clientGoes)
            client.Close();
        else
            EXPECT_EQ(Disconnect(), DWORD{ERROR_SUCCESS});
        EXPECT_EQ(Received(read), "error " + std::to_string(row.pending));
        EXPECT_TRUE(write.Signalled());
        EXPECT_EQ(write.Error(pipe), row.pending);

        EXPECT_EQ(Write(late, "late"), row.write);
        EXPECT_TRUE(late.NotSignalled());
        EXPECT_EQ(Disconnect(), row.disconnect);
        EXPECT_EQ(Read(late), DWORD{ERROR_PIPE_NOT_CONNECTED});
        EXPECT_EQ(Write(late, "later"), DWORD{ERROR_PIPE_NOT_CONNECTED});
        client.Close();
        EXPECT_FALSE(client.TryOpen(name)) << "nobody listens";
    }
    EXPECT_TRUE(ClientCame());
}

TEST_F(PipeContract, ADescriptorOfAnUnknownRevisionIsRefused) {
    Close();
    SECURITY_DESCRIPTOR descriptor = {};
    SECURITY_ATTRIBUTES attributes = {sizeof attributes, &descriptor, FALSE};
    EXPECT_EQ(TryCreate(&attributes), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_UNKNOWN_REVISION});
    ASSERT_TRUE(InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION));
    pipe = TryCreate(&attributes);
    EXPECT_NE(pipe, INVALID_HANDLE_VALUE);
}

}  // namespace
