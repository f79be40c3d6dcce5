"""The lines that the README shows for editors and make, run as they stand there with the installed command."""

import json
import os
import re
import subprocess

from installed import ROOT, Installed, main

VIM_REPORT = 'call writefile([json_encode([expand("%:p"), line("."), getqflist()])], "report")'
EMACS_REPORT = """
(let (finished)
  (find-file "NAME")
  (add-hook 'compilation-finish-functions (lambda (&rest _) (setq finished t)))
  (compile compile-command)
  (while (not finished) (accept-process-output nil 0.1))
  (next-error)
  (write-region (format "%s\\n%d" (buffer-file-name) (line-number-at-pos)) nil "report"))
"""
NAMES = ("error.tex", "an error ä.tex")


class Readme(Installed):
    def setUp(self):
        super().setUp()
        with open(os.path.join(ROOT, "README.md"), encoding="utf-8") as file:
            self.text = file.read()

    def block(self, language):
        (found,) = re.findall(f"^```{language}\n(.*?)^```$", self.text, re.MULTILINE | re.DOTALL)
        return found

    def report(self):
        with open(self.path("report"), encoding="utf-8") as file:
            return file.read()

    def test_vim_goes_to_the_error(self):
        vimrc = self.file("vimrc", self.block("vim"))
        for name in (*NAMES, "sub folder/error.tex"):
            path = self.example("error.tex", name)
            self.run_program("vim", "-N", "-u", vimrc, "-i", "NONE", "-n", "-es", "-c", "make", "-c", VIM_REPORT,
                             "-c", "qa!", path, LC_ALL="C.UTF-8")
            found, line, errors = json.loads(self.report())
            self.assertEqual((found, line, len(errors)), (path, 5, 1))
            self.assertEqual((errors[0]["lnum"], errors[0]["text"]), (5, "Undefined control sequence."))
            os.unlink(self.path("report"))

    def test_emacs_goes_to_the_error(self):
        start = self.file("init.el", self.block("elisp"))
        for name in NAMES:
            path = self.example("error.tex", name)
            script = self.file("script.el", EMACS_REPORT.replace("NAME", name))
            done = self.run_program("emacs", "--batch", "-Q", "-l", start, "-l", script, LC_ALL="C.UTF-8")
            self.assertEqual(done.returncode, 0, done.stderr)
            self.assertEqual(self.report(), f"{path}\n5")
            os.unlink(self.path("report"))

    def test_make_makes_what_is_out_of_date_and_stops_at_an_error(self):
        self.file("Makefile", self.block("makefile"))
        names = ("one.tex", "two.tex", "three.tex")
        for name in names:
            self.example("sample.tex", name)
        wanted = [name[:-4] + ".pdf" for name in names]
        done = self.run_program("make", "-j", *wanted)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.assertTrue(all(os.path.exists(self.path(name)) for name in wanted))
        self.assertNotIn("quillon exec", self.run_program("make", *wanted).stdout)
        self.example("error.tex")
        done = self.run_program("make", "error.pdf")
        self.assertEqual(done.returncode, 2)
        self.assertIn(self.path("error.tex") + ":5: Undefined control sequence.\n", done.stderr)

    def test_the_pattern_for_vs_code_finds_the_error_and_nothing_else(self):
        (task,) = json.loads(self.block("json"))["tasks"]
        matcher = task["problemMatcher"]
        self.assertEqual(matcher["fileLocation"], "absolute")
        for name in NAMES:
            path = self.example("error.tex", name)
            values = {"${fileDirname}": self.work, "${fileBasename}": name}
            words = [values.get(word, word) for word in task["args"]]
            # The task's terminal shows both outputs.
            done = subprocess.run([task["command"], *words], env=self.environment, cwd=self.home, stdin=subprocess.DEVNULL,
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8", check=False, timeout=60)
            self.assertEqual(done.returncode, 1, done.stdout)
            pattern = matcher["pattern"]
            found = [match for match in (re.search(pattern["regexp"], line) for line in done.stdout.splitlines()) if match]
            self.assertEqual([tuple(match[pattern[part]] for part in ("file", "line", "message")) for match in found],
                             [(path, "5", "Undefined control sequence.")])

    def test_the_files_that_it_names_are_there(self):
        for place in re.findall(r"\]\(([^)]+)\)", self.text):
            self.assertTrue(os.path.exists(os.path.join(ROOT, place)), place)
        self.assertIn("/usr/share/doc/quillon/examples", self.text)
        with open(os.path.join(ROOT, "CMakeLists.txt"), encoding="utf-8") as file:
            version = re.search(r"project\(quillon VERSION ([0-9.]+)", file.read())[1]
        self.assertIn(f"quillon_{version}-1_", self.text)


if __name__ == "__main__":
    main()
