#!/usr/bin/python3
"""The rows of the shell itself: a run's overhead, the start, memory, the console, idling.

Every figure is measured beside its reference in this same run: medians of interleaved repetitions.
"""

import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

import dbus
import dbus.bus

BUILD = os.environ["QUILLON_BUILD"]
SHELL = os.path.join(BUILD, "lib", "quillon", "Quillon.app", "Contents", "Linux", "quillon-shell")
PROGRAMS = os.path.join(BUILD, "benchmarks")
REPEAT = int(os.environ.get("BENCH_REPEAT", "30"))


over = []  # the rows that are over their budget


def row(name, measured, reference, ratio, budget, passed):
    print("\t".join((name, measured, reference, ratio, budget, "ok" if passed else "OVER")), flush=True)
    if not passed:
        over.append(name)


def make_home():
    home = tempfile.mkdtemp(prefix="quillon-bench-")
    os.environ.update(HOME=home, XDG_CONFIG_HOME=home + "/config", XDG_DATA_HOME=home + "/data",
                      XDG_CACHE_HOME=home + "/cache", XDG_RUNTIME_DIR=home + "/run")
    for folder in ("config", "data", "cache", "run", "work"):
        os.mkdir(os.path.join(home, folder), 0o700)
    with open(os.path.join(home, "config", "Quillon Preferences"), "w", encoding="utf-8") as file:
        file.write("SPACECHAR=31\nUSEPDFTEX=1\nDEBUG=0\n")
    return home


def milliseconds(procedure):
    start = time.perf_counter()
    procedure()
    return (time.perf_counter() - start) * 1000


def bare_engine(folder):
    null = os.open(os.devnull, os.O_RDWR)
    here = os.getcwd()
    os.chdir(folder)
    pid = os.posix_spawnp("pdftex", ["pdftex", "paper.tex"], os.environ,
                          file_actions=[(os.POSIX_SPAWN_DUP2, null, 0), (os.POSIX_SPAWN_DUP2, null, 1)])
    os.waitpid(pid, 0)
    os.chdir(here)
    os.close(null)


def start_service():
    shell = subprocess.Popen([SHELL, "--headless", "--service"], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                             stderr=subprocess.DEVNULL)
    bus = dbus.bus.BusConnection(os.environ["DBUS_SESSION_BUS_ADDRESS"])
    while not bus.name_has_owner("org.quillon.Shell"):
        time.sleep(0.005)
    return shell, dbus.Interface(bus.get_object("org.quillon.Shell", "/org/quillon/Shell"), "org.quillon.Shell1")


def run_overhead(home):
    folder = os.path.join(home, "work")
    with open(os.path.join(folder, "paper.tex"), "w", encoding="ascii") as file:
        file.write("Hello, world. $a^2+b^2=c^2$\n\\bye\n")
    shell, calls = start_service()
    calls.Exec("pdftex paper.tex", folder)
    through, bare = [], []
    for _ in range(REPEAT):
        bare.append(milliseconds(lambda: bare_engine(folder)))
        through.append(milliseconds(lambda: calls.Exec("pdftex paper.tex", folder)))
    calls.Quit()
    shell.wait()
    mine, reference = statistics.median(through), statistics.median(bare)
    row("a run through the shell", f"{mine:.1f} ms", f"{reference:.1f} ms", f"+{mine - reference:.1f} ms", "+10 ms",
        mine - reference <= 10)


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
    home = make_home()
    try:
        run_overhead(home)
        if os.environ.get("DISPLAY"):
            start_and_memory()
            console()
            idle()
    finally:
        shutil.rmtree(home, ignore_errors=True)
    return 1 if over else 0


sys.exit(main())
