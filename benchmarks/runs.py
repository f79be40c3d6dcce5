#!/usr/bin/python3
"""The rows of runs: through the shell and from a terminal, beside the bare engine."""

import os
import shutil
import subprocess
import sys
import tempfile
import time

import dbus
import dbus.bus

from measure import QUILLON, REPEAT, SETPATHS, SHELL, interleaved, make_home, milliseconds, over, row

PLAIN = "Hello, world. $a^2+b^2=c^2$\n\\bye\n"
LATEX = "\\documentclass{article}\\begin{document}Hello, world.\\end{document}\n"
# Lines of 90 bytes: 100,000 of them, and 200 MB.
LINES = ("\\newcount\\n\\loop\\ifnum\\n<%d\\advance\\n1 "
         "\\immediate\\write16{\\number\\n" + " what is said again" * 4 + "0123456789}\\repeat\\bye\n")
DOCUMENTS = {"plain": PLAIN, "latex": LATEX, "much": LINES % 100000, "huge": LINES % 2200000}
COMMANDS = {"plain": "pdftex plain.tex", "latex": "pdflatex latex.tex", "much": "pdftex much.tex",
            "huge": "pdftex huge.tex"}


class Runs:
    """A home with documents, and the ways in which they are run there."""

    def __init__(self, folder):
        home, self.environment = make_home(folder)
        os.environ.update(self.environment)
        subprocess.run([SETPATHS, "--defaults"], check=True)
        self.work = os.path.join(home, "work")
        for name, text in DOCUMENTS.items():
            with open(os.path.join(self.work, name + ".tex"), "w", encoding="ascii") as file:
                file.write(text)

    def bare(self, name):
        """The bare engine, its output in a file."""
        words = COMMANDS[name].split()
        nothing = os.open(os.devnull, os.O_RDWR)
        output = os.open(os.path.join(self.work, "output"), os.O_WRONLY | os.O_CREAT | os.O_TRUNC)
        here = os.getcwd()
        os.chdir(self.work)
        pid = os.posix_spawnp(words[0], words, os.environ, file_actions=[
            (os.POSIX_SPAWN_DUP2, nothing, 0), (os.POSIX_SPAWN_DUP2, output, 1)])
        os.waitpid(pid, 0)
        os.chdir(here)
        os.close(output)
        os.close(nothing)

    def start_shell(self, *options):
        self.shell = subprocess.Popen([SHELL, *options], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                      stderr=subprocess.DEVNULL)
        bus = dbus.bus.BusConnection(os.environ["DBUS_SESSION_BUS_ADDRESS"])
        while not bus.name_has_owner("org.quillon.Shell"):
            time.sleep(0.005)
        self.calls = dbus.Interface(bus.get_object("org.quillon.Shell", "/org/quillon/Shell"), "org.quillon.Shell1")
        self.calls.Formats(timeout=60)

    def quit_shell(self):
        self.calls.Quit()
        self.shell.wait()

    def through(self, name):
        """The run through the shell."""
        if self.calls.Exec(COMMANDS[name], self.work, timeout=100) != 0:
            sys.exit(f"the shell could not run {COMMANDS[name]}")

    def command(self, name):
        """The run by the command `quillon exec`."""
        subprocess.run([QUILLON, "exec", *COMMANDS[name].split()], cwd=self.work, stdin=subprocess.DEVNULL,
                       stdout=subprocess.DEVNULL, check=True)

    def many_by_make(self, repeat):
        """The medians of forty documents by make, each with its own `quillon exec`, and each with the bare engine."""
        names = [f"many{number}" for number in range(40)]
        for name in names:
            with open(os.path.join(self.work, name + ".tex"), "w", encoding="ascii") as file:
                file.write(LATEX)
        for makefile, command in (("with", f"{QUILLON} exec pdflatex"), ("without", "pdflatex")):
            with open(os.path.join(self.work, makefile), "w", encoding="ascii") as file:
                file.write(f".PHONY: all {' '.join(names)}\nall: {' '.join(names)}\n"
                           f"{' '.join(names)}:\n\t@{command} $@.tex > $@.said < /dev/null\n")

        def make(makefile):
            subprocess.run(["make", "-s", "-j2", "-f", makefile, "all"], cwd=self.work, check=True)

        return interleaved(lambda: milliseconds(lambda: make("with")), lambda: milliseconds(lambda: make("without")), repeat)

    def memory(self):
        """What the shell holds, in bytes."""
        with open(f"/proc/{self.shell.pid}/smaps_rollup", encoding="ascii") as file:
            return next(int(line.split()[1]) for line in file if line.startswith("Pss:")) * 1024

    def kept_of_a_long_run(self):
        """What a shell with a window holds after a run that says 200 MB, and after Clear Console, a byte said."""
        before = self.memory()
        with open(os.path.join(self.work, "said"), "wb") as file:
            subprocess.run([QUILLON, "exec", "pdftex", "huge.tex"], cwd=self.work, stdin=subprocess.DEVNULL, stdout=file,
                           check=True)
        said = os.path.getsize(os.path.join(self.work, "said"))
        self.calls.Formats(timeout=60)  # answered when it has seen that the client is gone
        after = self.memory()
        window = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "Quillon"], check=True,
                                capture_output=True, text=True).stdout.split()[0]
        subprocess.run(["xdotool", "windowfocus", "--sync", window, "key", "ctrl+k"], check=True)
        end = time.monotonic() + 5
        while self.memory() > before + said / 20 and time.monotonic() < end:
            time.sleep(0.05)
        return (after - before) / said, (self.memory() - before) / said

    def warm(self):
        """Waits until the formats are unpacked, as they are after the first minute of a day's work."""
        formats = os.path.join(os.environ["XDG_CACHE_HOME"], "quillon", "formats")
        for name in ("plain", "latex"):
            self.through(name)
        end = time.monotonic() + 60
        while time.monotonic() < end:
            if os.path.isdir(formats) and sum(name.endswith(".search") for name in os.listdir(formats)) >= 2:
                return
            time.sleep(0.05)
        sys.exit("the formats were not unpacked")


def over_bare(title, measured, reference, limit):
    row(title, f"{measured:.1f} ms", f"bare {reference:.1f} ms", f"+{measured - reference:.1f} ms", f"<= +{limit} ms",
        measured - reference <= limit)


def times_bare(title, measured, reference, limit):
    row(title, f"{measured:.1f} ms", f"bare {reference:.1f} ms", f"{measured / reference:.2f}", f"<= {limit}",
        measured <= limit * reference)


def beside_bare(runs, way, name, repeat=REPEAT):
    """The medians of the run in that way and of the bare engine."""
    return interleaved(lambda: milliseconds(lambda: way(name)), lambda: milliseconds(lambda: runs.bare(name)), repeat)


def main():
    folder = tempfile.mkdtemp(prefix="quillon-bench-")
    try:
        runs = Runs(folder)
        runs.start_shell("--headless", "--service")
        runs.warm()
        over_bare("a run through the shell", *beside_bare(runs, runs.through, "plain"), 10)
        times_bare("the same, a one-line LaTeX document", *beside_bare(runs, runs.through, "latex"), 0.6)
        times_bare("a run that prints 9 MB, headless", *beside_bare(runs, runs.through, "much", max(3, REPEAT // 3)), 1.3)
        over_bare("quillon exec, a shell running", *beside_bare(runs, runs.command, "plain"), 15)
        times_bare("the same, a one-line LaTeX document", *beside_bare(runs, runs.command, "latex"), 1)
        runs.quit_shell()
        over_bare("quillon exec, no shell running", *beside_bare(runs, runs.command, "plain"), 40)
        times_bare("the same, a one-line LaTeX document", *beside_bare(runs, runs.command, "latex"), 1)
        times_bare("40 of these by make -j2", *runs.many_by_make(max(3, REPEAT // 6)), 1)
        if os.environ.get("DISPLAY"):
            runs.start_shell()
            times_bare("a run that prints 9 MB, in the window",
                       *beside_bare(runs, runs.through, "much", max(3, REPEAT // 3)), 1.3)
            kept, cleared = runs.kept_of_a_long_run()
            row("a run that says 200 MB, bytes kept a byte", f"{kept:.2f}", "1", f"{kept:.2f}", "1.2", kept <= 1.2)
            row("the same after Clear Console", f"{cleared:.2f}", "1", f"{cleared:.2f}", "0.1", cleared <= 0.1)
            runs.quit_shell()
    finally:
        shutil.rmtree(folder, ignore_errors=True)
    return 1 if over else 0


sys.exit(main())
