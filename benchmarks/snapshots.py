#!/usr/bin/python3
"""The rows of documents whose preambles are remembered: through the shell, beside the bare engine."""

import os
import shutil
import subprocess
import sys
import tempfile
import time

import dbus
import dbus.bus

from measure import REPEAT, SETPATHS, SHELL, interleaved, make_home, milliseconds, over, row

BODY = "\\section{One}\\label{one}Hello, world. See section \\ref{one}.\n"
DOCUMENTS = {
    "hyperref": ("\\documentclass{article}\n\\usepackage{amsmath}\n\\usepackage{graphicx}\n\\usepackage{xcolor}\n"
                 "\\usepackage{geometry}\n\\usepackage{hyperref}\n\\begin{document}\n" + BODY),
    "beamer": ("\\documentclass{beamer}\n\\usepackage{tikz}\n\\title{A talk}\n\\author{A. Uthor}\n\\begin{document}\n"
               "\\begin{frame}\\titlepage\\end{frame}\n\\begin{frame}{One}\\tikz\\draw (0,0) -- (1,1);\\end{frame}\n"),
    "biblatex": ("\\documentclass{article}\n\\usepackage{biblatex}\n\\begin{document}\n" + BODY),
}
DOCUMENTS["links"] = DOCUMENTS["hyperref"]
OPTIONS = {"links": ["-synctex=1"]}
BUDGETS = {"hyperref": ("an article with hyperref and friends, remembered", 0.4),
           "beamer": ("a beamer talk with TikZ, remembered", 0.4), "biblatex": ("biblatex, remembered", 0.35),
           "links": ("the article with source links, remembered", 0.4)}


class Snapshots:
    """A home with the documents, and a shell that runs them."""

    def __init__(self, folder):
        home, environment = make_home(folder)
        os.environ.update(environment)
        subprocess.run([SETPATHS, "--defaults"], check=True)
        with open(os.path.join(environment["XDG_CONFIG_HOME"], "Quillon Preferences"), "a", encoding="ascii") as file:
            file.write("SNAPSHOT=1\n")
        self.work = os.path.join(home, "work")
        self.snapshots = os.path.join(environment["XDG_CACHE_HOME"], "quillon", "snapshots")
        for name, text in DOCUMENTS.items():
            with open(os.path.join(self.work, name + ".tex"), "w", encoding="ascii") as file:
                file.write(text + "\\end{document}\n")
        self.shell = subprocess.Popen([SHELL, "--headless", "--service"], stdin=subprocess.DEVNULL,
                                      stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        bus = dbus.bus.BusConnection(os.environ["DBUS_SESSION_BUS_ADDRESS"])
        while not bus.name_has_owner("org.quillon.Shell"):
            time.sleep(0.005)
        self.calls = dbus.Interface(bus.get_object("org.quillon.Shell", "/org/quillon/Shell"), "org.quillon.Shell1")
        self.calls.Formats(timeout=60)

    def through(self, name):
        words = ["pdflatex", *OPTIONS.get(name, ()), name + ".tex"]
        if self.calls.Exec(" ".join(words), self.work, timeout=100) != 0:
            sys.exit(f"the shell could not run {name}.tex")

    def bare(self, name):
        with open(os.path.join(self.work, "output"), "wb") as output:
            subprocess.run(["pdflatex", *OPTIONS.get(name, ()), name + ".tex"], cwd=self.work, stdin=subprocess.DEVNULL,
                           stdout=output, check=True)

    def remember(self, name):
        """Runs the document until its preamble is remembered, as it is after a few seconds of a day's work."""
        end = time.monotonic() + 120
        while time.monotonic() < end:
            self.through(name)
            kept = os.listdir(self.snapshots) if os.path.isdir(self.snapshots) else ()
            if any(entry.startswith(name + "-") for entry in kept):
                return
            time.sleep(2)
        sys.exit(f"the preamble of {name}.tex was not remembered")


def main():
    folder = tempfile.mkdtemp(prefix="quillon-bench-")
    try:
        documents = Snapshots(folder)
        for name, (title, budget) in BUDGETS.items():
            documents.remember(name)
            measured, reference = interleaved(lambda: milliseconds(lambda: documents.through(name)),
                                              lambda: milliseconds(lambda: documents.bare(name)), REPEAT)
            row(title, f"{measured:.1f} ms", f"bare {reference:.1f} ms", f"{measured / reference:.2f}", f"<= {budget}",
                measured <= budget * reference)
        documents.calls.Quit()
        documents.shell.wait()
    finally:
        shutil.rmtree(folder, ignore_errors=True)
    return 1 if over else 0


if __name__ == "__main__":
    sys.exit(main())
