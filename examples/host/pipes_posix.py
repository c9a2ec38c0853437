"""The host's end of a pipe as the library's Linux build has them: a socket of packets."""

import os
import socket
import struct
from contextlib import suppress

GRANTED = struct.pack("=III", 0, 4, 0)  # no error, a pipe of messages, no waiting time
REQUEST_SIZE = 8
PACKET_SIZE = 1 + 32 * 1024  # a flag and at most so much of a message


class Pipe:
    def __init__(self, name, host_writes):
        # The direction is the workbench's to keep: a socket has both.
        base = os.environ.get("XDG_RUNTIME_DIR", "")
        folder = f"{base}/pavo" if base.startswith("/") else f"/tmp/pavo-{os.geteuid()}"
        os.makedirs(folder, mode=0o700, exist_ok=True)
        self.name = "\\\\.\\pipe\\" + name
        self._path = f"{folder}/{name}"
        self._listener = socket.socket(socket.AF_UNIX, socket.SOCK_SEQPACKET)
        self._listener.bind(self._path)
        self._listener.listen(1)
        self._socket = None

    def accept(self):
        """Waits until the workbench has opened the pipe."""
        self._socket, _ = self._listener.accept()
        self._stop_listening()
        if not self._socket.recv(REQUEST_SIZE):
            raise ConnectionError("nobody has opened the pipe")
        self._socket.send(GRANTED)

    def visit(self):
        """Ends accept() if nobody has opened the pipe yet."""
        with socket.socket(socket.AF_UNIX, socket.SOCK_SEQPACKET) as visitor:
            try:
                visitor.connect(self._path)
            except OSError:
                pass

    def write(self, message):
        self._socket.send(b"\0" + message)  # 0: no more of this message follows

    def read(self):
        """One message; empty when the workbench has gone."""
        return self._socket.recv(PACKET_SIZE)[1:]

    def close(self):
        self._stop_listening()
        if self._socket:
            self._socket.close()

    def _stop_listening(self):
        self._listener.close()
        with suppress(FileNotFoundError):
            os.unlink(self._path)
