"""A test with documents whose preambles are remembered."""

import glob
import os
import shutil
import subprocess

from harness.home import BINARIES
from harness.processes import stop, wait_until
from harness.tool_host import HostTest, log_of

BACKGROUND = os.path.join(BINARIES, "Quillon.app", "Contents", "Linux", "quillon-background")
ENGINE = shutil.which("pdftex")
COMMAND = ("pdftex", "-progname=pdflatex", "-fmt=pdflatex", "-interaction=nonstopmode")


class SnapshotTest(HostTest):
    """Documents in a folder, the program in the background, and the tool host that runs pdfTeX on them."""

    work_name = "work"

    def setUp(self):
        super().setUp()
        self.preferences(SNAPSHOT="1")
        self.snapshots = os.path.join(self.environment["XDG_CACHE_HOME"], "quillon", "snapshots")
        # Two runs at two times leave the same bytes.
        self.environment.update(SOURCE_DATE_EPOCH="1000000000", FORCE_SOURCE_DATE="1")
        self.tool = os.path.join(BINARIES, "pdftex.app")
        self.engine = ENGINE

    def take_engine(self, script):
        """Runs take a program of the engine's name, a shell script, which finds the engine itself as $ENGINE."""
        folder = os.path.join(self.home, "bin")
        os.makedirs(folder)
        self.engine = self.file("pdftex", f"#!/bin/sh\nENGINE={ENGINE}\n{script}\n", folder, 0o755)
        os.symlink(shutil.which("kpsewhich"), os.path.join(folder, "kpsewhich"))
        self.tool = self.bundle("pdftex", self.engine, "PXET")

    def document(self, preamble, body="Hello.", name="doc", folder=None):
        """Writes a document: the lines between its class and its body, and its body."""
        lines = ["\\documentclass{article}", *preamble, "\\begin{document}", body, "\\end{document}", ""]
        path = self.file(name + ".tex", "\n".join(lines), folder or self.work)
        self.settle(path)
        return path

    @staticmethod
    def settle(*paths):
        """Waits until a further change of the files would have another time than this one."""
        newest = max(os.stat(path).st_ctime for path in paths)
        probe = paths[0] + ".probe"

        def is_past():
            with open(probe, "w", encoding="ascii"):
                pass
            later = os.stat(probe).st_ctime
            os.unlink(probe)
            return later > newest + 0.11

        wait_until(is_past, "a later time")

    def background(self, name="doc", folder=None, options=(), **more):
        """Starts the program in the background for a document."""
        folder = folder or self.work
        more.setdefault("env", self.environment)
        words = [BACKGROUND, "--snapshot", self.tool, self.engine, folder, f"{folder}/{name}.tex",
                 *COMMAND, *options, name]
        process = subprocess.Popen(words, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   text=True, **more)
        self.addCleanup(stop, process)
        return process

    def remember(self, name="doc", folder=None, options=(), **more):
        """What the program in the background says of a document when it is run by hand."""
        process = self.background(name, folder, options, **more)
        said = self.end_of(process)
        self.assertEqual(process.stderr.read(), "")
        stop(process)
        return said

    def assert_remembered(self, preamble, body="Hello.", lines=None):
        """The preamble is remembered up to the line of that number, with the class the first; all without one."""
        self.document(preamble, body)
        said = self.remember()
        wanted = len(preamble) + 1 if lines is None else lines
        self.assertTrue(said.startswith(f"snapshot: {wanted} of {len(preamble) + 1} lines"), said)
        return said

    def typeset(self, name="doc", folder=None, options=(), status=0, **environment):
        """Runs the engine under the tool host, and waits for the work in the background; what the run printed."""
        tool = self.launch(self.tool, **environment)
        reply = tool.run(" ".join([*COMMAND, *options, name]), folder)
        log = log_of(reply)
        self.assertEqual(reply["----"], status, log)
        tool.event("aevt", "quit")
        wait_until(tool.gone, "the host's end")
        self.wait_for_background()
        self.reply = reply
        return log.decode("utf-8", "replace").replace("\r", "\n")

    def hurry(self):
        """Gives the work in the background, and the engines of it, the usual priority, where the test may do that.

        Beside other tests it would hardly get on otherwise.
        """
        workers = self.processes_of("quillon-background")
        for worker in [*workers, *(self.processes_of("output-directory=") if workers else ())]:
            try:
                os.sched_setscheduler(worker, os.SCHED_OTHER, os.sched_param(0))
                os.setpriority(os.PRIO_PROCESS, worker, 0)
            except OSError:
                pass
        return bool(workers)

    def end_of(self, process):
        """What a program that background() has started says when it has ended."""
        wait_until(lambda: (process.poll() is not None) or (self.hurry() and False), "the end of the work", 300)
        return process.stdout.read().strip()

    def wait_for_background(self):
        wait_until(lambda: not self.hurry() and self.background_has_ended(), "the end of the work in the background", 300)

    def bare(self, name="doc", folder=None, options=(), status=0):
        """Runs the engine alone; what it printed."""
        done = subprocess.run([self.engine, *COMMAND[1:], *options, name], cwd=folder or self.work,
                              env=dict(self.environment, max_print_line="1000000"), stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
        self.assertEqual(done.returncode, status)
        return done.stdout.decode("utf-8", "replace")

    def left(self, folder=None, but=()):
        """The files of the folder: their names and bytes."""
        folder = folder or self.work
        result = {}
        for name in sorted(os.listdir(folder)):
            if not name.endswith(tuple(but)) or not but:
                with open(os.path.join(folder, name), "rb") as file:
                    result[name] = file.read()
        return result

    def kept(self):
        """The folders of the snapshots that are kept."""
        return [path for path in glob.glob(os.path.join(self.snapshots, "*")) if os.path.isdir(path)]

    def snapshot_was_read(self, name="doc", folder=None, options=()):
        """True when a run reads a snapshot. It asks the tool host itself, which says so with Show Debug Output."""
        self.preferences(SNAPSHOT="1", DEBUG="1")
        log = self.typeset(name, folder, options)
        self.preferences(SNAPSHOT="1")
        said = ["The preamble was remembered." in log, "The preamble is executed" in log,
                "its snapshot has gone" in log]
        self.assertEqual(sum(said), 1, log)
        self.said_of_it = next(line for line in log.splitlines() if line.startswith("The preamble "))
        return said[0]
