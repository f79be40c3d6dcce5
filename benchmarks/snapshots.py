#!/usr/bin/python3
"""The rows of documents whose preambles are remembered: through the shell, beside the bare engine."""

import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

import dbus
import dbus.bus

from measure import REPEAT, SETPATHS, SHELL, interleaved, make_home, milliseconds, over, row, run

BODY = "\\section{One}\\label{one}Hello, world. See section \\ref{one}.\n"
DOCUMENTS = {
    "article": "\\documentclass{article}\n\\begin{document}\nHello, world.\n",
    "hyperref": ("\\documentclass{article}\n\\usepackage{amsmath}\n\\usepackage{graphicx}\n\\usepackage{xcolor}\n"
                 "\\usepackage{geometry}\n\\usepackage{hyperref}\n\\begin{document}\n" + BODY),
    "beamer": ("\\documentclass{beamer}\n\\usepackage{tikz}\n\\title{A talk}\n\\author{A. Uthor}\n\\begin{document}\n"
               "\\begin{frame}\\titlepage\\end{frame}\n\\begin{frame}{One}\\tikz\\draw (0,0) -- (1,1);\\end{frame}\n"),
    "biblatex": ("\\documentclass{article}\n\\usepackage{biblatex}\n\\begin{document}\n" + BODY),
}
DOCUMENTS["links"] = DOCUMENTS["hyperref"]
OPTIONS = {"links": ["-synctex=1"]}
BUDGETS = {"article": ("a one-line article, remembered", 0.6),
           "hyperref": ("an article with hyperref and friends, remembered", 0.4),
           "links": ("the article with source links, remembered", 0.4),
           "beamer": ("a beamer talk with TikZ, remembered", 0.4), "biblatex": ("biblatex, remembered", 0.35)}


SAMPLES = 8  # documents of the distribution
SAMPLE_REPEAT = 3
MEDIAN = 0.45
LARGEST = 1 << 20  # bytes of a file beside one of them
CORPUS = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "scripts", "corpus")


class Snapshots:
    """A home with the documents, and a shell that runs them."""

    def __init__(self, folder):
        home, environment = make_home(folder)
        # A document whose fonts would have to be made first is none for a measure.
        os.environ.update(environment, MKTEXTFM="0", MKTEXPK="0")
        subprocess.run([SETPATHS, "--defaults"], check=True)
        self.work = os.path.join(home, "work")
        self.folders = {}  # of documents that have one of their own
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

    def folder_of(self, name):
        return self.folders.get(name, self.work)

    @staticmethod
    def words(name):
        return ["pdflatex", "-interaction=nonstopmode", *OPTIONS.get(name, ()), name + ".tex"]

    def through(self, name):
        if self.calls.Exec(" ".join(self.words(name)), self.folder_of(name), timeout=300) != 0:
            sys.exit(f"the shell could not run {name}.tex")

    def bare(self, name):
        with open(os.path.join(self.work, "output"), "wb") as output:
            subprocess.run(self.words(name), cwd=self.folder_of(name), stdin=subprocess.DEVNULL, stdout=output,
                           stderr=subprocess.DEVNULL, timeout=30, check=True)

    def is_remembered(self, name):
        """Runs the document until its preamble is remembered, as it is after a few seconds of a day's work."""
        end = time.monotonic() + 60
        while time.monotonic() < end:
            self.through(name)
            kept = os.listdir(self.snapshots) if os.path.isdir(self.snapshots) else ()
            if any(entry.startswith(name + "-") for entry in kept):
                return True
            time.sleep(2)
        return False

    def ratio(self, name, repeat):
        """The times through the shell and of the bare engine, in milliseconds."""
        return interleaved(lambda: milliseconds(lambda: self.through(name)),
                           lambda: milliseconds(lambda: self.bare(name)), repeat)

    def take_samples(self):
        """Copies some documents of the distribution that the bare engine typesets, evenly chosen, each with what lies
        beside it; their names."""
        paths = run([CORPUS, "--list"], text=True).splitlines()
        step = max(1, len(paths) // (8 * SAMPLES))  # most of them need what is not installed
        names = []
        for number, path in enumerate(paths[::step]):
            name = f"sample{number}"
            folder = self.folders[name] = os.path.join(self.work, name)
            os.mkdir(folder)
            for entry in os.scandir(os.path.dirname(path)):
                if entry.is_file() and entry.stat().st_size < LARGEST:
                    shutil.copyfile(entry.path, os.path.join(folder, entry.name))
            os.rename(os.path.join(folder, os.path.basename(path)), os.path.join(folder, name + ".tex"))
            try:
                self.bare(name)
                # It may have errors once its bibliography is made.
                self.calls.Exec(" ".join(self.words(name)), folder, timeout=300)
                self.bare(name)
            except (subprocess.CalledProcessError, subprocess.TimeoutExpired):
                continue
            names.append(name)
            if len(names) == SAMPLES:
                break
        return names


def main():
    folder = tempfile.mkdtemp(prefix="quillon-bench-")
    try:
        documents = Snapshots(folder)
        for name, (title, budget) in BUDGETS.items():
            if not documents.is_remembered(name):
                sys.exit(f"the preamble of {name}.tex was not remembered")
            measured, reference = documents.ratio(name, REPEAT)
            row(title, f"{measured:.1f} ms", f"bare {reference:.1f} ms", f"{measured / reference:.2f}", f"<= {budget}",
                measured <= budget * reference)
        names = documents.take_samples()
        remembered = [name for name in names if documents.is_remembered(name)]
        if remembered:
            ratios = [through / bare for through, bare in (documents.ratio(name, SAMPLE_REPEAT) for name in remembered)]
            middle = statistics.median(ratios)
            row("documents of the distribution, the median",
                f"{len(remembered)} of {len(names)} remembered", f"{min(ratios):.2f} to {max(ratios):.2f}",
                f"{middle:.2f}", f"<= {MEDIAN}", middle <= MEDIAN)
        documents.calls.Quit()
        documents.shell.wait()
    finally:
        shutil.rmtree(folder, ignore_errors=True)
    return 1 if over else 0


if __name__ == "__main__":
    sys.exit(main())
