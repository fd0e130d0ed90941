#include "tests/platform/pipe_contract_fixture.h"

namespace {

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

TEST_F(PipeContract, ADisconnectedPipeCanListenAgain) {
    ASSERT_TRUE(ClientCame());
    ASSERT_EQ(Disconnect(), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(Disconnect(), DWORD{ERROR_PIPE_NOT_CONNECTED});
    EXPECT_EQ(ClientReads(1), "");
    client.Close();
    EXPECT_FALSE(client.TryOpen(name)) << "nobody listens";
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
