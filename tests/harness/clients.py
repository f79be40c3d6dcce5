"""Clients of the shell: `quillon` as a person or a Makefile calls it, many at once, each with its own document."""

import os
import re
import signal
import subprocess

from harness.applications import Applications
from harness.bus import ServiceTest
from harness.home import BUILD
from harness.processes import stop, wait_until

QUILLON = os.path.join(BUILD, "bin", "quillon")
ENDLESS = "\\immediate\\write16{endless}\\shipout\\hbox{}\\def\\x{\\x}\\x\n"


def default_signals():
    """What runs the tests may ignore what the terminal sends."""
    for number in (signal.SIGINT, signal.SIGQUIT, signal.SIGHUP):
        signal.signal(number, signal.SIG_DFL)


class Starts:
    """Starts clients, beside a test's home and bus."""

    def start(self, *words, **more):
        process = subprocess.Popen([QUILLON, *words], cwd=self.work, env=self.environment, stdin=subprocess.DEVNULL,
                                   preexec_fn=default_signals,
                                   **{"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **more})
        self.addCleanup(stop, process)
        return process

    def finish(self, process):
        """Waits for the end of a client: its status, what it printed and what it said."""
        wait_until(lambda: process.poll() is not None, "the end of the client")
        out, error = process.communicate()
        return process.returncode, out.decode(), error.decode()

    def quillon(self, *words):
        return self.finish(self.start(*words))


class Clients(Starts, Applications, ServiceTest):
    def setUp(self):
        super().setUp()
        self.prepare()
        self.preferences(USEPDFTEX="1")

    def nothing_is_left(self):
        for program in ("quillon-shell", "pdftex", "Linux/"):
            wait_until(lambda of=program: not self.processes_of(of), f"the end of every {program}")
        folder = os.path.join(self.environment["XDG_RUNTIME_DIR"], "quillon")
        left = os.listdir(folder) if os.path.isdir(folder) else []
        self.assertEqual([name for name in left if name.startswith("private-")], [])

    def document(self, number):
        """A document that says its number; the engine's status for it is 0."""
        self.file(f"d{number}.tex", f"\\immediate\\write16{{this is {number}}}\nNumber {number}.\\bye\n")
        return f"d{number}"

    def wait_for_engine(self, count=1):
        wait_until(lambda: len(self.engines()) >= count, "the engine")

    def engines(self):
        """The engines that run, and not what starts them."""
        found = []
        for process in self.processes_of("pdftex\0-recorder\0endless"):
            try:
                if os.path.basename(os.readlink(f"/proc/{process}/exe")) == "pdftex":
                    found.append(process)
            except OSError:
                continue
        return found

    def bad_document(self, number):
        """A document whose first error is on line NUMBER + 1; the engine's status for it is 1."""
        self.file(f"e{number}.tex", "text\n" * number + "\\undefined\n")
        return f"e{number}"

    def text_of_pdf(self, name):
        """The text of the output of a document, its lines in one."""
        done = self.run_program("pdftotext", os.path.join(self.work, name + ".pdf"), "-")
        self.assertEqual((done.returncode, done.stderr), (0, ""), name)
        return " ".join(done.stdout.split())

    def eight_at_once(self, mark):
        """Four good documents and four bad ones, each by a client of its own: each is told of its own."""
        good, bad = range(mark * 4, mark * 4 + 4), range(4)
        clients = [self.start("exec", "pdftex", self.document(number)) for number in good]
        clients += [self.start("exec", "pdftex", self.bad_document(number)) for number in bad]
        for number, client in zip([*good, *bad], clients):
            status, out, error = self.finish(client)
            if client in clients[:4]:
                self.assertEqual((status, error), (0, ""), f"d{number}")
                self.assertEqual(re.findall("this is .*", out), [f"this is {number}"])
                self.assertEqual(self.text_of_pdf(f"d{number}"), f"Number {number}. 1")
            else:
                place = f"{self.work}/e{number}.tex:{number + 1}"
                self.assertEqual((status, error), (1, f"{place}: Undefined control sequence.\n"))

    def make(self, count):
        """make -j8 over COUNT documents for LaTeX, each with a text of its own: each output is its document's."""
        numbers = range(count)
        for number in numbers:
            self.file(f"l{number}.tex", "\\documentclass{article}\\begin{document}\n"
                      f"\\typeout{{this is {number}}}Document {number} of many.\n\\end{{document}}\n")
            for ending in (".pdf", ".said"):
                if os.path.exists(os.path.join(self.work, f"l{number}{ending}")):
                    os.unlink(os.path.join(self.work, f"l{number}{ending}"))
        self.file("Makefile", "all: " + " ".join(f"l{number}.pdf" for number in numbers) +
                  f"\n%.pdf: %.tex\n\t@{QUILLON} exec pdftex -fmt=pdflatex $< > $*.said\n")
        made = self.run_program("make", "-j8")
        self.assertEqual((made.returncode, made.stdout, made.stderr), (0, "", ""))
        for number in numbers:
            with open(os.path.join(self.work, f"l{number}.said"), encoding="utf-8") as file:
                self.assertEqual(re.findall("this is .*", file.read()), [f"this is {number}"])
            self.assertEqual(self.text_of_pdf(f"l{number}"), f"Document {number} of many. 1")
