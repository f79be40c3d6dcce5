"""What the benchmarks share: a home, a clock, and the rows of the table.

Every figure is measured beside its reference in the same run: medians of interleaved repetitions.
"""

import os
import statistics
import subprocess
import time

BUILD = os.environ.get("QUILLON_BUILD",
                       os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "build"))
HOME = os.path.join(BUILD, "lib", "quillon")
SHELL = os.path.join(HOME, "Quillon.app", "Contents", "Linux", "quillon-shell")
SETPATHS = os.path.join(HOME, "setpaths.app", "Contents", "Linux", "setpaths")
QUILLON = os.path.join(BUILD, "bin", "quillon")
DRIVER = os.path.join(BUILD, "bin", "tests", "search-driver")
PROGRAMS = os.path.join(BUILD, "benchmarks")
REPEAT = int(os.environ.get("BENCH_REPEAT", "30"))

over = []  # the rows that are over their budget


def row(name, measured, reference, ratio, budget, passed):
    print("\t".join((name, measured, reference, ratio, budget, "ok" if passed else "OVER")), flush=True)
    if not passed:
        over.append(name)


def run(command, **options):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, **options).stdout


def milliseconds(procedure):
    start = time.perf_counter()
    procedure()
    return (time.perf_counter() - start) * 1000


def command_time(command, **options):
    return milliseconds(lambda: run(command, **options))


def interleaved(first, second, repeat=REPEAT):
    """The medians of what two procedures return, without their first, cold, answers."""
    pairs = [(first(), second()) for _ in range(repeat + 1)][1:]
    return statistics.median(a for a, _ in pairs), statistics.median(b for _, b in pairs)


def make_home(folder, preferences=""):
    """A home below FOLDER, and the environment of a program that lives there."""
    home = os.path.join(folder, "home")
    for name in ("config", "data", "cache", "run", "work"):
        os.makedirs(os.path.join(home, name), mode=0o700, exist_ok=True)
    environment = dict(os.environ, HOME=home, XDG_CONFIG_HOME=home + "/config", XDG_DATA_HOME=home + "/data",
                       XDG_CACHE_HOME=home + "/cache", XDG_RUNTIME_DIR=home + "/run")
    if preferences:
        with open(home + "/config/Quillon Preferences", "w", encoding="utf-8") as file:
            file.write(preferences)
    return home, environment
