#include "tests/support/log_capture.h"

#include <fstream>
#include <iterator>

#include "diagnostics/log.h"
#include "diagnostics/text.h"
#include "tests/support/log_text.h"

namespace test_support {

LogCapture::LogCapture() {
    // Where the log goes is the platform's to say; only the native layer listens to this variable.
    const auto base =
        std::filesystem::temp_directory_path() / ("tollmere-log-" + std::to_string(GetCurrentProcessId()));
    SetEnvironmentVariableA("TOLLMERE_PROGRAM_DATA", base.string().c_str());
    FlushLog();

    LPWSTR programData = nullptr;
    SHGetKnownFolderPath(FOLDERID_ProgramData, 0, nullptr, &programData);
    m_Folder = std::filesystem::path(std::u16string(programData, programData + WideString(programData).size())) /
               "Tollmere Games" / "Launcher";
    CoTaskMemFree(programData);
    std::filesystem::create_directories(m_Folder);

    static WideString name;
    name = Utf8ToWide(("test-" + std::to_string(GetCurrentProcessId()) + ".log").c_str());
    m_Name.assign(name.begin(), name.end());
    g_LogFileName = name.c_str();
    std::filesystem::remove(File());
}

LogCapture::~LogCapture() {
    FlushLog();
    g_LogFileName = WIDE_TEXT("");
    std::error_code ignored;
    std::filesystem::remove(File(), ignored);
}

std::filesystem::path LogCapture::File() const {
    return m_Folder / m_Name;
}

std::string LogCapture::Bytes() {
    FlushLog();
    std::string bytes;
    {
        std::ifstream file(File(), std::ios::binary);
        bytes.assign(std::istreambuf_iterator<char>(file), {});
    }
    std::filesystem::remove(File());
    return bytes;
}

static const char kArming[] = "(arms the flush timer)";

void LogCapture::ArmFlushTimer() {
    // The first may be flushed at once; the second then has to wait.
    Log("%s", kArming);
    Log("%s", kArming);
}

std::vector<std::string> LogCapture::Lines() {
    std::vector<std::string> lines = LogTexts(Bytes());
    std::erase(lines, kArming);
    return lines;
}

}  // namespace test_support
