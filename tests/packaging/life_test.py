"""The package from its installation to its removal, in a root folder of its own: what a stranger does first, an upgrade
under a running shell, and what is left behind."""

import os
import re
import shutil
import subprocess
import sys
import time
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import DesktopTest, wait_until  # noqa: E402
from installed import NOBODY, package  # noqa: E402


class Life(DesktopTest):
    def setUp(self):
        super().setUp()
        # Below the home, by which the processes of a test are known.
        self.root = os.path.join(self.home, "root")
        os.makedirs(os.path.join(self.root, "var/lib/dpkg/info"))
        for name in ("updates", "triggers"):
            os.makedirs(os.path.join(self.root, "var/lib/dpkg", name))
        for name in ("status", "available"):
            self.file(name, "", os.path.join(self.root, "var/lib/dpkg"))
        self.environment["PATH"] = os.path.join(self.root, "usr/bin") + ":" + os.environ["PATH"]
        self.quillon = os.path.join(self.root, "usr", "bin", "quillon")
        self.binaries = os.path.join(self.root, "usr", "lib", "quillon")

    def dpkg(self, *words):
        # What the package depends on is installed outside this root folder.
        done = subprocess.run(["dpkg", "--root=" + self.root, "--force-depends", "--force-not-root", *words],
                              env={"PATH": os.environ["PATH"], "DEBIAN_FRONTEND": "noninteractive"}, check=False,
                              capture_output=True, encoding="utf-8", timeout=120)
        self.assertEqual(done.returncode, 0, done.stderr)

    def version(self):
        with open(os.path.join(self.root, "var/lib/dpkg/status"), encoding="utf-8") as file:
            said = file.read()
        self.assertIn("Package: quillon\nStatus: install ok installed\n", said)
        return re.search(r"^Version: (.*)$", said, re.M).group(1)

    def newer(self):
        """The same package with the version that would follow."""
        tree = os.path.join(self.home, "newer")
        subprocess.run(["dpkg-deb", "-R", package(), tree], check=True)
        control = os.path.join(tree, "DEBIAN", "control")
        with open(control, encoding="utf-8") as file:
            text = file.read()
        self.file(control, re.sub(r"(?m)^(Version: .*)-1$", r"\1-2", text))
        made = os.path.join(self.home, "newer.deb")
        subprocess.run(["dpkg-deb", "--root-owner-group", "-b", tree, made], check=True, stdout=subprocess.DEVNULL)
        return made

    def exec(self, *words):
        done = self.run_program(self.quillon, "exec", *words)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        return done.stdout

    def files(self):
        return sorted(os.path.relpath(os.path.join(folder, name), self.root)
                      for folder, _, names in os.walk(self.root) for name in names)

    def test_installed_used_upgraded_under_a_running_shell_and_removed(self):
        begun = time.monotonic()
        self.dpkg("-i", package())
        installed = self.files()
        # The first start: one page to confirm, one file to open.
        paper = self.file("paper.tex", "\\documentclass{article}\\begin{document}Hello.\\end{document}\n")
        self.start(self.quillon, paper)
        setup = wait_until(lambda: self.windows("^Set Up Quillon$"), "the set-up")[0]
        self.activate(setup)
        wait_until(lambda: self.keys("Return") or os.path.exists(self.preferences_path), "the preferences")
        wait_until(lambda: os.path.exists(os.path.join(self.work, "paper.pdf")), "the PDF file")
        wait_until(lambda: self.windows("paper.pdf"), "the viewer")
        print(f"from the package to the page on the screen: {time.monotonic() - begun:.1f} s", file=sys.stderr)

        before = self.version()
        self.dpkg("-i", self.newer())
        self.assertEqual(self.version(), before[:-1] + "2")
        shell, = self.running_as("quillon-shell")
        os.unlink(os.path.join(self.work, "paper.pdf"))
        # The shell of the old version runs the tools of the new one for a client of the new one.
        self.assertIn("Output written on paper.pdf", self.exec("pdftex", "-fmt=pdflatex", "paper.tex"))
        self.assertEqual(self.running_as("quillon-shell"), [shell])
        self.assertEqual(self.run_program(self.quillon, "quit").returncode, 0)
        wait_until(lambda: not self.running_as("quillon-shell"), "the end of the shell")
        self.exec("pdftex", "-fmt=pdflatex", "paper.tex")

        own = sorted(os.listdir(self.work)) + [self.preferences_path]
        self.dpkg("--purge", "quillon")
        left = [name for name in self.files() if name in installed and not name.startswith("var/lib/dpkg/")]
        self.assertEqual(left, [])
        self.assertFalse(os.path.exists(os.path.join(self.root, "usr", "lib", "quillon")))
        self.assertEqual(own, sorted(os.listdir(self.work)) + [self.preferences_path])
        self.assertTrue(os.path.exists(self.preferences_path))

    def start(self, *command):
        process = subprocess.Popen(command, env=self.environment, cwd=self.work, stdin=subprocess.DEVNULL)
        self.addCleanup(process.wait, 10)
        self.addCleanup(process.kill)
        return process


class Faults(Life):
    test_installed_used_upgraded_under_a_running_shell_and_removed = None

    def setUp(self):
        super().setUp()
        self.dpkg("-i", package())
        del self.environment["DISPLAY"]
        self.paper = self.file("paper.tex", "\\documentclass{article}\\begin{document}Hello.\\end{document}\n")

    def exec_with(self, path, *words):
        """Runs `quillon exec` where the programs are in the folder PATH alone; how it ended."""
        return self.run_program(shutil.which("dbus-run-session"), "--", self.quillon, "exec", *words, PATH=path)

    def programs(self, *names):
        """A folder with links to these programs of the distribution and to nothing else of it."""
        folder = os.path.join(self.home, "half")
        os.makedirs(folder)
        for name in names:
            os.symlink(shutil.which(name), os.path.join(folder, name))
        return folder

    def test_without_tex(self):
        path = self.programs("dbus-run-session", "dbus-daemon", "sh")
        done = self.exec_with(path, "pdftex", "paper.tex")
        self.assertNotEqual(done.returncode, 0)
        self.assertIn("I can't start pdftex: there is no such program", done.stdout + done.stderr)

    def test_with_half_of_tex(self):
        """An engine without the programs beside it still typesets; what is missing is named."""
        path = self.programs("dbus-run-session", "dbus-daemon", "sh", "pdftex")
        done = self.exec_with(path, "pdftex", "-fmt=pdflatex", "paper.tex")
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        done = self.exec_with(path, "bibtex", "paper")
        self.assertIn("I can't start bibtex: there is no such program", done.stdout + done.stderr)

    @unittest.skipUnless(os.geteuid() == 0, "another user is needed")
    def test_a_home_that_nobody_may_write_to(self):
        home = os.path.join(self.home, "closed")
        os.mkdir(home, 0o555)
        work = os.path.join(self.home, "open")
        os.mkdir(work)
        shutil.copy(self.paper, work)
        os.chown(work, NOBODY, NOBODY)
        os.chmod(self.home, 0o755)
        environment = {"PATH": self.environment["PATH"], "HOME": home}
        done = subprocess.run(["dbus-run-session", "--", self.quillon, "exec", "pdftex", "-fmt=pdflatex", "paper.tex"],
                              cwd=work, env=environment, user=NOBODY, group=NOBODY, extra_groups=[], check=False,
                              stdin=subprocess.DEVNULL, capture_output=True, encoding="utf-8", timeout=60)
        # Without a preferences file the shell does not work: what is missing is said, and nothing is half done.
        self.assertNotEqual(done.returncode, 0)
        self.assertIn(f"setpaths: I can't write {home}/.config/Quillon Preferences: Permission denied", done.stderr)
        self.assertEqual((os.listdir(home), os.listdir(work)), ([], ["paper.tex"]))

    @unittest.skipUnless(os.geteuid() == 0, "another user is needed")
    def test_two_users_at_once(self):
        os.chmod(self.home, 0o755)
        running = []
        for user in (0, NOBODY):
            home = os.path.join(self.home, f"user{user}")
            os.makedirs(home)
            shutil.copy(self.paper, home)
            for path in (home, os.path.join(home, "paper.tex")):
                os.chown(path, user, user)
            running.append((home, subprocess.Popen(
                ["dbus-run-session", "--", self.quillon, "exec", "pdftex", "-fmt=pdflatex", "paper.tex"], cwd=home,
                user=user, group=user, extra_groups=[], env={"PATH": self.environment["PATH"], "HOME": home},
                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)))
        for home, process in running:
            said, _ = process.communicate(timeout=60)
            self.assertEqual(process.returncode, 0, said)
            self.assertEqual(os.stat(os.path.join(home, "paper.pdf")).st_uid, os.stat(home).st_uid)


if __name__ == "__main__":
    unittest.main()
