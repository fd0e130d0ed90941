// The service on Boost.Asio: pipe_asio NAME STEAMID PERSONA TICKET [each]. Ends when the client leaves.

#include <cstdio>
#include <exception>

#include "bench/pipe/asio_serve.h"
#include "bench/pipe/server_options.h"

int main(int argc, char** argv) {
    try {
        pipe_bench::ServerOptions options = pipe_bench::ReadServerOptions(argc, argv);
        pipe_bench::ServeWithAsio(options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "pipe_asio: %s\n", error.what());
        return 1;
    }
    return 0;
}
