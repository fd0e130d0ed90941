#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "platform/posix/allocation_faults.h"
#include "platform/posix/fault_check.h"
#include "platform/posix/handle_table.h"
#include "platform/posix/last_error.h"
#include "platform/posix/native_paths.h"
#include "platform/posix/pipe_end.h"
#include "platform/posix/windows_calls.h"

using namespace posix_layer;

namespace {

class File : public Object {
  public:
    explicit File(int descriptor) : m_Descriptor(descriptor) {}
    ~File() override { close(m_Descriptor); }

    int Descriptor() const { return m_Descriptor; }

  private:
    const int m_Descriptor;
};

// -1, with errno, if that fails. `existed` is true if the file was there before.
int OpenOrCreate(const std::string& path, int flags, bool mayCreate, bool& existed) {
    for (;;) {
        existed = true;
        int descriptor = open(path.c_str(), flags);
        if (descriptor >= 0 || errno != ENOENT || !mayCreate) return descriptor;
        existed = false;
        descriptor = open(path.c_str(), flags | O_CREAT | O_EXCL, 0666);
        // Somebody else may have made it in between.
        if (descriptor >= 0 || errno != EEXIST) return descriptor;
    }
}

// Flags for `open`, or -1 for an access that isn't offered.
int OpenFlags(DWORD access) {
    const bool reads = (access & (GENERIC_READ | FILE_READ_DATA)) != 0;
    const bool appends = (access & FILE_APPEND_DATA) != 0;
    const bool writes = (access & GENERIC_WRITE) != 0;
    const int common = O_CLOEXEC | O_NOCTTY | O_NONBLOCK | (appends && !writes ? O_APPEND : 0);
    if (appends || writes) return common | (reads ? O_RDWR : O_WRONLY);
    return reads ? common | O_RDONLY : -1;
}

bool IsFolder(int descriptor) {
    struct stat status;
    return fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode);
}

// For the calls that take a path: the result of a system call that answers 0, or the last error.
BOOL Finish(int result, const std::string& path) {
    if (result == 0) return TRUE;
    SetLastErrorFromErrno(path);
    return FALSE;
}

// All of it, or the result of the write that failed.
ssize_t WriteAll(int descriptor, const char* bytes, std::size_t size) {
    std::size_t written = 0;
    while (written < size) {
        const ssize_t result = write(descriptor, bytes + written, size - written);
        if (result < 0) return result;
        written += static_cast<std::size_t>(result);
    }
    return static_cast<ssize_t>(written);
}

// For reads and writes of a file: its result becomes the count, or the last error.
BOOL FinishTransfer(ssize_t result, DWORD* count) {
    *count = result < 0 ? 0 : static_cast<DWORD>(result);
    return Finish(result < 0 ? -1 : 0, {});
}

std::shared_ptr<File> FindForTransfer(HANDLE handle, const OVERLAPPED* overlapped) {
    auto file = Find<File>(handle);
    if (file == nullptr || overlapped == nullptr) return file;
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
}

}  // namespace

HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD, SECURITY_ATTRIBUTES*, DWORD disposition, DWORD, HANDLE) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return INVALID_HANDLE_VALUE;
    const int flags = OpenFlags(access);
    if (flags == -1 || (disposition != CREATE_ALWAYS && disposition != OPEN_EXISTING && disposition != OPEN_ALWAYS))
        return WithLastError(ERROR_INVALID_PARAMETER, INVALID_HANDLE_VALUE);
    const std::string native = ToNativePath(path);
    bool existed = false;
    const int descriptor = OpenOrCreate(native, flags, disposition != OPEN_EXISTING, existed);
    if (descriptor < 0) {
        SetLastErrorFromErrno(native);
        return INVALID_HANDLE_VALUE;
    }
    const auto file = std::make_shared<File>(descriptor);
    if (IsFolder(descriptor)) return WithLastError(ERROR_ACCESS_DENIED, INVALID_HANDLE_VALUE);
    if (disposition == CREATE_ALWAYS && ftruncate(descriptor, 0) != 0) {
        SetLastErrorFromErrno(native);
        return INVALID_HANDLE_VALUE;
    }
    SetLastError(existed && disposition != OPEN_EXISTING ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return AddHandle(file);
}

BOOL ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* count, OVERLAPPED* overlapped) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return FALSE;
    if (const auto pipe = std::dynamic_pointer_cast<PipeEnd>(FindObject(file))) {
        return pipe->Read(buffer, size, count, overlapped);
    }
    const auto object = FindForTransfer(file, overlapped);
    return object != nullptr && FinishTransfer(read(object->Descriptor(), buffer, size), count);
}

BOOL WriteFile(HANDLE file, const void* buffer, DWORD size, DWORD* count, OVERLAPPED* overlapped) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return FALSE;
    if (const auto pipe = std::dynamic_pointer_cast<PipeEnd>(FindObject(file))) {
        return pipe->Write(buffer, size, count, overlapped);
    }
    const auto object = FindForTransfer(file, overlapped);
    return object != nullptr &&
           FinishTransfer(WriteAll(object->Descriptor(), static_cast<const char*>(buffer), size), count);
}

BOOL GetFileSizeEx(HANDLE file, LARGE_INTEGER* size) {
    if (Faulted(__func__)) return FALSE;
    const auto object = Find<File>(file);
    if (object == nullptr) return FALSE;
    struct stat status;
    if (!Finish(fstat(object->Descriptor(), &status), {})) return FALSE;
    size->QuadPart = status.st_size;
    return TRUE;
}

DWORD SetFilePointer(HANDLE file, LONG distance, LONG* distanceHigh, DWORD method) {
    if (Faulted(__func__)) return INVALID_SET_FILE_POINTER;
    const auto object = Find<File>(file);
    if (object == nullptr) return INVALID_SET_FILE_POINTER;
    if (method != FILE_END || distanceHigh != nullptr)
        return WithLastError(ERROR_INVALID_PARAMETER, INVALID_SET_FILE_POINTER);
    const off_t position = lseek(object->Descriptor(), distance, SEEK_END);
    if (position < 0 || position >= INVALID_SET_FILE_POINTER)
        return WithLastError(ERROR_INVALID_PARAMETER, INVALID_SET_FILE_POINTER);
    return static_cast<DWORD>(position);
}

BOOL DeleteFileW(LPCWSTR path) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return FALSE;
    const std::string native = ToNativePath(path);
    return Finish(unlink(native.c_str()), native);
}

BOOL MoveFileW(LPCWSTR from, LPCWSTR to) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return FALSE;
    const std::string source = ToNativePath(from);
    const std::string target = ToNativePath(to);
    if (renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) return TRUE;
    const int error = errno;
    const bool hasSource = access(source.c_str(), F_OK) == 0;
    errno = error;
    // What isn't there is the source, or else the folder of the target.
    SetLastErrorFromErrno(hasSource ? target : source);
    return FALSE;
}

DWORD GetFileAttributesW(LPCWSTR path) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return INVALID_FILE_ATTRIBUTES;
    const std::string native = ToNativePath(path);
    struct stat status;
    if (!Finish(stat(native.c_str(), &status), native)) return INVALID_FILE_ATTRIBUTES;
    return S_ISDIR(status.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
}

BOOL CreateDirectoryW(LPCWSTR path, SECURITY_ATTRIBUTES*) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return FALSE;
    const std::string native = ToNativePath(path);
    return Finish(mkdir(native.c_str(), 0777), native);
}

BOOL PathFileExistsW(LPCWSTR path) {
    const SystemAllocations scope;
    if (Faulted(__func__)) return FALSE;
    const std::string native = ToNativePath(path);
    return Finish(access(native.c_str(), F_OK), native);
}
