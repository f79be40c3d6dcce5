"""Processes that a test starts: their end, their names, and the wait for what they do."""

import os
import time

from gi.repository import GLib

LIMIT = int(os.environ.get("QUILLON_TEST_LIMIT", "60"))  # seconds that a condition may take before the test fails, on a machine that does much else
INTERVAL = 10  # milliseconds between two looks at a condition


def wait_until(condition, what="the condition", seconds=LIMIT):
    """Runs the main loop until CONDITION holds; its value. Fails when it does not come."""
    context = GLib.MainContext.default()
    end = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise AssertionError(f"waited in vain for {what}")
        # The condition may itself call over the bus: what that leaves to dispatch must not make this loop spin.
        passed = []
        GLib.timeout_add(INTERVAL, lambda done=passed: done.append(True))
        while not passed:
            context.iteration(True)


def stop(process):
    """Kills a process if it runs, and closes its pipes."""
    if process.poll() is None:
        process.kill()
    process.wait()
    for pipe in (process.stdin, process.stdout, process.stderr):
        if pipe:
            pipe.close()


def status_field(pid, number):
    """A field of /proc/PID/stat behind the name, counted from 0; empty when there is no such process."""
    try:
        with open(f"/proc/{pid}/stat", encoding="latin-1") as file:
            return file.read().rpartition(")")[2].split()[number]
    except OSError:
        return ""


def program_name(pid):
    """The name of the file that the process runs; empty when there is no such process."""
    try:
        return os.path.basename(os.readlink(f"/proc/{pid}/exe"))
    except OSError:
        return ""


def alive(pid):
    return status_field(pid, 0) not in ("", "Z", "X")


def parent_of(pid):
    return int(status_field(pid, 1))


def is_starting(name):
    """Whether a process has just become the program NAME, so that its command line cannot be read yet."""
    for entry in os.listdir("/proc"):
        try:
            if entry.isdigit() and program_name(entry) == name:
                with open(f"/proc/{entry}/cmdline", "rb") as file:
                    if not file.read() and alive(entry):
                        return True
        except OSError:
            continue
    return False


def processes_of(home, text):
    """The processes with HOME in their environment or command line whose command line holds TEXT."""
    found = []
    for entry in os.listdir("/proc"):
        if not entry.isdigit() or int(entry) == os.getpid():
            continue
        try:
            with open(f"/proc/{entry}/cmdline", "rb") as file:
                words = file.read()
            if text.encode() not in words:
                continue
            with open(f"/proc/{entry}/environ", "rb") as file:
                mine = home.encode() in file.read() + words
        except OSError:
            continue
        if mine and alive(entry):
            found.append(int(entry))
    return found


def link_of(path):
    try:
        return os.readlink(path)
    except OSError:
        return ""


def content_of(path):
    try:
        with open(path, "rb") as file:
            return file.read()
    except OSError:
        return b""


def processes_around(home):
    """The processes that have anything to do with HOME: environment, command line, working folder or program."""
    found = []
    for entry in os.listdir("/proc"):
        folder = "/proc/" + entry
        if not entry.isdigit() or int(entry) == os.getpid():
            continue
        texts = [content_of(folder + "/environ"), content_of(folder + "/cmdline"),
                 os.fsencode(link_of(folder + "/cwd")), os.fsencode(link_of(folder + "/exe"))]
        if any(os.fsencode(home) in text for text in texts) and alive(entry):
            found.append(int(entry))
    return found


def children_of(pid):
    """The children of a process, whichever of its threads started them."""
    found = []
    try:
        for thread in os.listdir(f"/proc/{pid}/task"):
            found += map(int, content_of(f"/proc/{pid}/task/{thread}/children").split())
    except OSError:
        pass
    return found


def described(pid):
    """What a message says of a process."""
    words = content_of(f"/proc/{pid}/cmdline").decode("utf-8", "replace").replace("\0", " ")
    return f"{pid} (parent {status_field(pid, 1)}, {status_field(pid, 0)}, {program_name(pid)}): {words}"
