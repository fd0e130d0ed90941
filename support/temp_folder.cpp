#include "support/temp_folder.h"

#include <fstream>
#include <random>
#include <sstream>

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

bool TryReadAll(const std::filesystem::path& file, std::string& bytes) {
    std::error_code error;
    std::ifstream stream(file, std::ios::binary);
    // Some systems open a folder, too, but nothing can be read from it.
    if (!stream || std::filesystem::is_directory(file, error)) return false;
    std::ostringstream all;
    // Unlike the iterators this throws nothing where the system can't read on.
    all << stream.rdbuf();
    bytes = std::move(all).str();
    return true;
}

std::string ReadAll(const std::filesystem::path& file) {
    std::string bytes;
    TryReadAll(file, bytes);
    return bytes;
}

}  // namespace support
