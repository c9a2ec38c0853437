#pragma once

// The system calls of this tree, by their Windows names on every platform. On Windows they are the
// system's own; elsewhere platform/posix supplies functions of the same names and contracts, just
// those that are used and just as they are used: synchronous, so that every OVERLAPPED is null.

#ifdef _WIN32

#include <windows.h>

#else

#include <cstdint>

using BOOL = int;
using DWORD = std::uint32_t;
using HANDLE = void*;
using LPCSTR = const char*;
using LPVOID = void*;
using LPCVOID = const void*;
using LPDWORD = DWORD*;
using LPSECURITY_ATTRIBUTES = struct SECURITY_ATTRIBUTES*;
using LPOVERLAPPED = struct OVERLAPPED*;
using LPCWSTR = const wchar_t*;
using UINT = unsigned int;
using WPARAM = std::uint64_t;
using LPARAM = std::int64_t;
// Names a window to every process of the user.
using HWND = struct Window*;

// A window message as it reaches Qt's native event filters ("windows_generic_MSG").
struct MSG
{
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
};

// NOLINTNEXTLINE(performance-no-int-to-ptr): the value is the contract.
inline void* const INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(std::intptr_t{-1});

constexpr DWORD GENERIC_READ = 0x80000000;
constexpr DWORD GENERIC_WRITE = 0x40000000;
constexpr DWORD FILE_WRITE_ATTRIBUTES = 0x00000100;
constexpr DWORD OPEN_EXISTING = 3;
constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x00000080;

constexpr DWORD PIPE_ACCESS_INBOUND = 0x00000001;
constexpr DWORD PIPE_ACCESS_OUTBOUND = 0x00000002;
constexpr DWORD PIPE_ACCESS_DUPLEX = 0x00000003;
constexpr DWORD FILE_FLAG_FIRST_PIPE_INSTANCE = 0x00080000;

constexpr DWORD PIPE_WAIT = 0x00000000;
constexpr DWORD PIPE_READMODE_BYTE = 0x00000000;
constexpr DWORD PIPE_READMODE_MESSAGE = 0x00000002;
constexpr DWORD PIPE_TYPE_BYTE = 0x00000000;
constexpr DWORD PIPE_TYPE_MESSAGE = 0x00000004;
constexpr DWORD PIPE_REJECT_REMOTE_CLIENTS = 0x00000008;
constexpr DWORD PIPE_UNLIMITED_INSTANCES = 255;

constexpr DWORD NMPWAIT_USE_DEFAULT_WAIT = 0x00000000;
constexpr DWORD NMPWAIT_WAIT_FOREVER = 0xffffffff;

constexpr DWORD ERROR_SUCCESS = 0;
constexpr DWORD ERROR_INVALID_FUNCTION = 1;
constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
constexpr DWORD ERROR_PATH_NOT_FOUND = 3;
constexpr DWORD ERROR_TOO_MANY_OPEN_FILES = 4;
constexpr DWORD ERROR_ACCESS_DENIED = 5;
constexpr DWORD ERROR_INVALID_HANDLE = 6;
constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
constexpr DWORD ERROR_INVALID_DATA = 13;
constexpr DWORD ERROR_GEN_FAILURE = 31;
constexpr DWORD ERROR_INVALID_PARAMETER = 87;
constexpr DWORD ERROR_BROKEN_PIPE = 109;
constexpr DWORD ERROR_SEM_TIMEOUT = 121;
constexpr DWORD ERROR_INVALID_NAME = 123;
constexpr DWORD ERROR_PIPE_BUSY = 231;
constexpr DWORD ERROR_NO_DATA = 232;
constexpr DWORD ERROR_PIPE_NOT_CONNECTED = 233;
constexpr DWORD ERROR_MORE_DATA = 234;
constexpr DWORD ERROR_PIPE_CONNECTED = 535;
constexpr DWORD ERROR_PIPE_LISTENING = 536;
constexpr DWORD ERROR_OPERATION_ABORTED = 995;
constexpr DWORD ERROR_NOACCESS = 998;
constexpr DWORD ERROR_INVALID_WINDOW_HANDLE = 1400;
constexpr DWORD ERROR_NOT_ENOUGH_QUOTA = 1816;

DWORD GetLastError();
BOOL CloseHandle(HANDLE handle);

// The client's end.
HANDLE CreateFileA(LPCSTR name, DWORD access, DWORD shareMode, LPSECURITY_ATTRIBUTES security,
                   DWORD disposition, DWORD flags, HANDLE templateFile);
BOOL WaitNamedPipeA(LPCSTR name, DWORD milliseconds);
BOOL SetNamedPipeHandleState(HANDLE handle, LPDWORD mode, LPDWORD maxCollectionCount,
                             LPDWORD collectDataTimeout);

// Either end. Windows serves one call on a handle at a time: there, a blocked read holds up a
// write.
BOOL ReadFile(HANDLE handle, LPVOID buffer, DWORD size, LPDWORD read, LPOVERLAPPED overlapped);
BOOL WriteFile(HANDLE handle, LPCVOID data, DWORD size, LPDWORD written, LPOVERLAPPED overlapped);

// The host's end. All instances of a name belong to one process.
HANDLE CreateNamedPipeA(LPCSTR name, DWORD openMode, DWORD pipeMode, DWORD maxInstances,
                        DWORD outBufferSize, DWORD inBufferSize, DWORD defaultTimeOut,
                        LPSECURITY_ATTRIBUTES security);
BOOL ConnectNamedPipe(HANDLE handle, LPOVERLAPPED overlapped);
BOOL DisconnectNamedPipe(HANDLE handle);

// Window messages. A MessageWindow owns a window. Names, classes and titles are compared without
// regard to case.
UINT RegisterWindowMessageW(LPCWSTR name);
HWND FindWindowW(LPCWSTR className, LPCWSTR title);
BOOL IsWindow(HWND window);
BOOL IsWindowVisible(HWND window);
BOOL PostMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

#endif
