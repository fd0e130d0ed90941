#pragma once

// The Windows calls that the program and its contract tests make. README.md in this folder says for each of them which
// behaviour is promised and which last error it leaves; what is not on that page is not used.

#include "platform/posix/windows_types.h"

// Last error: one value for each thread.
DWORD GetLastError();
void SetLastError(DWORD code);

// Windows and messages.
ATOM RegisterClassExW(const WNDCLASSEXW* windowClass);
HWND CreateWindowExW(DWORD extendedStyle, LPCWSTR className, LPCWSTR windowName, DWORD style, int x, int y, int width,
                     int height, HWND parent, HMENU menu, HINSTANCE instance, void* parameter);
LONG_PTR SetWindowLongPtrW(HWND window, int index, LONG_PTR value);
LONG_PTR GetWindowLongPtrW(HWND window, int index);
BOOL GetMessageW(MSG* message, HWND window, UINT filterMin, UINT filterMax);
BOOL TranslateMessage(const MSG* message);
LRESULT DispatchMessageW(const MSG* message);
LRESULT DefWindowProcW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
void PostQuitMessage(int exitCode);
BOOL PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
BOOL DestroyWindow(HWND window);

// Events and waits.
HANDLE CreateEventW(SECURITY_ATTRIBUTES* attributes, BOOL manualReset, BOOL initialState, LPCWSTR name);
BOOL SetEvent(HANDLE event);
BOOL RegisterWaitForSingleObject(HANDLE* newWait, HANDLE object, WAITORTIMERCALLBACK callback, void* context,
                                 ULONG milliseconds, ULONG flags);
BOOL UnregisterWaitEx(HANDLE wait, HANDLE completionEvent);
BOOL CloseHandle(HANDLE handle);

// Named pipes.
HANDLE CreateNamedPipeA(const char* name, DWORD openMode, DWORD pipeMode, DWORD maxInstances, DWORD outBufferSize,
                        DWORD inBufferSize, DWORD defaultTimeOut, SECURITY_ATTRIBUTES* attributes);
BOOL ConnectNamedPipe(HANDLE pipe, OVERLAPPED* overlapped);
BOOL DisconnectNamedPipe(HANDLE pipe);
BOOL ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* count, OVERLAPPED* overlapped);
BOOL WriteFile(HANDLE file, const void* buffer, DWORD size, DWORD* count, OVERLAPPED* overlapped);
BOOL GetOverlappedResult(HANDLE file, OVERLAPPED* overlapped, DWORD* count, BOOL wait);

// Security descriptors.
BOOL CreateWellKnownSid(WELL_KNOWN_SID_TYPE type, PSID domainSid, PSID sid, DWORD* size);
void BuildTrusteeWithSidW(TRUSTEE_W* trustee, PSID sid);
DWORD SetEntriesInAclW(ULONG count, EXPLICIT_ACCESS_W* entries, PACL oldAcl, PACL* newAcl);
BOOL InitializeSecurityDescriptor(void* descriptor, DWORD revision);
BOOL SetSecurityDescriptorDacl(void* descriptor, BOOL present, PACL acl, BOOL defaulted);
HLOCAL LocalFree(HLOCAL memory);

// Processes and command lines.
LPWSTR GetCommandLineW();
LPWSTR* CommandLineToArgvW(LPCWSTR commandLine, int* count);
BOOL CreateProcessW(LPCWSTR applicationName, LPWSTR commandLine, SECURITY_ATTRIBUTES* processAttributes,
                    SECURITY_ATTRIBUTES* threadAttributes, BOOL inheritHandles, DWORD flags, void* environment,
                    LPCWSTR currentDirectory, STARTUPINFOW* startupInfo, PROCESS_INFORMATION* information);
HANDLE GetCurrentProcess();
BOOL TerminateProcess(HANDLE process, UINT exitCode);
DWORD GetCurrentProcessId();
DWORD GetCurrentThreadId();

// Probes: token, registry, process list.
BOOL AllocateAndInitializeSid(SID_IDENTIFIER_AUTHORITY* authority, BYTE count, DWORD subAuthority0, DWORD subAuthority1,
                              DWORD subAuthority2, DWORD subAuthority3, DWORD subAuthority4, DWORD subAuthority5,
                              DWORD subAuthority6, DWORD subAuthority7, PSID* sid);
BOOL CheckTokenMembership(HANDLE token, PSID sid, BOOL* isMember);
void* FreeSid(PSID sid);
LSTATUS RegOpenKeyExW(HKEY key, LPCWSTR subKey, DWORD options, DWORD access, HKEY* result);
LSTATUS RegQueryValueExW(HKEY key, LPCWSTR name, DWORD* reserved, DWORD* type, BYTE* data, DWORD* size);
LSTATUS RegCloseKey(HKEY key);
HANDLE CreateToolhelp32Snapshot(DWORD flags, DWORD processId);
BOOL Process32FirstW(HANDLE snapshot, PROCESSENTRY32W* entry);
BOOL Process32NextW(HANDLE snapshot, PROCESSENTRY32W* entry);
HANDLE OpenProcess(DWORD access, BOOL inherit, DWORD processId);
BOOL K32EnumProcessModules(HANDLE process, HMODULE* modules, DWORD size, DWORD* needed);
DWORD K32GetModuleFileNameExW(HANDLE process, HMODULE module, LPWSTR path, DWORD size);

// Modules, environment, directories.
BOOL SetThreadErrorMode(DWORD mode, DWORD* before);
HMODULE LoadLibraryExW(LPCWSTR path, HANDLE reserved, DWORD flags);
FARPROC GetProcAddress(HMODULE module, const char* name);
BOOL FreeLibrary(HMODULE module);
DWORD GetModuleFileNameW(HMODULE module, LPWSTR path, DWORD size);
HMODULE GetModuleHandleW(LPCWSTR name);
DWORD GetEnvironmentVariableA(const char* name, char* value, DWORD size);
DWORD GetEnvironmentVariableW(LPCWSTR name, LPWSTR value, DWORD size);
BOOL SetEnvironmentVariableA(const char* name, const char* value);
DWORD GetCurrentDirectoryW(DWORD size, LPWSTR path);
BOOL SetCurrentDirectoryW(LPCWSTR path);
BOOL PathFileExistsW(LPCWSTR path);

// Files and known folders.
HRESULT SHGetKnownFolderPath(const KNOWNFOLDERID& folder, DWORD flags, HANDLE token, LPWSTR* path);
void CoTaskMemFree(void* memory);
HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* attributes, DWORD disposition,
                   DWORD flags, HANDLE templateFile);
BOOL GetFileSizeEx(HANDLE file, LARGE_INTEGER* size);
DWORD SetFilePointer(HANDLE file, LONG distance, LONG* distanceHigh, DWORD method);
BOOL DeleteFileW(LPCWSTR path);
BOOL MoveFileW(LPCWSTR from, LPCWSTR to);
DWORD GetFileAttributesW(LPCWSTR path);
BOOL CreateDirectoryW(LPCWSTR path, SECURITY_ATTRIBUTES* attributes);

// Time. All of them, and the waits' time-outs, read the layer's one clock.
void GetLocalTime(SYSTEMTIME* time);
void GetSystemTime(SYSTEMTIME* time);
void GetSystemTimeAsFileTime(FILETIME* time);
BOOL SystemTimeToFileTime(const SYSTEMTIME* time, FILETIME* fileTime);
DWORD timeGetTime();

// Text.
void OutputDebugStringW(LPCWSTR text);
DWORD FormatMessageA(DWORD flags, const void* source, DWORD code, DWORD language, char* buffer, DWORD size,
                     void* arguments);
int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR wide, int wideCount, char* narrow, int narrowSize,
                        const char* defaultChar, BOOL* usedDefaultChar);
int MultiByteToWideChar(UINT codePage, DWORD flags, const char* narrow, int narrowCount, LPWSTR wide, int wideSize);

// The program's entry, which the layer's own `main` calls.
int WINAPI wWinMain(HINSTANCE instance, HINSTANCE previousInstance, LPWSTR commandLine, int showCommand);
