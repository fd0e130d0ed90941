#include "platform/posix/native_paths.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

#include "platform/posix/text_conversion.h"
#include "platform/posix/windows_calls.h"

namespace posix_layer {

std::string ToNativePath(LPCWSTR path) {
    std::string native = ToUtf8(path);
    std::replace(native.begin(), native.end(), '\\', '/');
    return native;
}

std::string ReadLink(const std::string& link) {
    char target[PATH_MAX];
    const ssize_t length = readlink(link.c_str(), target, sizeof target);
    return length < 0 ? std::string() : std::string(target, static_cast<std::size_t>(length));
}

static bool FolderOfPathExists(const std::string& path) {
    const std::size_t separator = path.find_last_of('/', path.find_last_not_of('/'));
    if (separator == std::string::npos || separator == 0) return true;
    struct stat status;
    return stat(path.substr(0, separator).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

static DWORD ErrorOf(int error, const std::string& path) {
    switch (error) {
        case ENOENT:
            return path.empty() || FolderOfPathExists(path) ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
        case ENOTDIR:
            return ERROR_PATH_NOT_FOUND;
        case EACCES:
        case EPERM:
        case EROFS:
        case EISDIR:
            return ERROR_ACCESS_DENIED;
        case EEXIST:
        case ENOTEMPTY:
            return ERROR_ALREADY_EXISTS;
        case ENOMEM:
        case EMFILE:
        case ENFILE:
        case ENOBUFS:
            return ERROR_NOT_ENOUGH_MEMORY;
        case ENOSPC:
            return ERROR_DISK_FULL;
        case ENOEXEC:
            return ERROR_BAD_EXE_FORMAT;
        case EBADF:
            return ERROR_ACCESS_DENIED;  // open, but not for this
        case EINVAL:
            return ERROR_INVALID_PARAMETER;
        case ENAMETOOLONG:
        case ELOOP:
            return ERROR_INVALID_NAME;
        default:
            return ERROR_GEN_FAILURE;
    }
}

DWORD CopyPath(const std::string& path, LPWSTR buffer, DWORD size) {
    const std::u16string wide = ToWide(path);
    const DWORD length = std::min(static_cast<DWORD>(wide.size()), size - 1);
    std::copy_n(wide.c_str(), length, buffer);
    buffer[length] = 0;
    if (length == wide.size()) return length;
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return size;
}

void SetLastErrorFromErrno(const std::string& path) {
    SetLastError(ErrorOf(errno, path));
}

}  // namespace posix_layer
