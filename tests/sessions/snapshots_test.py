"""A remembered preamble as a person meets it: fresh preferences, the menu, and nothing that looks different."""

import gzip
import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import ServiceTest, wait_until  # noqa: E402

TYPESET_CHOSEN, SOURCE_LINKS = "menu 129 1", "menu 131 3"
PREAMBLE = "\\documentclass{article}\n\\usepackage{hyperref}\n\\usepackage{url}\n\\begin{document}\n"


class Session(ServiceTest):
    def setUp(self):
        super().setUp()
        self.run_program(os.path.join(self.binaries, "setpaths.app", "Contents", "Linux", "setpaths"), "--defaults")
        self.set(AUTOVIEW="0")
        self.snapshots = os.path.join(self.environment["XDG_CACHE_HOME"], "quillon", "snapshots")
        # Two runs leave the same bytes.
        self.environment.update(SOURCE_DATE_EPOCH="1000000000", FORCE_SOURCE_DATE="1")
        self.paper = self.write("One.")

    def write(self, body):
        return self.file("paper.tex", PREAMBLE + f"\\section{{A}}\\label{{a}}See \\ref{{a}}. {body}\n\\end{{document}}\n")

    def typeset(self, *before):
        """Typesets by the menu, in a session that goes on; what the console shows."""
        steps = [*before, f"choose {self.paper}", TYPESET_CHOSEN, "print state exit_status"]
        script = self.file("script", "".join(step + "\n" for step in steps), self.home)
        self.start_program(self.shell_program(), "--headless", "--script", script)
        self.assertEqual(self.running.wait(60), 0, self.output())
        return self.output()

    def wait_for_snapshots(self, count):
        def kept():
            names = os.listdir(self.snapshots) if os.path.isdir(self.snapshots) else ()
            return [name for name in names if name.startswith("paper-")]

        wait_until(lambda: len(kept()) == count and self.background_has_ended(), "the work in the background", 300)

    def left(self, name):
        with open(os.path.join(self.work, name), "rb") as file:
            return file.read()

    def used(self):
        """When the snapshots were taken into use last."""
        return [os.stat(os.path.join(self.snapshots, name)).st_mtime_ns for name in sorted(os.listdir(self.snapshots))
                if name.startswith("paper-")]

    def set(self, **settings):
        values = dict(self.settings(), **settings)
        self.write_preferences("".join(f"{key}={value}\n" for key, value in values.items()))

    def test_nothing_looks_different(self):
        self.typeset()  # until it is stable
        self.wait_for_snapshots(1)
        first = self.used()
        with_it = self.typeset()
        self.assertGreater(self.used(), first)
        command, pdf = self.settings()["LASTCOMMAND"], self.left("paper.pdf")
        self.set(SNAPSHOT="0")
        without = self.typeset()
        self.assertIn("exit_status=0", with_it)
        self.assertEqual(with_it, without)
        self.assertEqual(self.settings()["LASTCOMMAND"], command)
        self.assertEqual(self.left("paper.pdf"), pdf)

    def test_the_switch_for_source_links_keeps_it_fast(self):
        self.typeset()
        self.wait_for_snapshots(1)
        self.typeset(SOURCE_LINKS)
        self.assertIn("-synctex=1", self.settings()["LASTCOMMAND"])
        self.wait_for_snapshots(2)
        first = self.used()
        self.typeset()
        self.assertNotEqual(self.used(), first)
        links = gzip.decompress(self.left("paper.synctex.gz"))
        self.set(SNAPSHOT="0")
        self.typeset()
        self.assertEqual(gzip.decompress(self.left("paper.synctex.gz")), links)

    def test_an_error_behind_it_brings_the_editor_to_its_line(self):
        self.typeset()
        self.wait_for_snapshots(1)
        self.write("\n\n\\wrong")
        first = self.used()
        output = self.typeset()
        self.assertGreater(self.used(), first)
        self.assertIn("l.7 \\wrong", output)
        self.assertEqual(self.settings()["LINENUMBER"], "7")


if __name__ == "__main__":
    unittest.main()
