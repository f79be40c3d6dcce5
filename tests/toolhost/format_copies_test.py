"""Uncompressed copies of formats: real engines, the program in the background, and what can go wrong between them."""

import glob
import gzip
import os
import random
import resource
import shutil
import signal
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import BINARIES, HostTest, log_of, stop, wait_until  # noqa: E402

BACKGROUND = os.path.join(BINARIES, "Quillon.app", "Contents", "Linux", "quillon-background")


def installed(name):
    return subprocess.run(["kpsewhich", "-engine=pdftex", name + ".fmt"], capture_output=True, text=True,
                          check=True).stdout.strip()


class FormatCopies(HostTest):
    home_name = "quillon-test-"  # a search path cannot name every folder

    def setUp(self):
        super().setUp()
        self.formats = os.path.join(self.support, "formats")
        os.makedirs(self.formats)
        self.preferences(TEXFORMATS=self.formats)
        self.copies = os.path.join(self.environment["XDG_CACHE_HOME"], "quillon", "formats")
        # Two runs at two times leave the same bytes.
        self.environment.update(SOURCE_DATE_EPOCH="1000000000", FORCE_SOURCE_DATE="1")
        # An engine that says where it looks for formats.
        programs = os.path.join(self.home, "programs")
        self.said = os.path.join(self.home, "said")
        self.engine = self.file("pdftex", f"#!/bin/sh\necho \"$TEXFORMATS\" >> '{self.said}'\n"
                                f"exec {shutil.which('pdftex')} \"$@\"\n", programs, 0o755)
        os.symlink(shutil.which("kpsewhich"), os.path.join(programs, "kpsewhich"))
        self.tool = self.bundle("pdftex", self.engine, "PXET")
        self.file("x.tex", "Hello.\n\\bye\n")
        self.my_format()

    def my_format(self, name="my"):
        """A format of the person's own."""
        return shutil.copy(installed("pdftex"), os.path.join(self.formats, name + ".fmt"))

    def run_it(self, command="pdftex -fmt=my x.tex"):
        """Runs a command to its end; the folder of the copy that the engine was offered, None when there was none."""
        self.log = self.run_to_end(command)
        with open(self.said, encoding="utf-8") as file:
            first = file.read().splitlines()[-1].split(":")[0]
        return first if first.startswith(self.copies) else None

    def found_now(self):
        """What the cache says of searches, and what of it does not hold: for the message of a test that fails."""
        told = [os.listdir(self.copies) if os.path.isdir(self.copies) else "no folder"]
        for path in glob.glob(os.path.join(self.copies, "*.search")):
            with open(path, encoding="utf-8") as file:
                fields = file.read().split("\0")
            told.append([tuple(fields[i:i + 3]) for i in range(4, len(fields) - 3, 3) if fields[i] != "place"])
            for name in (fields[i + 1] for i in range(4, len(fields) - 3, 3) if fields[i] == "place"):
                told.append((name, os.stat(name) if os.path.exists(name) else None))
        return "\n".join(map(str, told))

    def run_to_end(self, command, folder=None, status=0):
        """Runs a command, and waits for the work in the background that it starts; what the engine said."""
        tool = self.launch(self.tool)
        reply = tool.run(command, folder)
        log = log_of(reply)
        self.assertEqual(reply["----"], status, log)
        # The host asks for the work when it has replied.
        tool.event("aevt", "quit")
        wait_until(tool.gone, "the host's end")
        wait_until(self.background_has_ended, "the end of the work in the background")
        return log

    def background(self, *names, **more):
        words = [word for name in names for word in (name, name)]
        return subprocess.Popen([BACKGROUND, self.tool, self.engine, *words],
                                env=self.environment, stdin=subprocess.DEVNULL, **more)

    def whole(self, folder, name="my"):
        with gzip.open(os.path.join(self.formats, name + ".fmt")) as file:
            wanted = file.read()
        with open(os.path.join(folder, name + ".fmt"), "rb") as file:
            return file.read() == wanted

    def test_the_second_run_reads_the_copy_and_leaves_the_same_bytes(self):
        results = []
        for run in range(2):
            offered = self.run_it("pdftex -recorder -fmt=my x.tex")
            self.assertEqual(bool(offered), run == 1)
            left = {name: open(os.path.join(self.work, name), "rb").read() for name in ("x.pdf", "x.fls", "x.log")}
            results.append((self.log, left))
            for name in left:
                os.unlink(os.path.join(self.work, name))
        self.assertEqual(results[0], results[1])
        self.assertIn(f"INPUT {self.formats}/my.fmt\n".encode(), results[1][1]["x.fls"])
        self.assertTrue(self.whole(offered))

    def test_the_installed_format_of_latex(self):
        self.file("x.tex", "\\documentclass{article}\\begin{document}Hi\\end{document}\n")
        self.assertIsNone(self.run_it("pdftex -progname=pdflatex x.tex"))
        first = self.log
        os.unlink(os.path.join(self.work, "x.aux"))
        self.assertTrue(self.run_it("pdftex -progname=pdflatex x.tex"), self.found_now())
        self.assertEqual(self.log, first)

    def test_the_engine_reads_what_it_is_offered(self):
        self.run_it()
        folder = self.run_it()
        path = os.path.join(folder, "my.fmt")
        with open(path, "r+b") as file:
            file.write(b"garbage")
        self.assertIn(b"Fatal format file error", self.run_to_end("pdftex -fmt=my x.tex", status=1))

    def test_a_changed_format_is_used_at_once(self):
        self.run_it()
        old = self.run_it()
        self.assertTrue(old, self.found_now())
        # The same format, made a moment later.
        path = self.my_format()
        os.utime(path, (2000000000, 2000000000))
        self.assertIsNone(self.run_it())
        new = self.run_it()
        self.assertTrue(new)
        self.assertNotEqual(new, old)
        self.assertFalse(os.path.exists(old))

    def test_a_format_in_the_working_folder_comes_first(self):
        self.run_it()
        self.assertTrue(self.run_it())
        shutil.copy(os.path.join(self.formats, "my.fmt"), self.work)
        self.assertIsNone(self.run_it())

    def test_a_new_format_in_a_folder_that_is_searched_before_comes_first(self):
        before = os.path.join(self.home, "before")
        self.preferences(TEXFORMATS=f"{before}:{self.formats}")
        self.run_it()
        self.assertTrue(self.run_it())
        os.makedirs(before)
        shutil.copy(os.path.join(self.formats, "my.fmt"), before)
        self.assertIsNone(self.run_it("pdftex -recorder -fmt=my x.tex"))
        self.assertTrue(self.run_it("pdftex -recorder -fmt=my x.tex"))
        with open(os.path.join(self.work, "x.fls"), encoding="utf-8") as file:
            self.assertIn(f"INPUT {before}/my.fmt\n", file.read())

    def test_the_format_that_the_first_line_names(self):
        self.file("x.tex", "%&my\nHello.\n\\bye\n")
        self.run_it("pdftex x.tex")
        self.assertTrue(self.run_it("pdftex -recorder x.tex"))
        with open(os.path.join(self.work, "x.fls"), encoding="utf-8") as file:
            self.assertIn(f"INPUT {self.formats}/my.fmt\n", file.read())

    def test_damaged_formats_fail_as_they_do_without_the_shell(self):
        whole = open(installed("pdftex"), "rb").read()
        for broken in (b"", b"no format", whole[:len(whole) // 2], whole[:40000] + b"\x55" * 100 + whole[40100:]):
            self.file("my.fmt", broken, self.formats)
            bare = subprocess.run([self.engine, "-fmt=my", "x.tex"], cwd=self.work, stdout=subprocess.PIPE,
                                  stderr=subprocess.STDOUT, env=dict(self.environment, TEXFORMATS=self.formats + ":"), stdin=subprocess.DEVNULL,
                                  check=False)
            for _ in range(2):
                log = self.run_to_end("pdftex -fmt=my x.tex", status=bare.returncode)
                self.assertEqual(log.replace(b"\r", b"\n").replace(b"\n\n", b"\n"),
                                 bare.stdout.replace(b"\n\n", b"\n"))

    def test_a_format_that_is_not_compressed_gets_no_copy(self):
        with gzip.open(installed("pdftex")) as file:
            self.file("my.fmt", file.read(), self.formats)
        for _ in range(2):
            self.assertIsNone(self.run_it())
        self.assertEqual([name for name in os.listdir(self.copies) if not name.endswith(".search")], [])

    def test_a_format_that_is_made_is_unpacked_as_it_is_stamped(self):
        self.file("new.tex", "\\catcode`\\{=1 \\catcode`\\}=2 \\font\\tenrm=cmr10 \\tenrm \\dump\n", self.formats)
        self.preferences(TEXFORMATS=self.formats)
        self.run_to_end("pdftex -ini new.tex", self.formats)
        self.file("y.tex", "x\\end\n")
        self.assertTrue(self.run_it("pdftex -fmt=new y.tex"))

    def test_a_full_disk_leaves_the_original_in_use(self):
        for ignored in (True, False):
            def fill():
                signal.signal(signal.SIGXFSZ, signal.SIG_IGN if ignored else signal.SIG_DFL)
                resource.setrlimit(resource.RLIMIT_FSIZE, (100000, 100000))
            self.background("my", preexec_fn=fill, restore_signals=False).wait(60)
            self.assertEqual([name for name in os.listdir(self.copies) if not name.startswith("part-")], [])
        self.assertIsNone(self.run_it())
        self.assertTrue(self.whole(self.run_it()))
        self.assertEqual([name for name in os.listdir(self.copies) if name.startswith("part-")], [])

    def test_a_cache_folder_that_is_no_folder(self):
        os.makedirs(os.path.dirname(self.copies))
        self.file("formats", "in the way", os.path.dirname(self.copies))
        for _ in range(2):
            self.assertIsNone(self.run_it())

    def test_a_cache_folder_of_somebody_else(self):
        if os.geteuid() != 0:
            self.skipTest("only root can give a folder away")
        self.run_it()
        self.assertTrue(self.run_it())
        os.chown(self.copies, 65534, 65534)
        os.chown(self.run_it(), 65534, 65534)
        self.assertIsNone(self.run_it())

    def test_one_works_at_a_time(self):
        first = self.background("my", "pdflatex")
        self.addCleanup(stop, first)
        wait_until(lambda: os.path.isdir(self.copies))
        first.send_signal(signal.SIGSTOP)
        # The second one ends without waiting for the first.
        second = self.background("my")
        self.assertEqual(second.wait(60), 0)
        first.send_signal(signal.SIGCONT)
        self.assertEqual(first.wait(60), 0)
        self.assertTrue(self.whole(self.run_it()))

    def test_eight_hosts_at_once(self):
        tools = [self.launch(self.tool) for _ in range(8)]
        for number, tool in enumerate(tools):
            folder = os.path.join(self.work, str(number))
            self.file("x.tex", "Hello.\n\\bye\n", folder)
            tool.send("pdftex -fmt=my x.tex", folder)
        for tool in tools:
            self.assertEqual(tool.reply()["----"], 0)
        self.run_it()
        self.assertTrue(self.whole(self.run_it()))

    def test_a_kill_at_any_instant_leaves_nothing_half_made_in_use(self):
        generator = random.Random(4)
        for _ in range(25):
            shutil.rmtree(self.copies, ignore_errors=True)
            process = self.background("my", "pdflatex")
            try:
                process.wait(generator.random() * 0.3)
            except subprocess.TimeoutExpired:
                pass
            process.kill()
            process.wait()
            for name in os.listdir(self.copies) if os.path.isdir(self.copies) else ():
                folder = os.path.join(self.copies, name)
                if os.path.isdir(folder) and not name.startswith("part-") and os.path.exists(f"{folder}/my.fmt"):
                    self.assertTrue(self.whole(folder))
            self.run_it()
        self.assertTrue(self.whole(self.run_it()))

    def test_the_work_ends_with_the_session(self):
        process = self.background("pdflatex")
        self.addCleanup(stop, process)
        wait_until(lambda: any(name.startswith("part-") for name in os.listdir(self.copies))
                   if os.path.isdir(self.copies) else False)
        process.send_signal(signal.SIGSTOP)
        stop(self.daemon)
        process.send_signal(signal.SIGCONT)
        self.assertEqual(process.wait(60), 0)
        self.assertEqual(os.listdir(self.copies), [])

    def test_a_shell_with_a_bus_of_its_own_starts_no_work(self):
        reply = self.launch(self.tool, QUILLON_OWN_BUS="1").run("pdftex -fmt=my x.tex")
        self.assertEqual(reply["----"], 0, log_of(reply))
        self.assertFalse(os.path.exists(self.copies))

    def test_the_work_is_done_with_the_lowest_priority_in_a_session_of_its_own(self):
        process = self.background("pdflatex", start_new_session=False)
        self.addCleanup(stop, process)
        wait_until(lambda: os.path.isdir(self.copies))
        with open(f"/proc/{process.pid}/stat", encoding="latin-1") as file:
            fields = file.read().rpartition(")")[2].split()
        self.assertEqual(fields[16], "19")
        self.assertEqual(os.sched_getscheduler(process.pid), os.SCHED_IDLE)
        self.assertEqual(process.wait(60), 0)

    def test_usage(self):
        for words in ([], [self.tool], [self.tool, self.engine, "one"], ["/none.app", self.engine, "my", "my"]):
            done = self.run_program(BACKGROUND, *words)
            self.assertEqual((done.returncode, done.stdout), (64, ""))
            self.assertIn("usage: ", done.stderr)


if __name__ == "__main__":
    unittest.main()
