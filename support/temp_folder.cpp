#include "support/temp_folder.h"

#include <fstream>
#include <iterator>
#include <random>

namespace support {

TempFolder::TempFolder() {
    const std::filesystem::path parent = std::filesystem::temp_directory_path();
    std::random_device random;
    // Another test, also one of another time whose folder was left behind, may have the name.
    do {
        m_Path = parent / ("tollmere-" + std::to_string(random()));
    } while (!std::filesystem::create_directory(m_Path));
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_Path, ignored);
}

std::string ToUtf8(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

std::filesystem::path FromUtf8(const std::string& text) {
    return {std::u8string(text.begin(), text.end())};
}

std::string ReadAll(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace support
