// The bare server: what a question and its answer cost with nothing in between, and how soon a pipe can be there again.
//     bench_floor PATH REQUEST_SIZE ANSWER_SIZE
// Writes a block of ANSWER_SIZE bytes for every REQUEST_SIZE bytes that come. When the client leaves it makes the pipe
// again; somebody else has to end it.

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "bench/pipe_end.h"

// Only its length means anything: whoever reads it learns from that where it ends.
static std::string CannedAnswer(std::size_t size) {
    std::string answer(size, 'x');
    for (std::size_t i = 0; i < 4; ++i) answer[i] = static_cast<char>((size - 4) >> (8 * i));
    return answer;
}

static void ServeOneClient(const std::string& path, std::size_t requestSize, const std::string& answer) {
    PipeEnd pipe = PipeEnd::Serve(path);
    std::vector<char> buffer(kPipeBufferSize);
    std::size_t unanswered = 0;
    while (const std::size_t count = pipe.Read(buffer.data(), buffer.size())) {
        for (unanswered += count; unanswered >= requestSize; unanswered -= requestSize) {
            if (!pipe.Write(answer)) return;
        }
    }
}

int main(int, char** argv) {
    try {
        const std::string answer = CannedAnswer(std::stoul(argv[3]));
        for (;;) ServeOneClient(argv[1], std::stoul(argv[2]), answer);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_floor: %s\n", error.what());
        return 1;
    }
}
