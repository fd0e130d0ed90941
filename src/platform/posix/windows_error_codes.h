#pragma once

// The last errors that the layer sets or the program looks at, with the values of Windows' "System Error Codes". Each
// is a DWORD.

#include <cstdint>

inline constexpr std::uint32_t ERROR_SUCCESS = 0;
inline constexpr std::uint32_t ERROR_FILE_NOT_FOUND = 2;
inline constexpr std::uint32_t ERROR_PATH_NOT_FOUND = 3;
inline constexpr std::uint32_t ERROR_ACCESS_DENIED = 5;
inline constexpr std::uint32_t ERROR_INVALID_HANDLE = 6;
inline constexpr std::uint32_t ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr std::uint32_t ERROR_NO_MORE_FILES = 18;
inline constexpr std::uint32_t ERROR_BAD_LENGTH = 24;
inline constexpr std::uint32_t ERROR_GEN_FAILURE = 31;
inline constexpr std::uint32_t ERROR_INVALID_PARAMETER = 87;
inline constexpr std::uint32_t ERROR_BROKEN_PIPE = 109;
inline constexpr std::uint32_t ERROR_DISK_FULL = 112;
inline constexpr std::uint32_t ERROR_INSUFFICIENT_BUFFER = 122;
inline constexpr std::uint32_t ERROR_INVALID_NAME = 123;
inline constexpr std::uint32_t ERROR_MOD_NOT_FOUND = 126;
inline constexpr std::uint32_t ERROR_PROC_NOT_FOUND = 127;
inline constexpr std::uint32_t ERROR_ALREADY_EXISTS = 183;
inline constexpr std::uint32_t ERROR_BAD_EXE_FORMAT = 193;
inline constexpr std::uint32_t ERROR_ENVVAR_NOT_FOUND = 203;
inline constexpr std::uint32_t ERROR_PIPE_BUSY = 231;
inline constexpr std::uint32_t ERROR_NO_DATA = 232;
inline constexpr std::uint32_t ERROR_PIPE_NOT_CONNECTED = 233;
inline constexpr std::uint32_t ERROR_MORE_DATA = 234;
inline constexpr std::uint32_t ERROR_DIRECTORY = 267;
inline constexpr std::uint32_t ERROR_MR_MID_NOT_FOUND = 317;
inline constexpr std::uint32_t ERROR_PIPE_CONNECTED = 535;
inline constexpr std::uint32_t ERROR_PIPE_LISTENING = 536;
inline constexpr std::uint32_t ERROR_OPERATION_ABORTED = 995;
inline constexpr std::uint32_t ERROR_IO_INCOMPLETE = 996;
inline constexpr std::uint32_t ERROR_IO_PENDING = 997;
inline constexpr std::uint32_t ERROR_NO_TOKEN = 1008;
inline constexpr std::uint32_t ERROR_UNKNOWN_REVISION = 1305;
inline constexpr std::uint32_t ERROR_INVALID_WINDOW_HANDLE = 1400;
inline constexpr std::uint32_t ERROR_CANNOT_FIND_WND_CLASS = 1407;
inline constexpr std::uint32_t ERROR_CLASS_ALREADY_EXISTS = 1410;
inline constexpr std::uint32_t ERROR_INVALID_INDEX = 1413;
