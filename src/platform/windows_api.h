#pragma once

// The one door to the platform: code outside this folder includes no other platform header.
//
// On Windows it is the system's own headers. Elsewhere it declares the calls, types and constants that the program
// uses, under their Windows names and with their Windows values; platform/posix/README.md says what each of them
// promises there. Wide text is UTF-16 on both: write literals as WIDE_TEXT("...").

#ifdef _WIN32

#include <windows.h>
// The order matters: the others need the types of windows.h.
#include <aclapi.h>
#include <knownfolders.h>
#include <mmsystem.h>
#include <objbase.h>
#include <psapi.h>
#include <shellapi.h>
#include <shlobj.h>
#include <shlwapi.h>
#include <tlhelp32.h>

#define WIDE_TEXT(text) L##text

#else

#include "platform/posix/windows_calls.h"
#include "platform/posix/windows_types.h"

#define WIDE_TEXT(text) u##text

#endif

// Lets the compiler check the arguments of a printf-like or scanf-like function against its format. With mingw-w64 the
// C++ runtime uses that project's own formatter, which follows the C standard and not msvcrt.
#if defined(__MINGW32__)
#define PRINTF_LIKE(format_at, arguments_at) __attribute__((format(__MINGW_PRINTF_FORMAT, format_at, arguments_at)))
#define SCANF_LIKE(format_at, arguments_at)  __attribute__((format(__MINGW_SCANF_FORMAT, format_at, arguments_at)))
#elif defined(__GNUC__)
#define PRINTF_LIKE(format_at, arguments_at) __attribute__((format(printf, format_at, arguments_at)))
#define SCANF_LIKE(format_at, arguments_at)  __attribute__((format(scanf, format_at, arguments_at)))
#else
#define PRINTF_LIKE(format_at, arguments_at)
#define SCANF_LIKE(format_at, arguments_at)
#endif
