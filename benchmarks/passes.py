#!/usr/bin/python3
"""The rows of documents that are run until they are stable, beside the same programs without the shell."""

import os
import re
import shutil
import subprocess
import sys
import tempfile

from measure import QUILLON, REPEAT, SETPATHS, SHELL, interleaved, make_home, milliseconds, over, row

TEXT = "The quick brown fox jumps over the lazy dog, and what it sees there is told in other places of this book. " * 6
STEP = re.compile(r"^(?:Pass \d|(bibtex|makeindex) [^:]*): .* changed$")
SMALL = (r"\documentclass{article}\begin{document}\tableofcontents\section{One}\label{one}See \ref{two}."
         r"\section{Two}\label{two}See \ref{one}.\end{document}")


def book():
    """About a hundred pages with an index, a bibliography and references to and fro."""
    parts = [r"\documentclass{book}\usepackage{makeidx}\makeindex\begin{document}\tableofcontents"]
    for chapter in range(12):
        parts.append(r"\chapter{Chapter %d}\label{c%d}" % (chapter, chapter))
        for section in range(8):
            other = (chapter * 8 + section * 5) % 12
            parts.append(r"\section{Section %d}\label{s%d.%d}See \ref{c%d} and page \pageref{s%d.%d}, and \cite{key%d}."
                         % (section, chapter, section, other, other, section, (chapter + section) % 30))
            for number in range(4):
                parts.append(r"%s\index{word %d!%d}" % (TEXT, chapter, number) + "\n\n")
    return "\n".join(parts + [r"\bibliographystyle{plain}\bibliography{refs}\printindex\end{document}"])


class Passes:
    """A home with the documents, and a shell that runs them."""

    def __init__(self, folder):
        home, self.environment = make_home(folder)
        os.environ.update(self.environment)
        subprocess.run([SETPATHS, "--defaults"], check=True)
        self.preferences = os.path.join(self.environment["XDG_CONFIG_HOME"], "Quillon Preferences")
        self.work = os.path.join(home, "work")
        self.write("book.tex", book())
        self.write("small.tex", SMALL)
        self.write("refs.bib", "".join("@book{key%d, author={A. Uthor}, title={Title %d}, publisher={P}, year=2000}\n"
                                       % (number, number) for number in range(30)))
        self.shell = subprocess.Popen([SHELL, "--headless", "--service"], stdin=subprocess.DEVNULL,
                                      stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.exec("small")

    def write(self, name, text):
        with open(os.path.join(self.work, name), "w", encoding="ascii") as file:
            file.write(text)

    def fresh(self):
        """Leaves the sources alone."""
        for name in os.listdir(self.work):
            if not name.endswith((".tex", ".bib")):
                os.unlink(os.path.join(self.work, name))

    def exec(self, name):
        """The document by `quillon exec`; what it said."""
        return subprocess.run([QUILLON, "exec", "pdflatex", name + ".tex"], cwd=self.work, stdin=subprocess.DEVNULL,
                              capture_output=True, encoding="latin-1", check=True).stdout

    def program(self, *words):
        with open(os.path.join(self.work, "output"), "wb") as output:
            subprocess.run(words, cwd=self.work, stdin=subprocess.DEVNULL, stdout=output, stderr=output, check=True)

    def steps(self, said):
        """The programs that a run has started after the first pass."""
        return [match.group(1) or "pdflatex" for match in map(STEP.match, said.splitlines()) if match]

    def alone(self, steps):
        """The same programs, one after the other."""
        self.program("pdflatex", "book.tex")
        for step in steps:
            self.program(step, "book")

    def timed(self, run):
        self.fresh()
        return milliseconds(run)

    def with_setting(self, value, run):
        with open(self.preferences, "rb") as file:
            text = file.read()
        with open(self.preferences, "wb") as file:
            file.write(re.sub(rb"(?m)^RERUN=.*$", b"RERUN=" + value, text))
        return milliseconds(run)

    def change_a_word(self, number):
        """Another word of the same width class in a paragraph in the middle."""
        text = book()
        middle = text.index("quick", len(text) // 2)
        self.write("book.tex", text[:middle] + ("quick" if number % 2 else "quiet") + text[middle + 5:])


class Watch:
    """A `quillon watch` of the small document."""

    def __init__(self, passes):
        self.passes, self.saves = passes, 0
        self.process = subprocess.Popen([QUILLON, "watch", "small.tex"], cwd=passes.work, stdin=subprocess.DEVNULL,
                                        stdout=subprocess.PIPE, encoding="latin-1")
        self.wait()

    def wait(self):
        """Waits for the line that sums a run up."""
        while "page" not in (line := self.process.stdout.readline()):
            if not line:
                sys.exit("the watch has ended")

    def save(self, name):
        self.saves += 1
        self.passes.write(name + ".tex", SMALL.replace("See", "Saw" if self.saves % 4 < 2 else "See"))

    def followed(self):
        """Saves the document and waits for the end of the run that follows."""
        self.save("small")
        self.wait()

    def alone(self):
        """Saves a copy that nobody watches and runs the engine."""
        self.save("other")
        self.passes.program("pdflatex", "other.tex")

    def end(self):
        self.process.terminate()
        self.process.wait()


def times(title, measured, reference, limit):
    row(title, f"{measured:.0f} ms", f"alone {reference:.0f} ms", f"{measured / reference:.2f}", f"<= {limit}",
        measured <= limit * reference)


def main():
    folder = tempfile.mkdtemp(prefix="quillon-bench-")
    try:
        passes = Passes(folder)
        repeat = max(3, REPEAT // 6)
        passes.fresh()
        steps = passes.steps(passes.exec("book"))
        if steps.count("pdflatex") < 2 or "bibtex" not in steps or "makeindex" not in steps:
            sys.exit(f"the book was run by {steps}")
        times(f"a book from scratch, {1 + steps.count('pdflatex')} passes",
              *interleaved(lambda: passes.timed(lambda: passes.exec("book")),
                           lambda: passes.timed(lambda: passes.alone(steps)), repeat), 1)
        count = iter(range(10000))

        def changed(run):
            passes.change_a_word(next(count))
            return milliseconds(run)

        passes.exec("book")
        times("the same after a change of a word", *interleaved(
            lambda: changed(lambda: passes.exec("book")),
            lambda: changed(lambda: passes.program("pdflatex", "book.tex")), repeat), 1)
        passes.exec("small")
        checked, unchecked = interleaved(lambda: passes.with_setting(b"1", lambda: passes.exec("small")),
                                         lambda: passes.with_setting(b"0", lambda: passes.exec("small")), 2 * REPEAT)
        row("the check whether a document is stable", f"{checked:.1f} ms", f"without {unchecked:.1f} ms",
            f"+{checked - unchecked:.1f} ms", "<= +3 ms", checked - unchecked <= 3)
        watch = Watch(passes)
        watched, alone = interleaved(lambda: milliseconds(watch.followed), lambda: milliseconds(watch.alone))
        watch.end()
        row("from a save to the finished PDF", f"{watched:.1f} ms", f"engine {alone:.1f} ms",
            f"+{watched - alone:.1f} ms", "<= +15 ms", watched - alone <= 15)
        passes.shell.terminate()
        passes.shell.wait()
    finally:
        shutil.rmtree(folder, ignore_errors=True)
    return 1 if over else 0


sys.exit(main())
