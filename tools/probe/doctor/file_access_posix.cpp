#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "tools/probe/doctor/file_access.h"

std::string WhyNotWritable(const std::filesystem::path& file) {
    const auto reason = [] { return std::generic_category().message(errno); };
    struct stat status;
    if (stat(file.c_str(), &status) == 0) {
        if (S_ISDIR(status.st_mode)) return std::generic_category().message(EISDIR);
        return access(file.c_str(), W_OK) == 0 ? "" : reason();
    }
    return access(file.parent_path().c_str(), W_OK | X_OK) == 0 ? "" : reason();
}
