#pragma once

#include <filesystem>
#include <string>

namespace support {

// A new, empty folder that no other test has. It goes with this object, and so does all that is in it.
class TempFolder {
  public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& Path() const { return m_Path; }

  private:
    std::filesystem::path m_Path;
};

// A path as UTF-8 text with the platform's own separators, and back.
std::string ToUtf8(const std::filesystem::path& path);
std::filesystem::path FromUtf8(const std::string& text);

// All bytes of a file. False, with `bytes` untouched, if there is none or it can't be opened.
bool TryReadAll(const std::filesystem::path& file, std::string& bytes);
// The same; empty if there is none.
std::string ReadAll(const std::filesystem::path& file);

}  // namespace support
