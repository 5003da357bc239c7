# SPDX-License-Identifier: MIT
"""A QEMU machine of the tests: its command line, its console, and the line by which the guest asks the host."""
import json
import pathlib
import re
import selectors
import socket
import subprocess
import time

MEMORY = 256 << 20
# On a busy host the timer's interrupts come too late for the kernel's check of them, which would end the boot.
KERNEL_WORDS = ["console=ttyS0", "quiet", "panic=-1", "no_timer_check"]


def command_line(kernel, archive, words, extra, sockets):
    """`words` go to the kernel, `extra` to QEMU."""
    return ["qemu-system-x86_64", "-M", "q35,accel=tcg", "-m", f"{MEMORY}B", "-display", "none", "-nodefaults",
            "-no-reboot", "-vga", "std", "-kernel", str(kernel), "-initrd", str(archive),
            "-append", " ".join([*KERNEL_WORDS, *words]),
            "-serial", "stdio", "-serial", f"unix:{sockets / 'guest'}",
            "-qmp", f"unix:{sockets / 'qmp'}",
            "-device", "pc-testdev", "-device", "pci-testdev,addr=0x10", "-device", "ib700", "-action", "watchdog=none",
            *extra]


class Monitor:
    """The QMP connection: counts watchdog expiries, reads physical memory as the machine sees it."""

    def __init__(self, connection):
        self._file = connection.makefile("rw")
        self.connection = connection
        self.watchdog_events = 0
        self._file.readline()  # greeting
        self.execute("qmp_capabilities")

    def execute(self, command, **arguments):
        self._file.write(json.dumps({"execute": command, "arguments": arguments}) + "\n")
        self._file.flush()
        while True:
            message = json.loads(self._file.readline())
            if "return" in message:
                return message["return"]
            if "error" in message:
                raise RuntimeError(f"{command}: {message['error']}")
            self._note(message)

    def take_events(self):
        """Counts the events that arrived; called when the connection has something to read."""
        line = self._file.readline()
        if line:
            self._note(json.loads(line))
        return bool(line)

    def _note(self, message):
        self.watchdog_events += message.get("event") == "WATCHDOG"

    def memory(self, address, count):
        """`count` bytes of physical memory, as hexadecimal digits."""
        text = self.execute("human-monitor-command", **{"command-line": f"xp /{count}xb {address:#x}"})
        return "".join(re.findall(r"0x([0-9a-f]{2})\b", re.sub(r"^\S+:", "", text, flags=re.MULTILINE)))


class GuestLine:
    """Answers the guest's questions, one line each: "?watchdog-events", "?memory ADDRESS COUNT". What stands before the
    last question mark of a line came from the firmware, which takes the line for a terminal."""

    def __init__(self, connection, monitor):
        self.connection = connection
        self._monitor = monitor
        self._pending = b""

    def answer_questions(self):
        data = self.connection.recv(4096)
        *lines, self._pending = (self._pending + data).split(b"\n")
        for line in lines:
            self.connection.sendall((self._answer(line.rpartition(b"?")[2].decode().split()) + "\n").encode())
        return bool(data)

    def _answer(self, words):
        if words == ["watchdog-events"]:
            self._monitor.execute("query-status")  # Any reply comes after the events that went before it.
            return str(self._monitor.watchdog_events)
        if len(words) == 3 and words[0] == "memory":
            return self._monitor.memory(int(words[1], 0), int(words[2]))
        return "error: unknown question"


class Machine:
    """Runs one boot to its end, or to its time limit, and returns what the console said."""

    def __init__(self, directory):
        self._directory = pathlib.Path(directory)

    def run(self, kernel, archive, words, extra, limit_seconds):
        listeners = [self._listen("guest"), self._listen("qmp")]
        command = command_line(kernel, archive, words, extra, self._directory)
        qemu = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        try:
            return self._converse(qemu, listeners, time.monotonic() + limit_seconds)
        finally:
            qemu.kill()
            qemu.wait()
            for listener in listeners:
                listener.close()

    def _listen(self, name):
        listener = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        listener.bind(str(self._directory / name))
        listener.listen(1)
        listener.settimeout(30)
        return listener

    def _converse(self, qemu, listeners, deadline):
        try:
            guest, _ = listeners[0].accept()
            monitor = Monitor(listeners[1].accept()[0])
        except socket.timeout:
            qemu.kill()
            return qemu.stdout.read().decode(errors="replace") + "\nQEMU did not connect\n"
        line = GuestLine(guest, monitor)
        selector = selectors.DefaultSelector()
        selector.register(monitor.connection, selectors.EVENT_READ, monitor.take_events)
        selector.register(guest, selectors.EVENT_READ, line.answer_questions)
        console = bytearray()
        selector.register(qemu.stdout, selectors.EVENT_READ, lambda: self._take_console(qemu.stdout, console))
        while time.monotonic() < deadline:
            for key, _ in selector.select(timeout=1):
                if key.data():
                    continue
                if key.fileobj is qemu.stdout:
                    return console.decode(errors="replace")
                selector.unregister(key.fileobj)
        return console.decode(errors="replace") + "\ntime limit reached\n"

    @staticmethod
    def _take_console(pipe, console):
        data = pipe.read1(65536)
        console += data
        return bool(data)
