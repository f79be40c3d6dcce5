"""What can go wrong while a snapshot is made or used."""

import os
import random
import resource
import shutil
import signal
import stat
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import COMMAND, SnapshotTest, log_of, stop, wait_until  # noqa: E402

PREAMBLE = ["\\usepackage{hyperref}", "\\newcommand\\x{y}", "\\typeout{the preamble speaks}"]


class Faults(SnapshotTest):
    def removing_engine(self):
        """Runs take an engine that removes the snapshot that it was offered before it looks for it, once told so."""
        self.take_engine(f"[ -e '{self.home}/remove' ] && rm -rf '{self.snapshots}'/doc-*\nexec $ENGINE \"$@\"")

    def test_a_snapshot_that_is_deleted_when_the_engine_starts(self):
        self.removing_engine()
        self.document(PREAMBLE)
        self.typeset()
        first = self.typeset()
        self.file("remove", "", self.home)
        self.preferences(SNAPSHOT="1", DEBUG="1")
        log = self.typeset()
        self.assertIn("its snapshot has gone", log)
        self.assertEqual(log.replace("The preamble was executed: its snapshot has gone.\n", ""), first)

    def test_an_error_when_the_snapshot_has_just_gone_is_seen(self):
        self.removing_engine()
        self.document(PREAMBLE)
        # The engine asks what to do, and nobody can answer.
        options = ("-interaction=errorstopmode",)
        self.typeset(options=options)
        self.assertEqual(len(self.kept()), 1)
        self.document(PREAMBLE, "\\undefinedcommand")
        self.file("remove", "", self.home)
        self.assertIn("l.6 \\undefinedcommand", self.typeset(options=options, status=1))

    def test_a_document_that_is_saved_when_the_engine_starts(self):
        saved = os.path.join(self.home, "saved.tex")
        self.take_engine(f"[ -e '{saved}' ] && mv '{saved}' '{self.work}/doc.tex'\nexec $ENGINE \"$@\"")
        # With as many lines, with more, and with fewer, which the engine would pass over unseen.
        for lines in (["\\newcommand\\x{another}"], ["\\newcommand\\z{}", "\\newcommand\\x{another}"],
                      ["\\newcommand\\x{another}\\newcommand\\z{}"]):
            self.document([*PREAMBLE[:1], "\\newcommand\\x{y}", "\\relax"], "\\typeout{It is \\x.}")
            self.typeset()
            self.assertTrue(self.snapshot_was_read())
            self.file(saved, "\n".join(["\\documentclass{article}", *PREAMBLE[:1], *lines, "\\begin{document}",
                                        "\\typeout{It is \\x.}", "\\end{document}", ""]))
            log = self.typeset(QUILLON_OWN_BUS="1")
            self.assertFalse(os.path.exists(saved))
            self.assertIn("Pass 2: doc.tex changed", log)
            self.assertIn("It is another.", log.partition("Pass 2")[2])
            pdf = self.left()["doc.pdf"]
            self.bare()
            self.assertEqual(self.left()["doc.pdf"], pdf)

    def test_two_documents_of_one_name(self):
        other = os.path.join(self.home, "other")
        for folder, text in ((self.work, "here"), (other, "there")):
            os.makedirs(folder, exist_ok=True)
            self.file("local.sty", f"\\newcommand\\place{{{text}}}\\typeout{{I am {text}}}\n", folder)
            self.document(["\\usepackage{local}"], "\\place", folder=folder)
        for _ in range(2):
            for folder, text in ((self.work, "here"), (other, "there")):
                self.assertIn(f"I am {text}", self.typeset(folder=folder))
        self.assertEqual(len(self.kept()), 2)
        for folder in (self.work, other):
            self.assertTrue(self.snapshot_was_read(folder=folder))

    def test_a_preamble_that_changes_while_it_is_dumped(self):
        style = self.file("my.sty", "\\newcommand\\mine{a}\n", self.work)
        self.document(["\\usepackage{my}"], "\\mine")
        for text in "bcd":
            process = self.background()
            runtime = os.path.join(self.environment["XDG_RUNTIME_DIR"], "quillon")

            def dumping():
                return any(os.path.exists(os.path.join(runtime, name, "lines.tex")) for name in os.listdir(runtime)
                           if name.startswith("snapshot-")) or process.poll() is not None

            wait_until(lambda: os.path.isdir(runtime) and dumping(), "the dump")
            self.file("my.sty", f"\\newcommand\\mine{{{text}}}\n", self.work)
            self.settle(style)
            self.assertRegex(self.end_of(process), "^no snapshot: ")
            self.assertEqual(self.kept(), [])
        self.assertEqual(self.remember(), "snapshot: 2 of 2 lines")

    def test_a_kill_at_every_stage_leaves_nothing_half_made_in_use(self):
        self.document(PREAMBLE, "\\section{A}\\x")
        self.bare()
        wanted = self.bare()
        generator = random.Random(5)
        for _ in range(10):
            process = self.background()
            try:
                process.communicate(timeout=generator.random() * 2.5)
            except subprocess.TimeoutExpired:
                pass
            process.kill()
            process.communicate()
            self.assertEqual(self.typeset(QUILLON_OWN_BUS="1").replace("\n\n", "\n"), wanted.replace("\n\n", "\n"))
        self.assertIn(self.remember(), ("snapshot: 4 of 4 lines", "the snapshot holds"))
        self.assertTrue(self.snapshot_was_read())
        self.assertEqual([name for name in os.listdir(self.snapshots) if name.startswith("part-")], [])
        self.assertEqual([name for name in os.listdir(os.path.join(self.environment["XDG_RUNTIME_DIR"], "quillon"))
                          if name.startswith("snapshot-")], [])

    def test_eight_runs_at_once_of_one_document(self):
        self.document(PREAMBLE)
        self.typeset()
        tools = [self.launch(self.tool) for _ in range(8)]
        for tool in tools:
            tool.send(" ".join([*COMMAND, "doc"]))
        for tool in tools:
            log_of(tool.reply())
        self.wait_for_background()
        self.assertEqual(len(self.kept()), 1)
        self.assertTrue(self.snapshot_was_read())

    def test_eight_requests_at_once_for_one_document(self):
        self.document(PREAMBLE)
        processes = [self.background() for _ in range(8)]
        said = [self.end_of(process) for process in processes]
        self.assertEqual(sorted(said), sorted(["snapshot: 4 of 4 lines", *["the snapshot holds"] * 7]))
        self.assertEqual(len(self.kept()), 1)

    def test_notes_that_are_damaged(self):
        self.document(PREAMBLE)
        self.typeset()
        note = next(os.path.join(self.snapshots, name) for name in os.listdir(self.snapshots) if name.endswith(".note"))
        with open(note, "rb") as file:
            whole = file.read()
        generator = random.Random(3)
        for _ in range(12):
            place = generator.randrange(len(whole))
            self.file(note, whole[:place])
            log = self.typeset(QUILLON_OWN_BUS="1")
            self.assertIn("the preamble speaks", log)
            self.assertIn("Output written", log)
        os.unlink(os.path.join(self.kept()[0], "texts"))
        self.file(note, whole)
        self.assertIn("the preamble speaks", self.typeset())

    def test_no_space_left(self):
        self.document(PREAMBLE)
        for limit in (0, 100, 3000, 100000, 1000000, 8000000):
            def fill(size=limit):
                signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
                resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))
            process = self.background(preexec_fn=fill, restore_signals=False)
            said = self.end_of(process)
            self.assertRegex(said, "^no snapshot: ")
            self.assertEqual(self.kept(), [])
        self.assertEqual(self.remember(), "snapshot: 4 of 4 lines")

    def test_the_work_of_a_day_has_an_end(self):
        self.document(PREAMBLE)
        self.remember()
        with open(os.path.join(self.snapshots, "work"), encoding="ascii") as file:
            day, seconds = file.read().split("\0")[:2]
        self.assertGreater(int(seconds), 0)
        shutil.rmtree(self.snapshots)
        os.makedirs(self.snapshots, 0o700)
        self.file("work", f"{day}\0003600\0", self.snapshots)
        self.assertEqual(self.remember(), "no snapshot: an hour of work has been done today")
        self.file("work", f"{int(day) - 1}\0003600\0", self.snapshots)
        self.assertEqual(self.remember(), "snapshot: 4 of 4 lines")

    def test_room_is_made_by_what_was_not_used_for_longest(self):
        self.document(PREAMBLE)
        self.remember()
        first = self.kept()[0]
        note = next(name for name in os.listdir(self.snapshots) if name.endswith(".note"))
        # A large one that was used later, and one more that was used last.
        names = {first}
        for number, used in ((1, 2000000000), (2, 2100000000)):
            folder = os.path.join(self.snapshots, f"large-{number}")
            os.mkdir(folder, 0o700)
            with open(os.path.join(folder, "pdflatex.fmt"), "wb") as file:
                file.truncate(235000000)
            with open(os.path.join(self.snapshots, note), "rb") as file:
                fields = file.read().split(b"\0")
            fields[fields.index(b"snapshot") + 1] = f"large-{number}".encode()
            self.file(f"large-{number}.note", b"\0".join(fields), self.snapshots)
            os.utime(folder, (used, used))
            names.add(folder)
        os.utime(first, (1000, 1000))
        self.document([*PREAMBLE, "\\relax"])
        self.assertEqual(self.remember(), "snapshot: 5 of 5 lines")
        self.assertFalse(os.path.exists(first))
        self.assertEqual(len(self.kept()), 3)

    def test_the_folders_are_the_person_s_own(self):
        self.document(PREAMBLE)
        self.remember()
        for path in (self.snapshots, self.kept()[0]):
            self.assertEqual(stat.S_IMODE(os.stat(path).st_mode), 0o700)
        for path in os.listdir(self.kept()[0]):
            self.assertEqual(os.stat(os.path.join(self.kept()[0], path)).st_mode & 0o022, 0)

    def test_nothing_is_written_into_the_document_s_folder(self):
        self.document(PREAMBLE)
        self.assertEqual(self.remember(), "snapshot: 4 of 4 lines")
        self.assertEqual(os.listdir(self.work), ["doc.tex"])

    def test_the_work_ends_with_the_session(self):
        self.document(PREAMBLE)
        process = self.background()
        wait_until(lambda: os.path.isdir(self.snapshots), "the work")
        stop(self.daemon)
        self.assertRegex(self.end_of(process), "^no snapshot: ")
        self.assertEqual(self.kept(), [])


if __name__ == "__main__":
    unittest.main()
