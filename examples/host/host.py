"""A host in Python. It makes both pipes, starts the workbench that its arguments name, logs an
account in, opens a conversation, changes the presence and goes away:

    python3 host.py WORKBENCH [ARGUMENTS...]

It does one thing after the other, so it hangs if the workbench does, though not if that ends.
"""

import json
import os
import struct
import subprocess
import sys
import threading
from contextlib import closing

if os.name == "nt":
    from pipes_win import Pipe
else:
    from pipes_posix import Pipe


def show(direction, name, arguments):
    text = json.dumps(arguments, separators=(",", ":"), ensure_ascii=False)
    # In one go, since the workbench prints on the same output.
    sys.stdout.write(f"{direction} {name} {text}\n")
    sys.stdout.flush()


def send(pipe, name, *arguments):
    show(">", name, arguments)
    message = {"name": name, "source": "host", "sequence": 0, "arguments": arguments}
    text = json.dumps(message, ensure_ascii=False).encode()
    pipe.write(struct.pack("<I", len(text)) + text)


END = b'","sequence":0,"source":"lx"}'


def text_of(frame):
    """The JSON text of a frame. One that is not all ASCII comes shorter than its length says; what is
    missing stands behind the arguments and is the same in every message."""
    text = frame[4:]
    missing = int.from_bytes(frame[:4], "little") - len(text)
    return text + END[-missing:] if 0 < missing <= len(END) else text


def wait_for(pipe, *names):
    """Reads until a message of each name has come, in whichever order."""
    names = list(names)
    while names:
        frame = pipe.read()
        if not frame:
            raise ConnectionError("the workbench has gone")
        try:
            message = json.loads(text_of(frame))
            name, arguments = message["name"], message["arguments"]
        except (ValueError, KeyError, TypeError):
            continue  # It is no message.
        show("<", name, arguments)
        if name in names:
            names.remove(name)


def converse(to_workbench, from_workbench):
    to_workbench.accept()
    from_workbench.accept()
    send(to_workbench, "Login", "waiter", False, 1, "desktop", "", "secret")
    wait_for(from_workbench, "StartupCompleted", "ChangeStatusCallback")
    send(to_workbench, "OpenLXWindow", "customer-7", 3, "order-42")
    send(to_workbench, "ChangeStatus", 2)
    wait_for(from_workbench, "ChangeStatusCallback")


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    sys.stdout.reconfigure(encoding="utf-8")
    name = f"example-host-{os.getpid()}"
    to_workbench = Pipe(f"{name}-to", host_writes=True)
    from_workbench = Pipe(f"{name}-from", host_writes=False)
    channel = f"pipe?param={to_workbench.name}&{from_workbench.name}"
    with closing(to_workbench), closing(from_workbench):
        try:
            workbench = subprocess.Popen([*sys.argv[1:], channel])

            def end_waiting():
                workbench.wait()
                to_workbench.visit()
                from_workbench.visit()

            threading.Thread(target=end_waiting, daemon=True).start()
            converse(to_workbench, from_workbench)
        except OSError as error:
            sys.exit(f"host.py: {error}")
    # The workbench leaves when its host does.
    sys.exit(workbench.wait())


if __name__ == "__main__":
    main()
