// The floor: what a question and its answer cost with nothing in between, and a start with nothing to start.
//     pipe_floor NAME REQUEST_SIZE ANSWER_SIZE [STEAM_LIBRARY [LIBRARY...] [window]]
// Loads the libraries and creates the window first. Then writes one block of ANSWER_SIZE bytes for every REQUEST_SIZE
// bytes that come, and ends when the client leaves.

#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/pipe/floor_end.h"
#include "bench/pipe/pipe_path.h"
#include "bench/pipe/steam_start.h"

namespace {

// Only its length means anything: whoever measures learns the size of an answer from it.
std::string CannedAnswer(std::size_t size) {
    std::string answer(size, 'x');
    for (std::size_t i = 0; i < 4 && i < size; ++i) answer[i] = static_cast<char>((size - 4) >> (8 * i));
    return answer;
}

void Prepare(const std::string& what) {
    if (what == "window") {
        pipe_bench::CreateMessageWindow();
    } else {
        pipe_bench::LoadSystemLibrary(what);
    }
}

void Serve(const std::string& name, std::size_t requestSize, const std::string& answer) {
    pipe_bench::FloorEnd pipe(pipe_bench::PipePath(name));
    std::vector<char> buffer(65536);
    std::size_t unanswered = 0;
    for (;;) {
        const std::size_t count = pipe.Read(buffer.data(), buffer.size());
        if (count == 0) return;
        for (unanswered += count; unanswered >= requestSize; unanswered -= requestSize) {
            if (!pipe.Write(answer)) return;
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 4) {
        std::fputs("usage: pipe_floor NAME REQUEST_SIZE ANSWER_SIZE [STEAM_LIBRARY [LIBRARY...] [window]]\n", stderr);
        return 2;
    }
    try {
        if (argc > 4) pipe_bench::StartSteam(argv[4]);
        for (int i = 5; i < argc; ++i) Prepare(argv[i]);
        const std::size_t requestSize = std::stoul(argv[2]);
        if (requestSize == 0) throw std::invalid_argument("REQUEST_SIZE");
        Serve(argv[1], requestSize, CannedAnswer(std::stoul(argv[3])));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "pipe_floor: %s\n", error.what());
        return 1;
    }
    return 0;
}
