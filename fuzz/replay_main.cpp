// Feeds each file of the folders in the arguments to a fuzz target: what its corpus has found once holds in any build.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
    int inputs = 0;
    for (int i = 1; i < argc; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            std::printf("%s\n", entry.path().c_str());
            std::fflush(stdout);
            std::ifstream file(entry.path(), std::ios::binary);
            const std::string bytes(std::istreambuf_iterator<char>(file), {});
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
            ++inputs;
        }
    }
    return inputs > 0 ? 0 : 1;
}
