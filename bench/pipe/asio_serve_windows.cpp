#include <boost/asio/io_context.hpp>
#include <boost/asio/windows/overlapped_ptr.hpp>
#include <boost/asio/windows/stream_handle.hpp>

#include "bench/pipe/asio_serve.h"
#include "bench/pipe/asio_session.h"

namespace pipe_bench {

namespace {

using boost::asio::windows::stream_handle;

constexpr DWORD kBufferSize = 65536;  // as the helper's

boost::system::error_code LastError() {
    return {static_cast<int>(GetLastError()), boost::asio::error::get_system_category()};
}

HANDLE MakePipe(const std::string& path) {
    const HANDLE pipe =
        CreateNamedPipeA(path.c_str(), PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                         PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT, 1, kBufferSize, kBufferSize, 0, nullptr);
    if (pipe == INVALID_HANDLE_VALUE) throw boost::system::system_error(LastError(), "CreateNamedPipe");
    return pipe;
}

}  // namespace

void ServeWithAsio(ServerOptions& options) {
    boost::asio::io_context context(1);
    stream_handle pipe(context, MakePipe(options.m_Path));
    const HANDLE handle = pipe.native_handle();
    AsioSession<stream_handle> session(std::move(pipe), options);
    boost::asio::windows::overlapped_ptr connected(context, [&](const boost::system::error_code& error, std::size_t) {
        if (!error) session.Start();
    });
    const bool done = ConnectNamedPipe(handle, connected.get()) != 0;
    const boost::system::error_code error = LastError();
    if (done || error.value() == ERROR_PIPE_CONNECTED) {
        connected.complete({}, 0);
    } else if (error.value() == ERROR_IO_PENDING) {
        connected.release();
    } else {
        throw boost::system::system_error(error, "ConnectNamedPipe");
    }
    context.run();
}

}  // namespace pipe_bench
