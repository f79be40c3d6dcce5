"""Golden transcripts: every NAME.script in this folder, run headless, prints exactly NAME.expected.

The lines of a script that begin with "#!" set the test up:
    #!preferences KEY=VALUE...     the preferences file; "#!preferences none" for none
    #!file NAME TEXT               a file in the working folder, "\\n" and "\\t" in TEXT as their characters
    #!format NAME CREATOR          the engine's plain format, stamped, in a formats folder that TEXFORMATS names
    #!remove PATH                  removes a file of a copied binaries folder
    #!options WORD...              further words for the shell
QUILLON_GOLDEN=refresh writes the expected files anew.
"""

import glob
import os
import re
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import HomeTest  # noqa: E402

HERE = os.path.dirname(os.path.abspath(__file__))
PLAIN_FORMAT = "/var/lib/texmf/web2c/pdftex/pdftex.fmt"


class Golden(HomeTest):
    def prepare(self, line):
        """One line of set-up."""
        word, _, rest = line.partition(" ")
        if word == "preferences":
            if rest != "none":
                self.preferences(**dict(pair.split("=", 1) for pair in rest.split()))
        elif word == "file":
            name, _, text = rest.partition(" ")
            self.file(name, text.replace("\\n", "\n").replace("\\t", "\t"))
        elif word == "format":
            name, creator = rest.split()
            folder = os.path.join(self.home, "formats")
            os.makedirs(folder, exist_ok=True)
            with open(PLAIN_FORMAT, "rb") as file:
                path = self.file(name + ".fmt", file.read(), folder)
            os.setxattr(path, "user.quillon.creator", creator.encode())
            if self.setting("TEXFORMATS") is None:
                self.add_preferences(f"TEXFORMATS={folder}\n")
        elif word == "remove":
            os.unlink(os.path.join(self.copy_binaries(), rest))
        elif word == "options":
            self.options = rest.split()
        else:
            self.fail(f"unknown set-up: {line}")

    def normal(self, text):
        """What differs from host to host, as words in capitals."""
        for path, word in ((self.work, "WORK"), (os.path.realpath(self.binaries), "BINARIES"), (self.home, "HOME")):
            text = text.replace(path, word)
        text = re.sub(r"(?i)(This is (?:pdfTeX|BibTeX|makeindex)), Version .*", r"\1", text)
        text = re.sub(r"\{/[^}]*pdftex\.map\}|</[^>]*\.pfb>", "", text)
        return re.sub(r"\((\d+ pages?), \d+ bytes\)", r"(\1)", text)

    def run_golden(self, path):
        self.options = []
        with open(path, encoding="utf-8") as file:
            script = file.read()
        for line in script.split("\n"):
            if line.startswith("#!"):
                self.prepare(line[2:])
        printed = self.normal(self.shell(script.replace("WORK", self.work), *self.options))
        errors = "".join(line + "\n" for line in self.normal(self.errors).split("\n")
                         if line and "dbus-daemon" not in line)
        transcript = printed + "== standard error\n" + errors + f"== status {self.status}\n"
        expected_path = path.replace(".script", ".expected")
        if os.environ.get("QUILLON_GOLDEN") == "refresh":
            with open(expected_path, "w", encoding="utf-8") as file:
                file.write(transcript)
        with open(expected_path, encoding="utf-8") as file:
            self.assertEqual(transcript, file.read())


def add(path):
    name = os.path.basename(path).replace(".script", "").replace("-", "_")
    setattr(Golden, "test_" + name, lambda self: self.run_golden(path))


for script_path in sorted(glob.glob(os.path.join(HERE, "*.script"))):
    add(script_path)

if __name__ == "__main__":
    unittest.main()
