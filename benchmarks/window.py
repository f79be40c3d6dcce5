#!/usr/bin/python3
"""The rows of the window: the start, memory, the console, idling."""

import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

from measure import PROGRAMS, REPEAT, SHELL, make_home, over, row


def first_paint(*command):
    done = subprocess.run([os.path.join(PROGRAMS, "first_paint"), *command], capture_output=True, text=True,
                          check=True)
    painted, resident = done.stdout.split()
    return float(painted), int(resident) / 1024


def start_and_memory():
    mine, reference = [], []
    for _ in range(REPEAT):
        reference.append(first_paint(os.path.join(PROGRAMS, "bare_window")))
        mine.append(first_paint(SHELL))
    (time_mine, size_mine), (time_bare, size_bare) = (
        tuple(statistics.median(column) for column in zip(*rows)) for rows in (mine, reference))
    row("start to a visible window", f"{time_mine:.0f} ms", f"{time_bare:.0f} ms", f"{time_mine / time_bare:.2f}", "1.25",
        time_mine / time_bare <= 1.25)
    row("memory after the start", f"{size_mine:.1f} MB", f"{size_bare:.1f} MB", f"{size_mine / size_bare:.2f}", "1.2",
        size_mine / size_bare <= 1.2)


def console():
    fed, written, kept = [], [], []
    for _ in range(max(3, REPEAT // 6)):
        done = subprocess.run([os.path.join(PROGRAMS, "bare_window"), "--feed", "4000000"], capture_output=True,
                              text=True, check=True)
        fed.append(float(done.stdout) / 1e6)
        done = subprocess.run([os.path.join(PROGRAMS, "console_speed")], capture_output=True, text=True, check=True)
        speed, memory = done.stdout.split()
        written.append(float(speed) / 1e6)
        kept.append(float(memory))
    mine, reference = statistics.median(written), statistics.median(fed)
    row("console, a million lines", f"{mine:.0f} MB/s", f"{reference:.1f} MB/s", f"{mine / reference:.1f}",
        "30 and 500 MB/s", mine >= 500 and mine / reference >= 30)
    memory = statistics.median(kept)
    row("console, bytes kept a byte", f"{memory:.2f}", "1", f"{memory:.2f}", "1.2", memory <= 1.2)


def switches(pid):
    total = 0
    for task in os.listdir(f"/proc/{pid}/task"):
        with open(f"/proc/{pid}/task/{task}/status", encoding="ascii") as file:
            total += sum(int(line.split()[1]) for line in file if "ctxt_switches" in line)
    return total


def idle():
    shell = subprocess.Popen([SHELL], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    time.sleep(3)
    before = switches(shell.pid)
    time.sleep(20)
    rate = (switches(shell.pid) - before) / 20
    shell.terminate()
    shell.wait()
    row("idle, wake-ups a second", f"{rate:.1f}", "", "", "10", rate <= 10)


def main():
    if not os.environ.get("DISPLAY"):
        return 0
    folder = tempfile.mkdtemp(prefix="quillon-bench-")
    try:
        os.environ.update(make_home(folder, "SPACECHAR=31\nUSEPDFTEX=1\nDEBUG=0\n")[1])
        start_and_memory()
        console()
        idle()
    finally:
        shutil.rmtree(folder, ignore_errors=True)
    return 1 if over else 0


sys.exit(main())
