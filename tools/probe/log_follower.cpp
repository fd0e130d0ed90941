#include "tools/probe/log_follower.h"

#include "support/temp_folder.h"

namespace fs = std::filesystem;

// Of the first line: its time to the millisecond, and a process.
constexpr std::uintmax_t kHeadSize = 40;

LogFollower::LogFollower(fs::path log, fs::path before) : m_Log(std::move(log)), m_Before(std::move(before)) {
    // What is there already is read and left out.
    ReadOn(m_Log);
    m_Rest.erase(0, m_Rest.rfind('\n') + 1);
}

LogFollower::Reading LogFollower::ReadOn(const fs::path& file) {
    std::string bytes;
    if (!support::TryReadAll(file, bytes)) return Reading::NotNow;
    if (bytes.size() < m_Offset || !bytes.starts_with(m_Head)) return Reading::AnotherFile;
    m_Rest.append(bytes, m_Offset);
    m_Offset = bytes.size();
    m_Head = bytes.substr(0, kHeadSize);
    return Reading::Done;
}

std::vector<std::string> LogFollower::NewLines() {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(m_Log, error);
    // Between the old log and the new one there is none.
    if (error || size == m_Offset) return {};
    if (ReadOn(m_Log) == Reading::AnotherFile) {
        if (ReadOn(m_Before) == Reading::NotNow) return {};
        m_Offset = 0;
        m_Head.clear();
        ReadOn(m_Log);
    }
    std::vector<std::string> lines;
    for (std::size_t end; (end = m_Rest.find('\n')) != std::string::npos; m_Rest.erase(0, end + 1)) {
        const bool hasReturn = end > 0 && m_Rest[end - 1] == '\r';
        lines.push_back(m_Rest.substr(0, end - (hasReturn ? 1 : 0)));
    }
    return lines;
}
