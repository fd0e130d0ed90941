// The service on libuv: pipe_uv NAME STEAMID PERSONA TICKET [each]. Ends when the client leaves.

#include <uv.h>

#include <array>
#include <cstdio>
#include <exception>
#include <memory>
#include <stdexcept>

#include "bench/pipe/server_options.h"

namespace {

using pipe_bench::ServerOptions;

void Check(int result, const char* call) {
    if (result < 0) throw std::runtime_error(std::string(call) + ": " + uv_strerror(result));
}

class Server {
  public:
    explicit Server(ServerOptions options) : m_Options(std::move(options)) {}

    // Serves one client until it leaves.
    void Run() {
        Check(uv_pipe_init(&m_Loop, &m_Listener, 0), "uv_pipe_init");
        m_Listener.data = this;
        Check(uv_pipe_bind(&m_Listener, m_Options.m_Path.c_str()), "uv_pipe_bind");
        Check(uv_listen(AsStream(m_Listener), 1, OnConnection), "uv_listen");
        uv_run(&m_Loop, UV_RUN_DEFAULT);
    }

  private:
    // An answer that the system didn't take at once.
    struct Remainder {
        uv_write_t m_Request;
        std::string m_Bytes;
    };

    static uv_stream_t* AsStream(uv_pipe_t& pipe) { return reinterpret_cast<uv_stream_t*>(&pipe); }
    static void Close(uv_pipe_t& pipe) {
        auto* const handle = reinterpret_cast<uv_handle_t*>(&pipe);
        if (!uv_is_closing(handle)) uv_close(handle, nullptr);
    }

    static void OnConnection(uv_stream_t* listener, int status) {
        Server& server = *static_cast<Server*>(listener->data);
        uv_pipe_init(&server.m_Loop, &server.m_Client, 0);
        server.m_Client.data = &server;
        const bool accepted = status == 0 && uv_accept(listener, AsStream(server.m_Client)) == 0;
        Close(server.m_Listener);
        if (!accepted || uv_read_start(AsStream(server.m_Client), OnAllocate, OnRead) != 0) Close(server.m_Client);
    }

    static void OnAllocate(uv_handle_t* handle, std::size_t, uv_buf_t* buffer) {
        Server& server = *static_cast<Server*>(handle->data);
        *buffer = uv_buf_init(server.m_Buffer.data(), static_cast<unsigned>(server.m_Buffer.size()));
    }

    static void OnRead(uv_stream_t* stream, ssize_t count, const uv_buf_t* buffer) {
        Server& server = *static_cast<Server*>(stream->data);
        if (count == 0) return;
        server.m_Answers.clear();
        const bool good = count > 0 && server.m_Options.m_Service.Receive(
                                           {buffer->base, static_cast<std::size_t>(count)}, server.m_Answers);
        if (!good || !server.SendAnswers()) Close(server.m_Client);
    }

    static void OnWritten(uv_write_t* request, int status) {
        const std::unique_ptr<Remainder> remainder(static_cast<Remainder*>(request->data));
        if (status < 0) Close(static_cast<Server*>(request->handle->data)->m_Client);
    }

    // Each write is tried at once; what isn't taken waits in the loop. False if the client has left.
    bool SendAnswers() {
        std::string_view rest = m_Answers;
        while (!rest.empty()) {
            const std::string_view next = pipe_bench::Service::NextWrite(rest, m_Options.m_Together);
            uv_buf_t buffer = uv_buf_init(const_cast<char*>(next.data()), static_cast<unsigned>(next.size()));
            const int tried = uv_try_write(AsStream(m_Client), &buffer, 1);
            if (tried < 0 && tried != UV_EAGAIN) return false;
            const auto written = static_cast<std::size_t>(tried < 0 ? 0 : tried);
            if (written < next.size() && !SendLater(next.substr(written))) return false;
        }
        return true;
    }

    bool SendLater(std::string_view bytes) {
        auto remainder = std::make_unique<Remainder>();
        remainder->m_Bytes = bytes;
        remainder->m_Request.data = remainder.get();
        uv_buf_t buffer = uv_buf_init(remainder->m_Bytes.data(), static_cast<unsigned>(remainder->m_Bytes.size()));
        if (uv_write(&remainder->m_Request, AsStream(m_Client), &buffer, 1, OnWritten) != 0) return false;
        static_cast<void>(remainder.release());  // OnWritten's now
        return true;
    }

    ServerOptions m_Options;
    uv_loop_t& m_Loop = *uv_default_loop();
    uv_pipe_t m_Listener = {};
    uv_pipe_t m_Client = {};
    std::array<char, 65536> m_Buffer = {};
    std::string m_Answers;
};

}  // namespace

int main(int argc, char** argv) {
    try {
        std::make_unique<Server>(pipe_bench::ReadServerOptions(argc, argv))->Run();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "pipe_uv: %s\n", error.what());
        return 1;
    }
    return 0;
}
