#include <boost/asio/io_context.hpp>
#include <boost/asio/local/stream_protocol.hpp>

#include "bench/peer_asio.h"

int main(int, char** argv) {
    using Protocol = boost::asio::local::stream_protocol;
    Service service(argv[2], argv[3], argv[4]);
    boost::asio::io_context context(1);
    Protocol::acceptor acceptor(context, Protocol::endpoint(argv[1]));
    AsioSession<Protocol::socket> session(acceptor.accept(), service);
    acceptor.close();
    session.Read();
    context.run();
}
