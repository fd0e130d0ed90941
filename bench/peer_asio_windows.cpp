#include <boost/asio/io_context.hpp>
#include <boost/asio/windows/overlapped_ptr.hpp>
#include <boost/asio/windows/stream_handle.hpp>
#include <cstdio>

#include "bench/peer_asio.h"

int main(int, char** argv) {
    using boost::asio::windows::stream_handle;
    constexpr DWORD kBufferSize = 65536;  // as the helper's
    Service service(argv[2], argv[3], argv[4]);
    boost::asio::io_context context(1);
    const HANDLE pipe =
        CreateNamedPipeA(argv[1], PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                         PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT, 1, kBufferSize, kBufferSize, 0, nullptr);
    if (pipe == INVALID_HANDLE_VALUE) {
        std::fprintf(stderr, "bench_asio: can't make %s\n", argv[1]);
        return 1;
    }
    AsioSession<stream_handle> session(stream_handle(context, pipe), service);
    boost::asio::windows::overlapped_ptr connected(
        context, [&](const boost::system::error_code&, std::size_t) { session.Read(); });
    if (ConnectNamedPipe(pipe, connected.get()) || GetLastError() == ERROR_PIPE_CONNECTED) {
        connected.complete({}, 0);
    } else {
        connected.release();
    }
    context.run();
    return 0;
}
