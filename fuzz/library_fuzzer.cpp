// Any bytes as a Windows library through the doctor's reader.

#include <memory>

#include "fuzz/input.h"
#include "tools/probe/doctor/pe_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // As large as the file, so that a look beyond it is noticed.
    const auto bytes = std::make_unique<char[]>(size);
    std::copy_n(data, size, bytes.get());
    PeFile file;
    const std::string problem = ReadPeFile({bytes.get(), size}, file);
    Require(problem.empty() || problem.starts_with("it is"), "what is wrong is said");
    return 0;
}
