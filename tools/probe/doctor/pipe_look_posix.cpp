#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

#include "support/system.h"
#include "tools/probe/doctor/pipe_look.h"
#include "tools/probe/doctor/pipe_owner_posix.h"

namespace {

std::string SocketFile(const std::string& name) {
    for (const char* const variable : {"TOLLMERE_PIPE_DIR", "XDG_RUNTIME_DIR"}) {
        const std::string folder = support::Variable(variable).value_or("");
        if (!folder.empty()) return folder + "/" + name;
    }
    return "/tmp/tollmere-" + std::to_string(getuid()) + "/" + name;
}

// A socket's row: "NUMBER: COUNT PROTOCOL FLAGS TYPE STATE INODE PATH".
bool IsListening(const std::string& path) {
    const std::string kAccepts = "00010000";
    std::ifstream sockets("/proc/net/unix");
    for (std::string line; std::getline(sockets, line);) {
        std::istringstream words(line);
        std::string number, count, protocol, flags, type, state, inode, place;
        words >> number >> count >> protocol >> flags >> type >> state >> inode;
        std::getline(words >> std::ws, place);
        if (flags == kAccepts && place == path) return true;
    }
    return false;
}

}  // namespace

// Beside the socket a file is locked as long as there is a pipe. It isn't touched, because a helper that starts would
// find it taken. The system's list has a row for it: "7: FLOCK ADVISORY WRITE 4242 08:01:1234 0 EOF".
std::uint32_t PipeOwner(const std::string& name) {
    struct stat status;
    if (stat((SocketFile(name) + ".lock").c_str(), &status) != 0) return 0;
    const std::string inode = ":" + std::to_string(status.st_ino);
    std::ifstream locks("/proc/locks");
    for (std::string line; std::getline(locks, line);) {
        std::istringstream words(line);
        std::string number, kind, mode, access, file;
        std::uint32_t owner = 0;
        words >> number >> kind >> mode >> access >> owner >> file;
        if (kind == "FLOCK" && file.ends_with(inode)) return owner;
    }
    return 0;
}

PipeState LookAtPipe(const std::string& name) {
    if (PipeOwner(name) == 0) return PipeState::None;
    return IsListening(SocketFile(name)) ? PipeState::Waiting : PipeState::Busy;
}
