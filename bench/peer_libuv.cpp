// The service on libuv: bench_libuv PATH STEAMID PERSONA TICKET. Serves one client and ends when that leaves.

#include <uv.h>

#include <array>
#include <cstdio>
#include <memory>

#include "bench/service.h"

namespace {

// What the system didn't take at once.
struct Remainder {
    uv_write_t m_Request = {};
    std::string m_Bytes;
};

Service* g_Service;
uv_pipe_t g_Listener;
uv_pipe_t g_Client;
std::array<char, 65536> g_Buffer;

uv_stream_t* AsStream(uv_pipe_t& pipe) {
    return reinterpret_cast<uv_stream_t*>(&pipe);
}

void Close(uv_pipe_t& pipe) {
    auto* const handle = reinterpret_cast<uv_handle_t*>(&pipe);
    if (!uv_is_closing(handle)) uv_close(handle, nullptr);
}

void SendLater(std::string_view bytes) {
    auto* const remainder = new Remainder;
    remainder->m_Bytes = bytes;
    uv_buf_t buffer = uv_buf_init(remainder->m_Bytes.data(), static_cast<unsigned>(bytes.size()));
    remainder->m_Request.data = remainder;
    uv_write(&remainder->m_Request, AsStream(g_Client), &buffer, 1, [](uv_write_t* request, int status) {
        const std::unique_ptr<Remainder> done(static_cast<Remainder*>(request->data));
        if (status < 0) Close(g_Client);
    });
}

void OnRead(uv_stream_t* stream, ssize_t count, const uv_buf_t* buffer) {
    if (count < 0) return Close(g_Client);
    const std::string& answers = g_Service->Receive({buffer->base, static_cast<std::size_t>(count)});
    if (answers.empty()) return;
    uv_buf_t output = uv_buf_init(const_cast<char*>(answers.data()), static_cast<unsigned>(answers.size()));
    const int tried = uv_try_write(stream, &output, 1);
    const std::size_t written = tried < 0 ? 0 : static_cast<std::size_t>(tried);
    if (written < answers.size()) SendLater(std::string_view(answers).substr(written));
}

void OnConnection(uv_stream_t* listener, int) {
    uv_pipe_init(listener->loop, &g_Client, 0);
    uv_accept(listener, AsStream(g_Client));
    Close(g_Listener);
    const auto giveBuffer = [](uv_handle_t*, std::size_t, uv_buf_t* buffer) {
        *buffer = uv_buf_init(g_Buffer.data(), static_cast<unsigned>(g_Buffer.size()));
    };
    uv_read_start(AsStream(g_Client), giveBuffer, OnRead);
}

}  // namespace

int main(int, char** argv) {
    Service service(argv[2], argv[3], argv[4]);
    g_Service = &service;
    uv_loop_t* const loop = uv_default_loop();
    uv_pipe_init(loop, &g_Listener, 0);
    if (uv_pipe_bind(&g_Listener, argv[1]) != 0 || uv_listen(AsStream(g_Listener), 1, OnConnection) != 0) {
        std::fprintf(stderr, "bench_libuv: can't listen at %s\n", argv[1]);
        return 1;
    }
    return uv_run(loop, UV_RUN_DEFAULT);
}
