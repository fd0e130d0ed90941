#include "tests/platform/pipe_contract_fixture.h"

namespace {

TEST_F(PipeContract, AConnectIsPendingUntilAClientComes) {
    Request connect;
    EXPECT_EQ(Connect(connect), DWORD{ERROR_IO_PENDING});
    EXPECT_EQ(connect.Error(pipe), DWORD{ERROR_IO_INCOMPLETE});
    EXPECT_TRUE(connect.NotSignalled());
    ASSERT_TRUE(client.Open(name, test_support::Limit()));
    EXPECT_TRUE(connect.Signalled());
    EXPECT_EQ(connect.Error(pipe), DWORD{ERROR_SUCCESS});
}

TEST_F(PipeContract, AClientThatCameFirstIsToldWithoutASignal) {
    ASSERT_TRUE(client.TryOpen(name));
    Request connect;
    EXPECT_EQ(Connect(connect), DWORD{ERROR_PIPE_CONNECTED});
    EXPECT_TRUE(connect.NotSignalled());
    Request read;
    ASSERT_TRUE(ClientWrites("a"));
    EXPECT_EQ(Read(read), DWORD{ERROR_SUCCESS}) << "the connection is good all the same";
}

TEST_F(PipeContract, AClientThatCameAndWentIsToldToo) {
    ASSERT_TRUE(client.TryOpen(name));
    client.Close();
    Request connect;
    EXPECT_EQ(Connect(connect), DWORD{ERROR_NO_DATA});
    EXPECT_TRUE(connect.NotSignalled());
    EXPECT_EQ(Disconnect(), DWORD{ERROR_SUCCESS});
}

TEST_F(PipeContract, ThereIsOneInstanceAndOneClient) {
    EXPECT_EQ(TryCreate(), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_PIPE_BUSY});

    ASSERT_TRUE(ClientCame());
    launcher::PipeClient second;
    EXPECT_FALSE(second.TryOpen(name));
    EXPECT_EQ(TryCreate(), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_PIPE_BUSY});

    Request read;
    ASSERT_TRUE(ClientWrites("still served"));
    Read(read);
    EXPECT_EQ(Received(read), "still served");
}

TEST_F(PipeContract, TheNameCanBeUsedAgainAtOnce) {
    for (int i = 0; i < 30; ++i) {
        ASSERT_TRUE(ClientCame()) << i;
        Request read;
        EXPECT_EQ(Read(read), DWORD{ERROR_IO_PENDING});
        client.Close();
        ASSERT_EQ(Received(read), "error 109");
        ASSERT_EQ(Disconnect(), DWORD{ERROR_SUCCESS});
        Close();
        Create();
        ASSERT_NE(pipe, INVALID_HANDLE_VALUE);
    }
}

TEST_F(PipeContract, ADisconnectedPipeCanListenAgain) {
    ASSERT_TRUE(ClientCame());
    ASSERT_EQ(Disconnect(), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(Disconnect(), DWORD{ERROR_PIPE_NOT_CONNECTED});
    EXPECT_EQ(ClientReads(1), "");
    client.Close();
    EXPECT_FALSE(client.TryOpen(name)) << "nobody listens";
    EXPECT_TRUE(ClientCame());
}

TEST_F(PipeContract, WithoutAPipeThereIsNothingToOpen) {
    Close();
    EXPECT_FALSE(client.TryOpen(name));
    EXPECT_FALSE(DisconnectNamedPipe(pipe));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
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
