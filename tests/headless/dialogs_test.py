"""Every window of the interface file, filled by a script."""

import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import HomeTest  # noqa: E402


class Dialogs(HomeTest):
    def steps(self, *steps, **settings):
        self.preferences(**settings)
        return self.shell("".join(step + "\n" for step in steps))

    def stored(self, *keys):
        values = self.settings()
        return tuple(values.get(key) for key in keys)

    def application(self, name):
        return self.file(name, "#!/bin/sh\n", mode=0o755)

    def test_the_option_windows_store_what_is_set(self):
        self.steps("dialog dvips options", "  set 3 -Ppdf -t a4", "  press 1", "menu 131 13",
                   "dialog bibtex8 options", "  set 3 -B --wolfgang", "  set 4 88591lat.csf", "  press 1", "menu 131 12",
                   "dialog pdftex options", "  set 4 cx", "  check 5 1", "  press 1", "menu 131 5",
                   "dialog font size", "  set 3 12pt", "  press 1", "menu 133 9")
        self.assertEqual(self.stored("DVIPS_OPTION_STR", "BIBTEXOPTIONS", "CSFFILE", "PDFTEXMODE", "PDFMAKEFONT", "FONTSIZE"),
                         ("-Ppdf -t a4", "-B --wolfgang", "88591lat.csf", "cx", "1", "12pt"))
        self.assertNotIn("quillon:", self.errors)

    def test_a_cancelled_window_stores_nothing(self):
        self.steps("dialog dvips options", "  set 3 x", "  press 2", "menu 131 13", "dialog pdftex options", "  set 4 x",
                   "  check 5 1", "  press 2", "menu 131 5", "menu 131 12")
        self.assertEqual(self.stored("DVIPS_OPTION_STR", "PDFTEXMODE", "PDFMAKEFONT", "BIBTEXOPTIONS"), (None,) * 4)
        self.assertIn('quillon: window "bibtex8 options": no answer was queued, cancelled\n', self.errors)

    def test_a_refused_window_is_cancelled_when_its_answers_end(self):
        self.steps("dialog font size", "  set 3 pt", "  press 1", "menu 133 9")
        self.assertIn('quillon: window "font size": its answers left it open, cancelled\n', self.errors)
        self.assertEqual(self.stored("FONTSIZE"), (None,))

    def test_a_window_takes_another_try(self):
        self.steps("dialog font size", "  set 3 pt", "  press 1", "  set 3 14", "  press 1", "menu 133 9")
        self.assertEqual(self.stored("FONTSIZE"), ("14",))

    def test_the_four_applications(self):
        chosen = [self.application(name) for name in ("ed", "dv", "ps", "pdf")]
        self.steps(*(f"choose {path}" for path in chosen), "dialog Set apps", *(f"  press {button}" for button in range(3, 7)),
                   "  press 1", "menu 131 10")
        self.assertEqual(self.stored("Editor", "DVIPREVIEW", "VIEWPS", "PDFVIEW"), tuple(chosen))

    def test_a_viewer_that_is_chosen_opens_the_next_output(self):
        record = os.path.join(self.work, "record")
        viewer = self.file("viewer", f"#!/bin/sh\nprintf '%s' \"$1\" > {record}\n", mode=0o755)
        source, pdf = self.file("x.tex", "x"), self.file("x.pdf", "x")
        self.steps(f"choose {viewer}", "dialog Set apps", "  press 6", "  press 1", "menu 131 10", "menu 129 16",
                   f"wait FILE {record}", TEXFILE=source)
        with open(record, encoding="utf-8") as file:
            self.assertEqual(file.read(), pdf)

    def test_a_transfer_entry_with_its_key(self):
        program = self.application("app")
        output = self.steps(f"choose {program}", "dialog cmdkey", "  set 3 Y", "  press 1", "menu 200 1", "print menu 200")
        self.assertEqual(self.stored("TEXMENU1"), (program + "::Y",))
        self.assertIn("1 + - Y app\n", output)

    def test_the_command_line_and_its_folder(self):
        output = self.steps(f"choose {self.work}", "dialog command line", "  press 3", "  set 4 unknown x", "  press 1",
                            "menu 134 3", "print setting BUILDLINE", "print setting TEXDIR", "print state curr_dir")
        for line in ("BUILDLINE=unknown x\n", f"TEXDIR={self.work}\n", f"curr_dir={self.work}\n"):
            self.assertIn(line, output)
        # Another start proposes the line again.
        output = self.shell("dialog command line\n  press 1\nmenu 134 3\nprint setting BUILDLINE\n")
        self.assertIn("BUILDLINE=unknown x\n", output)

    def test_the_manual_of_a_package(self):
        record = os.path.join(self.work, "record")
        programs = os.path.join(self.home, "programs")
        viewer = self.file("a $viewer's `x`", f"#!/bin/sh\nprintf '%s' \"$1\" > {record}\n", mode=0o755)
        # As texdoc does it: the viewer's command with the file's name behind it, in a shell.
        self.file("texdoc", f"#!/bin/sh\necho \"looking for $*\"\neval \"$PDFVIEWER_texdoc '{self.file('m.pdf', 'x')}'\"\n",
                  programs, 0o755)
        self.environment["PATH"] = programs + ":" + self.environment["PATH"]
        output = self.steps("dialog package manual", "  set 3 $(touch ran) `x`", "  press 1", "menu 300 4", f"wait FILE {record}",
                            PDFVIEW=viewer)
        self.assertIn("looking for $(touch ran) `x`\n", output)
        with open(record, encoding="utf-8") as file:
            self.assertEqual(file.read(), os.path.join(self.work, "m.pdf"))
        self.assertFalse(os.path.exists(os.path.join(self.work, "ran")))
        self.steps("dialog package manual", "  set 3 --version", "  press 1", "menu 300 4")
        self.assertIn("its answers left it open", self.errors)

    def test_message_windows_take_their_buttons(self):
        path = os.path.join(self.work, "gone.tex")
        self.file("gone.tex", "x")
        self.steps("dialog about box", "  press 1", "menu 128 1", RECENTFILE1=path)
        self.assertNotIn("quillon:", self.errors)


if __name__ == "__main__":
    unittest.main()
