"""Runs with a snapshot of the preamble: real engines under the tool host, and what can go wrong between two runs."""

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
from harness import COMMAND, ENGINE, SnapshotTest, log_of, stop, wait_until  # noqa: E402

PREAMBLE = ["\\usepackage{hyperref}", "\\newcommand\\x{y}", "\\typeout{the preamble speaks}"]


class Use(SnapshotTest):
    def test_the_second_run_takes_it_and_leaves_the_same_bytes(self):
        self.document(PREAMBLE, "\\section{A}\\x")
        self.typeset()
        # The labels are there; the snapshot was made after the run before.
        self.assertEqual(len(self.kept()), 1)
        shutil.rmtree(self.snapshots)
        first, left = self.typeset(options=("-recorder",)), self.left()
        shutil.rmtree(self.snapshots)
        self.typeset()
        second = self.typeset(options=("-recorder",))
        self.assertIn("the preamble speaks", first)
        self.assertEqual(len(self.kept()), 2)
        self.assertEqual(second, first)
        third = self.typeset(options=("-recorder",))
        self.assertEqual(third, first)
        for name, content in self.left().items():
            if name.endswith(".log"):
                content, left[name] = (text.split(b"\nHere is how much")[0] for text in (content, left[name]))
            self.assertEqual(content, left[name], name)
        self.assertTrue(self.snapshot_was_read())

    def test_the_log_and_the_list_tell_of_the_preamble(self):
        self.document(PREAMBLE)
        self.typeset()
        self.assertTrue(self.snapshot_was_read(options=()))
        self.bare(options=("-recorder",))
        left = self.left()
        for name in os.listdir(self.work):
            if name != "doc.tex":
                os.unlink(os.path.join(self.work, name))
        self.typeset(options=("-recorder",))  # asks for the snapshot of these words
        for name in ("doc.log", "doc.fls"):
            os.unlink(os.path.join(self.work, name))
        shutil.copy(self.file("aux", left["doc.aux"], self.home), os.path.join(self.work, "doc.aux"))
        self.assertTrue(self.snapshot_was_read(options=("-recorder",)))
        now = self.left()
        self.assertEqual(now["doc.fls"].decode().splitlines(), left["doc.fls"].decode().splitlines())
        self.assertIn(b"the preamble speaks", now["doc.log"])
        self.assertIn(b"(preloaded format=pdflatex ", now["doc.log"])
        self.assertNotIn(b"quillon", now["doc.log"].replace(self.home.encode(), b""))

    def test_an_error_has_its_line_in_its_file(self):
        self.document(PREAMBLE)
        self.typeset()
        self.document(PREAMBLE, "fine\n\n\\undefinedcommand")
        self.assertIn("l.8 \\undefinedcommand", self.typeset(status=1))
        self.assertEqual(self.settings()["LINENUMBER"], "8")
        self.assertEqual(self.settings()["FILENAME"], os.path.join(self.work, "doc.tex"))

    def test_passes_go_on_by_what_the_preamble_reads(self):
        self.preferences(SNAPSHOT="1", RERUN="1")
        self.document(PREAMBLE, "\\tableofcontents\\section{A}\\label{a}\\ref{a}")
        self.typeset()
        self.document(PREAMBLE, "\\tableofcontents\\section{A}\\section{B}\\label{a}\\ref{a}")
        log = self.typeset()
        self.assertIn("Pass 2:", log)
        self.assertEqual(log.count("the preamble speaks"), log.count("Pass") + 1)

    def test_without_the_key_nothing_is_made_and_nothing_is_used(self):
        self.document(PREAMBLE)
        for value in (None, "0"):
            self.preferences(SNAPSHOT=value)
            self.typeset()
            self.assertFalse(os.path.exists(self.snapshots))
        self.preferences(SNAPSHOT="1")
        self.typeset()
        self.assertTrue(self.kept())
        before = os.stat(self.kept()[0]).st_mtime_ns
        self.preferences()
        self.typeset()
        self.assertEqual(os.stat(self.kept()[0]).st_mtime_ns, before)

    def test_a_private_shell_uses_a_snapshot_and_makes_none(self):
        self.document(PREAMBLE)
        self.typeset(QUILLON_OWN_BUS="1")
        self.assertFalse(os.path.exists(self.snapshots))
        self.typeset()
        folder = self.kept()[0]
        os.utime(folder, (1, 1))
        self.typeset(QUILLON_OWN_BUS="1")
        self.assertGreater(os.stat(folder).st_mtime, 1)
        self.document([*PREAMBLE, ""])
        self.typeset(QUILLON_OWN_BUS="1")
        self.assertEqual(self.kept(), [folder])

    def test_the_person_is_told_with_show_debug_output_only(self):
        self.document(PREAMBLE)
        self.assertNotIn("The preamble", self.typeset())
        self.preferences(SNAPSHOT="1", DEBUG="1")
        self.assertIn("The preamble was remembered.\n", self.typeset())
        self.assertIn("The preamble is executed: the option -synctex=1.\n", self.typeset(options=("-synctex=1",)))
        self.document([*PREAMBLE, "\\relax"])
        self.assertIn("The preamble is executed; it is not remembered yet.\n", self.typeset())

    def test_nothing_is_made_after_an_error(self):
        self.document(PREAMBLE, "\\undefinedcommand")
        self.typeset(status=1)
        self.assertFalse(os.path.exists(self.snapshots))

    def test_what_is_refused_is_not_tried_again_until_something_changes(self):
        self.document(["\\begingroup"], "\\endgroup\\the\\pdfrandomseed")
        self.typeset()
        self.assertIn("different at every run", self.remember())
        note = [name for name in os.listdir(self.snapshots) if name.endswith(".note")]
        times = {name: os.stat(os.path.join(self.snapshots, name)).st_mtime_ns for name in note}
        self.typeset()
        self.typeset()
        self.assertEqual({name: os.stat(os.path.join(self.snapshots, name)).st_mtime_ns for name in note}, times)
        self.document(["\\relax"], "x")
        self.typeset()
        self.assertEqual(len(self.kept()), 1)


class Stale(SnapshotTest):
    """What a snapshot rests on changes: the next run executes the preamble, and there is a new snapshot after it."""

    def check(self, change, wanted=True):
        self.typeset()
        self.assertTrue(self.snapshot_was_read(), self.said_of_it)
        change()
        self.assertEqual(self.snapshot_was_read(), not wanted)
        if wanted:
            self.assertTrue(self.snapshot_was_read())
            self.assertIn("Output written", self.bare())

    def test_a_line_is_added_to_the_preamble(self):
        self.document(PREAMBLE)
        self.check(lambda: self.document([*PREAMBLE, "\\newcommand\\z{z}"], "\\z"))

    def test_a_letter_changes_in_the_preamble(self):
        self.document(PREAMBLE)
        self.check(lambda: self.document([line.replace("{y}", "{z}") for line in PREAMBLE]))

    def test_a_change_of_the_body_changes_nothing(self):
        self.document(PREAMBLE)
        self.check(lambda: self.document(PREAMBLE, "Other text."), wanted=False)

    def test_a_file_of_the_preamble_changes(self):
        style = self.file("my.sty", "\\newcommand\\mine{a}\n", self.work)
        self.document(["\\usepackage{my}"], "\\mine")

        def change():
            # As many bytes, in the same file, with its old time.
            times = os.stat(style)
            with open(style, "r+", encoding="ascii") as file:
                file.write("\\newcommand\\mine{b}\n")
            os.utime(style, ns=(times.st_atime_ns, times.st_mtime_ns))
            self.settle(style)

        self.check(change)

    def test_a_file_appears_that_was_looked_for_in_vain(self):
        self.document(["\\InputIfFileExists{later.cfg}{}{}", "\\newcommand\\x{y}"], "\\x")
        self.check(lambda: self.settle(self.file("later.cfg", "\\relax\n", self.work)))

    def test_a_file_appears_under_the_name_in_other_letters(self):
        self.document(["\\InputIfFileExists{later.cfg}{}{}", "\\newcommand\\x{y}"], "\\x")
        self.check(lambda: self.settle(self.file("Later.CFG", "\\relax\n", self.work)))

    def test_a_package_appears_in_the_document_s_folder(self):
        self.document(["\\usepackage{url}"], "\\url{a}")
        self.check(lambda: self.settle(shutil.copy(subprocess.run(
            ["kpsewhich", "url.sty"], capture_output=True, text=True, check=True).stdout.strip(), self.work)))

    def test_a_package_appears_earlier_in_the_search_path(self):
        own = os.path.join(self.home, "own", "deep")
        os.makedirs(own)
        self.environment["TEXINPUTS"] = os.path.join(self.home, "own") + "//:"
        self.document(["\\usepackage{url}"], "\\url{a}")
        self.check(lambda: self.settle(shutil.copy(subprocess.run(
            ["kpsewhich", "-progname=latex", "url.sty"], capture_output=True, text=True,
            check=True).stdout.strip(), own)))

    def test_only_the_size_of_a_file_was_asked_for(self):
        data = self.file("data.txt", "abc", self.work)
        self.document(["\\edef\\size{\\pdffilesize{data.txt}}", "\\edef\\sum{\\pdfmdfivesum file {data.txt}}"],
                      "\\size\\sum")

        def change():
            self.file("data.txt", "abcd", self.work)
            self.settle(data)

        self.check(change)

    def test_a_variable_of_the_environment_changes(self):
        self.document(PREAMBLE)
        self.check(lambda: self.environment.update(TEXMFHOME=os.path.join(self.home, "elsewhere")))

    def test_a_variable_of_the_session_changes_nothing(self):
        self.document(PREAMBLE)
        self.check(lambda: self.environment.update(XDG_SESSION_ID="7", TERM="xterm"), wanted=False)

    def test_an_engine_is_updated(self):
        folder = os.path.join(self.home, "bin")
        os.makedirs(folder)
        self.engine = shutil.copy(ENGINE, folder)
        os.symlink(shutil.which("kpsewhich"), os.path.join(folder, "kpsewhich"))
        self.tool = self.bundle("pdftex", self.engine, "PXET")
        self.document(PREAMBLE)

        def change():
            os.unlink(self.engine)
            shutil.copy(ENGINE, folder)

        self.check(change)

    def test_a_clock_that_jumps(self):
        self.document(PREAMBLE)
        self.check(lambda: os.utime(self.kept()[0], (4000000000, 4000000000)), wanted=False)
        path = os.path.join(self.work, "doc.tex")
        os.utime(path, (4000000000, 4000000000))
        self.assertTrue(self.snapshot_was_read())

    def test_a_truncated_snapshot(self):
        self.document(PREAMBLE)
        self.check(lambda: os.truncate(os.path.join(self.kept()[0], "pdflatex.fmt"), 100000))

    def test_bytes_of_a_snapshot_that_change(self):
        self.document(PREAMBLE)

        def change():
            with open(os.path.join(self.kept()[0], "pdflatex.fmt"), "r+b") as file:
                file.seek(1000)
                file.write(b"garbage")

        self.check(change)

    def test_a_snapshot_of_another_engine_version(self):
        self.document(PREAMBLE)

        def change():
            path = os.path.join(self.kept()[0], "pdflatex.fmt")
            with open(path, "rb") as file:
                content = file.read()
            os.unlink(path)
            self.file(path, content.replace(b"pdftex", b"pdfold", 1))

        self.check(change)

    def test_a_snapshot_that_is_gone(self):
        self.document(PREAMBLE)
        self.check(lambda: shutil.rmtree(self.kept()[0]))

    def test_a_snapshot_that_cannot_be_read(self):
        self.document(PREAMBLE)
        self.typeset()
        if os.geteuid() == 0:
            # Root may read everything, so something else lies there.
            path = os.path.join(self.kept()[0], "pdflatex.fmt")
            os.unlink(path)
            os.mkdir(path)
        else:
            os.chmod(os.path.join(self.kept()[0], "pdflatex.fmt"), 0)
        self.assertFalse(self.snapshot_was_read())
        self.assertTrue(self.snapshot_was_read())

    def test_a_snapshot_of_somebody_else(self):
        if os.geteuid() != 0:
            self.skipTest("only root can give a folder away")
        self.document(PREAMBLE)
        self.check(lambda: os.chown(self.kept()[0], 65534, 65534))

    def test_a_folder_that_others_may_write_to(self):
        self.document(PREAMBLE)
        self.check(lambda: os.chmod(self.kept()[0], 0o777))

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


class Faults(SnapshotTest):
    def test_a_snapshot_that_is_deleted_when_the_engine_starts(self):
        # An engine that removes the snapshot that it was offered before it looks for it.
        folder = os.path.join(self.home, "bin")
        os.makedirs(folder)
        self.engine = self.file("pdftex", f"#!/bin/sh\n[ -e '{self.home}/remove' ] && rm -rf '{self.snapshots}'/doc-*\n"
                                f"exec {ENGINE} \"$@\"\n", folder, 0o755)
        os.symlink(shutil.which("kpsewhich"), os.path.join(folder, "kpsewhich"))
        self.tool = self.bundle("pdftex", self.engine, "PXET")
        self.document(PREAMBLE)
        self.typeset()
        first = self.typeset()
        self.file("remove", "", self.home)
        self.preferences(SNAPSHOT="1", DEBUG="1")
        log = self.typeset()
        self.assertIn("its snapshot has gone", log)
        self.assertEqual(log.replace("The preamble was executed: its snapshot has gone.\n", ""), first)

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
            self.addCleanup(stop, process)
            runtime = os.path.join(self.environment["XDG_RUNTIME_DIR"], "quillon")

            def dumping():
                return any(os.path.exists(os.path.join(runtime, name, "lines.tex")) for name in os.listdir(runtime)
                           if name.startswith("snapshot-")) or process.poll() is not None

            wait_until(lambda: os.path.isdir(runtime) and dumping(), "the dump")
            self.file("my.sty", f"\\newcommand\\mine{{{text}}}\n", self.work)
            self.settle(style)
            self.assertRegex(process.communicate(timeout=100)[0], "^no snapshot: ")
            self.assertEqual(self.kept(), [])
        self.assertEqual(self.remember(), "snapshot: 2 of 2 lines")

    def test_a_kill_at_every_stage_leaves_nothing_half_made_in_use(self):
        self.document(PREAMBLE, "\\section{A}\\x")
        self.bare()
        wanted = self.bare()
        generator = random.Random(5)
        for _ in range(15):
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
        said = [process.communicate(timeout=100)[0].strip() for process in processes]
        self.assertEqual(sorted(said), sorted(["snapshot: 4 of 4 lines", *["the snapshot holds"] * 7]))
        self.assertEqual(len(self.kept()), 1)

    def test_no_space_left(self):
        self.document(PREAMBLE)
        for limit in (0, 100, 3000, 100000, 1000000, 8000000):
            def fill(size=limit):
                signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
                resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))
            process = self.background(preexec_fn=fill, restore_signals=False)
            said = process.communicate(timeout=100)[0]
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
        self.addCleanup(stop, process)
        wait_until(lambda: os.path.isdir(self.snapshots), "the work")
        stop(self.daemon)
        self.assertRegex(process.communicate(timeout=100)[0], "^no snapshot: ")
        self.assertEqual(self.kept(), [])


if __name__ == "__main__":
    unittest.main()
