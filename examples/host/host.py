"""A host in Python. It makes both pipes, starts the workbench that its arguments name, logs an
account in, opens a conversation, changes the presence and goes away:

    python3 host.py WORKBENCH [ARGUMENTS...]

It does one thing after the other, so it hangs if the workbench does.
"""

import json
import os
import struct
import subprocess
import sys

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


def wait_for(pipe, name):
    """Reads until the message of that name has come."""
    while True:
        frame = pipe.read()
        if not frame:
            sys.exit("the workbench has gone")
        message = json.loads(frame[4:])
        show("<", message["name"], message["arguments"])
        if message["name"] == name:
            return


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    to_workbench = Pipe(f"example-host-{os.getpid()}-to", host_writes=True)
    from_workbench = Pipe(f"example-host-{os.getpid()}-from", host_writes=False)
    channel = f"pipe?param={to_workbench.name}&{from_workbench.name}"
    workbench = subprocess.Popen([*sys.argv[1:], channel])
    to_workbench.accept()
    from_workbench.accept()

    wait_for(from_workbench, "StartupCompleted")
    send(to_workbench, "Login", "waiter", False, 1, "desktop", "", "secret")
    wait_for(from_workbench, "ChangeStatusCallback")
    send(to_workbench, "OpenLXWindow", "customer-7", 3, "order-42")
    send(to_workbench, "ChangeStatus", 2)
    wait_for(from_workbench, "ChangeStatusCallback")

    # The workbench leaves when its host does.
    to_workbench.close()
    sys.exit(workbench.wait())


main()
