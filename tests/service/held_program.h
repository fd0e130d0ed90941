#pragma once

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <filesystem>

// A program whose start stays where it is, inside the system's call, until it is let go.
class HeldProgram {
  public:
    explicit HeldProgram(const std::filesystem::path& file) {
        std::filesystem::copy_file("/bin/true", file);
        m_File = open(file.c_str(), O_RDONLY | O_CLOEXEC);
        // Whoever opens it waits for the lease's end. The signal that tells of that is one that is ignored.
        fcntl(m_File, F_SETSIG, SIGURG);
        m_IsHeld = fcntl(m_File, F_SETLEASE, F_WRLCK) == 0;
    }
    ~HeldProgram() { close(m_File); }
    HeldProgram(const HeldProgram&) = delete;
    HeldProgram& operator=(const HeldProgram&) = delete;

    // False on a file system that knows no leases.
    bool IsHeld() const { return m_IsHeld; }
    bool IsBeingStarted() const { return fcntl(m_File, F_GETLEASE) != F_WRLCK; }
    void LetGo() const { fcntl(m_File, F_SETLEASE, F_UNLCK); }

  private:
    int m_File;
    bool m_IsHeld = false;
};
