#include "support/system.h"

#include <filesystem>
#include <fstream>

#include "support/temp_folder.h"

namespace support {

std::string CurrentDirectory() {
    std::error_code error;
    const std::u8string path = std::filesystem::current_path(error).u8string();
    return {path.begin(), path.end()};
}

bool IsCurrentDirectory(const std::string& path) {
    std::error_code error;
    const bool same = std::filesystem::equivalent(FromUtf8(path), std::filesystem::path("."), error);
    return same && !error;
}

bool ReplaceFile(const std::string& path, std::string_view text) {
    const std::filesystem::path target = FromUtf8(path);
    std::filesystem::path temporary = target;
    temporary += ".";
    temporary += std::to_string(ProcessId());
    temporary += ".part";
    std::error_code error;
    {
        std::ofstream file(temporary, std::ios::binary | std::ios::trunc);
        file.write(text.data(), static_cast<std::streamsize>(text.size())).flush();
        if (!file) error = std::make_error_code(std::errc::io_error);
    }
    if (!error) std::filesystem::rename(temporary, target, error);
    if (!error) return true;
    std::error_code ignored;
    std::filesystem::remove(temporary, ignored);
    return false;
}

bool AppendToFile(const std::string& path, std::string_view text) {
    std::ofstream file(FromUtf8(path), std::ios::binary | std::ios::app);
    file.write(text.data(), static_cast<std::streamsize>(text.size())).flush();
    return static_cast<bool>(file);
}

}  // namespace support
