// What the layer adds of its own to the contract of pipes: where they are, and that an end is an end at once.

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <thread>

#include "platform/posix/testing/faults.h"
#include "support/temp_folder.h"
#include "tests/platform/pipe_contract_fixture.h"

namespace {

class NativePipe : public PipeContract {
  protected:
    NativePipe() {
        Close();
        SetEnvironmentVariableA("TOLLMERE_PIPE_DIR", folder.Path().c_str());
    }
    ~NativePipe() override {
        Close();
        SetEnvironmentVariableA("TOLLMERE_PIPE_DIR", nullptr);
    }
    std::filesystem::path Socket() const { return folder.Path() / name; }

    const support::TempFolder folder;
};

TEST_F(NativePipe, IsAFileForItsOwnerAloneAndLeavesNothingBehind) {
    Create();
    struct stat status = {};
    ASSERT_EQ(lstat(Socket().c_str(), &status), 0);
    EXPECT_TRUE(S_ISSOCK(status.st_mode));
    EXPECT_EQ(status.st_mode & 0777, 0600u);
    Close();
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST_F(NativePipe, WhatADeadProcessHasLeftIsReplacedAndALivingOneRespected) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, Socket().c_str(), sizeof address.sun_path - 1);
    const int left = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(bind(left, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    close(left);

    // The living one holds a lock. To the system, what opens the file again is another owner, as in another process.
    const std::string lockPath = Socket().string() + ".lock";
    const int lock = open(lockPath.c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
    ASSERT_EQ(flock(lock, LOCK_EX | LOCK_NB), 0);
    EXPECT_EQ(TryCreate(), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_PIPE_BUSY);

    close(lock);
    Create();
    EXPECT_TRUE(ClientCame());
}

TEST_F(NativePipe, SomebodysFileIsKept) {
    std::ofstream(Socket()) << "no socket";
    EXPECT_EQ(TryCreate(), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_TRUE(std::filesystem::is_regular_file(Socket()));
}

TEST_F(NativePipe, AfterAnEndNothingIsTouched) {
    const std::string bytes(4 * kCapacity, 'x');
    const int handles = platform_testing::OpenHandleCount();
    for (const DWORD end : {ERROR_PIPE_NOT_CONNECTED, ERROR_OPERATION_ABORTED}) {
        SCOPED_TRACE(end);
        Create();
        ASSERT_TRUE(ClientCame());
        Request read, write;
        EXPECT_EQ(Read(read), ERROR_IO_PENDING);
        EXPECT_EQ(Write(write, bytes), ERROR_IO_PENDING);
        // The client floods the pipe while it ends.
        std::thread flood([&] { client.Write(bytes + bytes, support::Limit()); });
        if (end == ERROR_PIPE_NOT_CONNECTED) Disconnect();
        Close();
        const std::string kept = buffer;
        EXPECT_THAT(read.Error(pipe), testing::AnyOf(end, ERROR_SUCCESS));
        EXPECT_EQ(write.Error(pipe), end) << "already, without waiting";
        flood.join();
        ASSERT_TRUE(WaitThreadHasComeRound());
        EXPECT_EQ(buffer, kept);
    }
    Create();
    Request connect;
    EXPECT_EQ(Connect(connect), ERROR_IO_PENDING);
    Close();
    EXPECT_EQ(connect.Error(pipe), ERROR_OPERATION_ABORTED);
    EXPECT_EQ(platform_testing::OpenHandleCount(), handles + 1) << "the event of the connect";
}

}  // namespace
