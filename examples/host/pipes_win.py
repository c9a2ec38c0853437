"""The host's end of a named pipe of Windows."""

import ctypes
import os
from ctypes import wintypes

PIPE_ACCESS_INBOUND = 1
PIPE_ACCESS_OUTBOUND = 2
FILE_FLAG_FIRST_PIPE_INSTANCE = 0x00080000
PIPE_TYPE_MESSAGE = 4
PIPE_READMODE_MESSAGE = 2
PIPE_REJECT_REMOTE_CLIENTS = 8
ERROR_PIPE_CONNECTED = 535
INVALID_HANDLE_VALUE = wintypes.HANDLE(-1).value
SIZE = 4096  # No message is longer.

kernel32 = ctypes.WinDLL("kernel32", use_last_error=True)
kernel32.CreateNamedPipeW.restype = wintypes.HANDLE
kernel32.CreateNamedPipeW.argtypes = [wintypes.LPCWSTR, *[wintypes.DWORD] * 6, wintypes.LPVOID]
kernel32.ConnectNamedPipe.argtypes = [wintypes.HANDLE, wintypes.LPVOID]
kernel32.ReadFile.argtypes = kernel32.WriteFile.argtypes = [
    wintypes.HANDLE,
    wintypes.LPVOID,
    wintypes.DWORD,
    wintypes.LPDWORD,
    wintypes.LPVOID,
]
kernel32.CloseHandle.argtypes = [wintypes.HANDLE]


class Pipe:
    def __init__(self, name, host_writes):
        self.name = "\\\\.\\pipe\\" + name
        self._visitor_access = os.O_RDONLY if host_writes else os.O_WRONLY
        direction = PIPE_ACCESS_OUTBOUND if host_writes else PIPE_ACCESS_INBOUND
        mode = PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_REJECT_REMOTE_CLIENTS
        self._handle = kernel32.CreateNamedPipeW(
            self.name, direction | FILE_FLAG_FIRST_PIPE_INSTANCE, mode, 1, SIZE, SIZE, 0, None
        )
        if self._handle == INVALID_HANDLE_VALUE:
            raise ctypes.WinError(ctypes.get_last_error())

    def accept(self):
        """Waits until the workbench has opened the pipe."""
        connected = kernel32.ConnectNamedPipe(self._handle, None)
        if not connected and ctypes.get_last_error() != ERROR_PIPE_CONNECTED:
            raise ctypes.WinError(ctypes.get_last_error())

    def visit(self):
        """Ends accept() if nobody has opened the pipe yet."""
        try:
            os.close(os.open(self.name, self._visitor_access))
        except OSError:
            pass

    def write(self, message):
        count = wintypes.DWORD()
        if not kernel32.WriteFile(self._handle, message, len(message), ctypes.byref(count), None):
            raise ctypes.WinError(ctypes.get_last_error())

    def read(self):
        """One message; empty when the workbench has gone."""
        buffer = ctypes.create_string_buffer(SIZE)
        count = wintypes.DWORD()
        if not kernel32.ReadFile(self._handle, buffer, SIZE, ctypes.byref(count), None):
            return b""
        return buffer.raw[: count.value]

    def close(self):
        kernel32.CloseHandle(self._handle)
