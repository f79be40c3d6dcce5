"""Loops of runs whose parties are killed, stopped or cancelled at random instants: nothing is left behind."""

import os
import signal
import time

from harness.clients import ENDLESS, Clients
from harness.owners import ENGINE, Owners
from harness.processes import children_of, described, processes_around, program_name, wait_until

SIGNALS = (signal.SIGKILL, signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT)
PARTIES = ("client", "shell", "host", "guard", "engine")
STOPPED = ("host", "guard")
LONGEST_DELAY = 0.4  # seconds; an engine runs well before
# In place of pdftex: what is asked for a document of these names is a script, all else is pdftex.
ENGINE_CHOICE = """#!/bin/bash
case "$*" in
*stubborn*) %s ;;
*) exec %s "$@" ;;
esac
"""
DOCUMENTS = {
    "endless": ENDLESS,  # a program that runs until it is ended
    "escape": "\\immediate\\write18{sh engine.sh}" + ENDLESS,  # and has children, by shell escape
    "stubborn": "",  # a script in place of the engine, with the same children
}


def names_in(folder):
    return os.listdir(folder) if os.path.isdir(folder) else []


class Around:
    """What is left of a test: all processes that have to do with its home, but for those that are to stay."""

    def spared(self):
        return {process.pid for process in (self.daemon, self.running) if process and process.poll() is None}

    def left(self):
        return [pid for pid in processes_around(self.home) if pid not in self.spared()]

    def nothing_is_left(self):
        """Waits for the end of all processes; the files that are left, which the next shell removes."""
        try:
            wait_until(lambda: not self.left(), "the end of what is left")
        except AssertionError as error:
            raise AssertionError("\n    ".join([f"{error}:", *map(described, self.left())])) from None
        folder = os.path.join(self.environment["XDG_RUNTIME_DIR"], "quillon")
        private = [name for name in names_in(folder) if name.startswith("private-")]
        return private + names_in(os.path.join(folder, "runs"))


class Kills(Around, Clients):
    """Clients' runs, of private shells or of one shell, that are ended in every way at every instant."""

    def setUp(self):
        super().setUp()
        self.file("engine.sh", ENGINE)
        engine = self.run_program("which", "pdftex").stdout.strip()
        self.file("pdftex", ENGINE_CHOICE % ("exec bash engine.sh", engine), self.programs, 0o755)
        for name, text in DOCUMENTS.items():
            self.file(name + ".tex", text)

    shared = False  # whether one shell runs for all

    def endure(self, count, chance):
        """COUNT trials, drawn from CHANCE: what was done, and how often."""
        counts = {}
        for number in range(count):
            if self.shared and (self.running is None or self.ended()):
                self.start_shell("--service")
            trial = self.draw(chance)
            try:
                how = self.trial(trial)
                if self.shared and self.ended():
                    self.start_shell("--service")
                self.next_run_is_fine(number)
            except AssertionError as error:
                raise AssertionError(f"trial {number}, {trial}: {error}") from None
            for word in (f"{trial['action']} {trial['party']}", trial["document"], how):
                counts[word] = counts.get(word, 0) + 1
        return counts

    def draw(self, chance):
        document = chance.choice(list(DOCUMENTS))
        action = chance.choice(["cancel", "stop", *(["signal"] * 6)])
        party = {"cancel": "client", "stop": chance.choice(STOPPED), "signal": chance.choice(PARTIES)}[action]
        number = {"cancel": signal.SIGINT, "stop": signal.SIGSTOP, "signal": chance.choice(SIGNALS)}[action]
        said = number.name if action == "signal" else action
        return {"document": document, "party": party, "number": number, "action": said,
                "instant": chance.uniform(0, LONGEST_DELAY), "then": chance.uniform(0, LONGEST_DELAY)}

    def trial(self, trial):
        """One run and its end; how it ended, in a word."""
        begun = time.monotonic()
        words = ["exec", "pdftex", *(["-shell-escape"] if trial["document"] == "escape" else []), trial["document"]]
        client = self.start(*words)
        while time.monotonic() < begun + trial["instant"]:
            pass
        pid = self.find(trial["party"], client)
        if pid is None:
            raise AssertionError(f"the client ended before there was a {trial['party']}: {client.communicate()}")
        try:
            os.kill(pid, trial["number"])
        except ProcessLookupError:
            pass  # it has just ended
        if trial["party"] != "client" and trial["number"] != signal.SIGKILL:
            # This alone need not end the run; what follows does.
            self.wait_for_end(client, trial["then"])
            if client.poll() is None:
                client.send_signal(signal.SIGINT)
        elif trial["party"] == "shell" and self.running:
            # A client that came too late for that shell has one of its own, whose run goes on.
            wait_until(lambda: client.poll() is not None or children_of(client.pid), "the end of the client")
            if client.poll() is None:
                client.send_signal(signal.SIGINT)
        status = self.finish(client)[0]
        if trial["party"] == "shell" and trial["number"] != signal.SIGSTOP and self.running:
            wait_until(self.ended, "the end of the shell")
        self.nothing_is_left()
        return f"status {status}"

    def wait_for_end(self, client, seconds):
        end = time.monotonic() + seconds
        while client.poll() is None and time.monotonic() < end:
            pass

    def find(self, party, client):
        """The process of that party, as soon as there is one; None when the client ended before."""
        end = time.monotonic() + 60
        while client.poll() is None:
            pid = self.look(party, client)
            if pid:
                return pid
            self.assertLess(time.monotonic(), end, f"no {party} comes")
        return None

    def look(self, party, client):
        """The process of that party, 0 while there is none: each is the child of the one before."""
        pid = client.pid
        for step in PARTIES[:PARTIES.index(party) + 1]:
            if step == "shell" and self.running:
                pid = self.running.pid
            elif step == "engine":
                pid = next(iter(children_of(pid)), 0)
            elif step != "client":
                wanted = "quillon-shell" if step == "shell" else "quillon-toolhost"
                # A child that is still its parent's program is not the party yet; the guard is a fork of the host.
                pid = next((child for child in children_of(pid) if program_name(child) == wanted), 0)
            if not pid:
                return 0
        return pid

    def next_run_is_fine(self, number):
        name = self.document(number)
        status, out, error = self.quillon("exec", "pdftex", name)
        self.assertEqual((status, error), (0, ""), f"{name}: {out}")
        self.assertEqual(self.text_of_pdf(name), f"Number {number}. 1")
        self.assertEqual(self.nothing_is_left(), [], "files that are left")
        for ending in (".tex", ".pdf", ".log"):
            os.unlink(os.path.join(self.work, name + ending))


class Private(Kills):
    """Each client has a shell of its own."""


class Shared(Kills):
    shared = True


class Appears(Around, Owners):
    """Shells that are killed as their tool host appears."""

    def endure(self, count, _):
        for _ in range(count):
            self.kill_the_shell_as_its_host_appears()
            self.nothing_is_left()
        self.start_shell()
        self.assert_the_next_run_is_fine()
        return {}
