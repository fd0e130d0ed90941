#pragma once

// Types, records and constants of the Windows calls in windows_calls.h: same names, same values, same layout where the
// program relies on it. See README.md in this folder.

#include <cstddef>
#include <cstdint>

#include "platform/posix/windows_error_codes.h"

#define WINAPI
#define CALLBACK

using BOOL = int;
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = unsigned int;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using LONGLONG = std::int64_t;
using ULONG_PTR = std::uintptr_t;
using LONG_PTR = std::intptr_t;
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;
using HRESULT = std::int32_t;
using LSTATUS = LONG;
using ATOM = WORD;
using WCHAR = char16_t;
using LPWSTR = WCHAR*;
using LPCWSTR = const WCHAR*;
using HANDLE = void*;
using HLOCAL = void*;
using HKEY = void*;
using PSID = void*;
using HWND = struct HWND__*;
using HINSTANCE = struct HINSTANCE__*;
using HMODULE = HINSTANCE;
using HMENU = struct HMENU__*;
using PACL = struct ACL*;
using FARPROC = std::intptr_t (*)();

inline constexpr BOOL TRUE = 1;
inline constexpr BOOL FALSE = 0;
inline constexpr DWORD INFINITE = 0xFFFFFFFF;
inline constexpr DWORD MAX_PATH = 260;
inline constexpr HRESULT S_OK = 0;
// A macro as on Windows: no pointer with all bits set can be a constant expression.
#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1)))

// Windows and messages.
inline constexpr UINT WM_DESTROY = 0x0002;
inline constexpr UINT WM_CLOSE = 0x0010;
inline constexpr UINT WM_QUIT = 0x0012;
inline constexpr int GWLP_USERDATA = -21;
#define HWND_MESSAGE (reinterpret_cast<HWND>(static_cast<LONG_PTR>(-3)))

using WNDPROC = LRESULT(CALLBACK*)(HWND, UINT, WPARAM, LPARAM);

struct WNDCLASSEXW {
    UINT cbSize;
    UINT style;
    WNDPROC lpfnWndProc;
    int cbClsExtra;
    int cbWndExtra;
    HINSTANCE hInstance;
    void* hIcon;
    void* hCursor;
    void* hbrBackground;
    LPCWSTR lpszMenuName;
    LPCWSTR lpszClassName;
    void* hIconSm;
};

struct POINT {
    LONG x, y;
};

struct MSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;
    POINT pt;
};

// Waits.
inline constexpr ULONG WT_EXECUTEINWAITTHREAD = 0x4;
inline constexpr ULONG WT_EXECUTEONLYONCE = 0x8;
using WAITORTIMERCALLBACK = void(CALLBACK*)(void* parameter, BYTE timerOrWaitFired);
using BOOLEAN = BYTE;

// Overlapped input and output, pipes.
struct OVERLAPPED {
    ULONG_PTR Internal;
    ULONG_PTR InternalHigh;
    void* Pointer;  // a position in Windows' form; pipes have none
    HANDLE hEvent;
};

inline constexpr DWORD PIPE_ACCESS_DUPLEX = 0x3;
inline constexpr DWORD FILE_FLAG_OVERLAPPED = 0x40000000;
inline constexpr DWORD PIPE_TYPE_BYTE = 0;
inline constexpr DWORD PIPE_READMODE_BYTE = 0;
inline constexpr DWORD PIPE_WAIT = 0;
inline constexpr DWORD PIPE_ACCEPT_REMOTE_CLIENTS = 0;

// Security descriptors, tokens, registry.
struct SECURITY_ATTRIBUTES {
    DWORD nLength;
    void* lpSecurityDescriptor;
    BOOL bInheritHandle;
};
struct SECURITY_DESCRIPTOR {
    BYTE Revision;
    BYTE Sbz1;
    WORD Control;
    PSID Owner;
    PSID Group;
    PACL Sacl;
    PACL Dacl;
};
struct SID_IDENTIFIER_AUTHORITY {
    BYTE Value[6];
};
struct TRUSTEE_W {
    TRUSTEE_W* pMultipleTrustee;
    int MultipleTrusteeOperation;
    int TrusteeForm;
    int TrusteeType;
    LPWSTR ptstrName;
};
enum ACCESS_MODE { NOT_USED_ACCESS = 0, GRANT_ACCESS = 1 };
struct EXPLICIT_ACCESS_W {
    DWORD grfAccessPermissions;
    ACCESS_MODE grfAccessMode;
    DWORD grfInheritance;
    TRUSTEE_W Trustee;
};
enum WELL_KNOWN_SID_TYPE { WinAuthenticatedUserSid = 17 };

inline constexpr DWORD SECURITY_MAX_SID_SIZE = 68;
inline constexpr DWORD SECURITY_DESCRIPTOR_REVISION = 1;
inline constexpr DWORD GENERIC_READ = 0x80000000;
inline constexpr DWORD GENERIC_WRITE = 0x40000000;
inline constexpr DWORD NO_INHERITANCE = 0;
#define SECURITY_NT_AUTHORITY \
    { 0, 0, 0, 0, 0, 5 }
inline constexpr DWORD SECURITY_BUILTIN_DOMAIN_RID = 32;
inline constexpr DWORD DOMAIN_ALIAS_RID_ADMINS = 544;

#define HKEY_LOCAL_MACHINE (reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(0x80000002)))
inline constexpr DWORD KEY_READ = 0x20019;

// Processes.
struct STARTUPINFOW {
    DWORD cb;
    LPWSTR lpReserved;
    LPWSTR lpDesktop;
    LPWSTR lpTitle;
    DWORD dwX, dwY, dwXSize, dwYSize, dwXCountChars, dwYCountChars, dwFillAttribute, dwFlags;
    WORD wShowWindow;
    WORD cbReserved2;
    BYTE* lpReserved2;
    HANDLE hStdInput, hStdOutput, hStdError;
};
struct PROCESS_INFORMATION {
    HANDLE hProcess;
    HANDLE hThread;
    DWORD dwProcessId;
    DWORD dwThreadId;
};
struct PROCESSENTRY32W {
    DWORD dwSize;
    DWORD cntUsage;
    DWORD th32ProcessID;
    ULONG_PTR th32DefaultHeapID;
    DWORD th32ModuleID;
    DWORD cntThreads;
    DWORD th32ParentProcessID;
    LONG pcPriClassBase;
    DWORD dwFlags;
    WCHAR szExeFile[MAX_PATH];
};

inline constexpr DWORD TH32CS_SNAPPROCESS = 0x2;
inline constexpr DWORD SYNCHRONIZE = 0x100000;
inline constexpr DWORD PROCESS_QUERY_INFORMATION = 0x400;
inline constexpr DWORD PROCESS_VM_READ = 0x10;
inline constexpr DWORD SEM_FAILCRITICALERRORS = 0x1;
inline constexpr DWORD LOAD_WITH_ALTERED_SEARCH_PATH = 0x8;

// Files and known folders.
struct GUID {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];
};
using KNOWNFOLDERID = GUID;
inline constexpr KNOWNFOLDERID FOLDERID_ProgramData = {
    0x62AB5D82, 0xFDC1, 0x4DC3, {0xA9, 0xDD, 0x07, 0x0D, 0x1D, 0x49, 0x5D, 0x97}};
inline constexpr KNOWNFOLDERID FOLDERID_LocalAppData = {
    0xF1B32785, 0x6FBA, 0x4FCF, {0x9D, 0x55, 0x7B, 0x8E, 0x7F, 0x15, 0x70, 0x91}};

union LARGE_INTEGER {
    __extension__ struct {
        DWORD LowPart;
        LONG HighPart;
    };
    LONGLONG QuadPart;
};

inline constexpr DWORD FILE_READ_DATA = 0x1;
inline constexpr DWORD FILE_APPEND_DATA = 0x4;
inline constexpr DWORD FILE_SHARE_READ = 0x1;
inline constexpr DWORD FILE_SHARE_WRITE = 0x2;
inline constexpr DWORD CREATE_ALWAYS = 2;
inline constexpr DWORD OPEN_EXISTING = 3;
inline constexpr DWORD OPEN_ALWAYS = 4;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
inline constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;
inline constexpr DWORD FILE_END = 2;
inline constexpr DWORD INVALID_SET_FILE_POINTER = 0xFFFFFFFF;

// Time and text.
struct SYSTEMTIME {
    WORD wYear, wMonth, wDayOfWeek, wDay, wHour, wMinute, wSecond, wMilliseconds;
};
struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

inline constexpr UINT CP_UTF8 = 65001;
inline constexpr DWORD FORMAT_MESSAGE_IGNORE_INSERTS = 0x200;
inline constexpr DWORD FORMAT_MESSAGE_FROM_SYSTEM = 0x1000;
