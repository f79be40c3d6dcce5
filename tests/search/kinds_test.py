"""Files of every kind: along a small tree made here, and along the installed distribution's against kpsewhich."""

import os
import random
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import BINARIES, BUILD, HomeTest, program_of  # noqa: E402

DRIVER = os.path.join(BUILD, "bin", "tests", "search-driver")
SETPATHS = program_of(os.path.join(BINARIES, "setpaths.app"))

# Kind: the variable of its list, the suffix that it adds, its database, and kpsewhich's name of the kind.
KINDS = {
    1: ("GFFONTS", None, None, "gf"), 2: ("OCPINPUTS", "ocp", None, "ocp"), 3: ("OFMFONTS", "ofm", None, "ofm"),
    4: ("OVFFONTS", "ovf", None, "ovf"), 5: ("TEXFONTS", "tfm", "TEXFONTS", "tfm"),
    6: ("VFFONTS", "vf", "VFFONTS", "vf"), 7: ("BIBINPUTS", "bib", None, "bib"), 8: ("BSTINPUTS", "bst", None, "bst"),
    9: ("TEXINPUTS", "tex", "TEXINPUTS", "tex"), 10: ("TEXFORMATS", "fmt", None, "fmt"),
    11: ("TEXPOOL", None, None, "texpool"), 12: ("MFINPUTS", "mf", None, "mf"), 13: ("MFPOOL", None, None, "mfpool"),
    14: ("MFBASES", "base", None, "base"), 15: ("MPINPUTS", "mp", None, "mp"), 16: ("MPPOOL", None, None, "mppool"),
    17: ("MPMEMS", "mem", None, "mem"), 18: ("TEXCONFIG", "map", None, "dvips config"),
    19: ("PKFONTS", None, None, "pk"), 20: ("OTPINPUTS", None, None, "otp"), 21: ("DVIPSEPSF", None, None, None),
    23: ("DVIPSHEADERS", None, "DVIPSHEADERS", "PostScript header"),
    24: ("TYPE1FONTS", None, "TYPE1FONTS", "type1 fonts"), 25: ("DVIPSHEADERS", None, None, "PostScript header"),
    26: ("ISTFILES", None, None, "ist"), 27: ("AFMFONTS", None, None, "afm"), 28: ("ENCFOLDER", None, None, "enc files"),
}
# What a name of a kind looks like in the distribution, where the kind adds nothing.
ENDINGS = {9: (".tex", ".sty", ".cls", ".def", ".fd"), 11: (".pool",), 23: (".pro", ".enc", ".pfb"), 24: (".pfb",), 25: (".pro", ".enc", ".pfb"), 26: (".ist",),
           27: (".afm",), 28: (".enc",)}


class Kinds(HomeTest):
    def find(self, kind, names):
        done = subprocess.run([DRIVER, "find", str(kind)], input="".join(name + "\n" for name in names).encode(),
                              stdout=subprocess.PIPE, env=self.environment, cwd=self.work, check=True)
        found = done.stdout.decode().split("\n")[:-1]
        self.assertEqual(len(found), len(names))
        return found

    def database(self, name, lines):
        self.file(name, "".join(line + "\n" for line in lines), os.path.join(self.home, "data", "Quillon"))


class SmallTree(Kinds):
    """Each kind has a file of its own below its own folder; nothing else is found there."""

    def setUp(self):
        super().setUp()
        self.tree = os.path.join(self.home, "tree")
        settings = {}
        for kind, (variable, suffix, _, _) in KINDS.items():
            folder = os.path.join(self.tree, variable.lower(), "below")
            self.file(f"k{kind}" + (f".{suffix}" if suffix else ""), "x", folder)
            settings[variable] = os.path.join(self.tree, variable.lower()) + "//"
        self.settings = settings

    def expected(self, kind):
        variable, suffix, _, _ = KINDS[kind]
        return os.path.join(self.tree, variable.lower(), "below", f"k{kind}" + (f".{suffix}" if suffix else ""))

    def check(self, kinds):
        for kind in kinds:
            suffix = KINDS[kind][1]
            names = [f"k{kind}", f"k{kind}.{suffix}" if suffix else f"k{kind}", "none"]
            self.assertEqual(self.find(kind, names), [self.expected(kind)] * 2 + [""], kind)
        for kind in (0, 22, 29, -1):
            self.assertEqual(self.find(kind, ["k9", "k9.tex"]), ["", ""])

    def test_every_kind_is_found_along_its_list(self):
        self.preferences(**self.settings)
        self.check(KINDS)

    def test_every_kind_is_found_with_databases(self):
        self.preferences(DATABASE="1", **self.settings)
        for name in {row[2] for row in KINDS.values()} - {None}:
            folder = os.path.join(self.tree, name.lower(), "below")
            self.database(name, [folder + "/", *sorted(os.listdir(folder))])
        # A virtual font's name is looked up as it stands.
        self.check([kind for kind in KINDS if kind != 6])
        self.assertEqual(self.find(6, ["k6", "k6.vf"]), ["", self.expected(6)])

    def test_with_a_database_missing_all_are_found_along_the_lists(self):
        self.preferences(DATABASE="1", **self.settings)
        self.check(KINDS)


class WholeTree(Kinds):
    """Up to 1,000 names of each kind: what is found is what kpsewhich also knows."""

    def names(self, kind):
        variable, suffix, _, _ = KINDS[kind]
        endings = ENDINGS.get(kind) or (f".{suffix}",)
        names = set()
        for element in (self.setting(variable) or "").replace("\\x1f", " ").split(":"):
            if not element.startswith("/"):
                continue
            for folder, folders, files in os.walk(element):
                if not element.endswith("//"):
                    folders.clear()
                names.update(name for name in files if name.endswith(endings) and " " not in name and name[0] not in "-0|")
        return random.Random(kind).sample(sorted(names), min(1000, len(names)))

    def known(self, title, names):
        done = subprocess.run(["kpsewhich", "-progname=pdflatex", "-engine=pdftex", "--all", f"--format={title}", *names],
                              stdout=subprocess.PIPE, text=True, cwd=self.work, check=False, env=self.environment)
        places = {}
        for path in done.stdout.splitlines():
            places.setdefault(os.path.basename(path), set()).add(os.path.realpath(path))
        return places

    def walk(self):
        checked = {}
        for kind, (_, suffix, _, title) in KINDS.items():
            names = self.names(kind) if title and (suffix or kind in ENDINGS) else []
            if not names:
                continue
            known = self.known(title, names)
            for name, path in zip(names, self.find(kind, names)):
                self.assertNotEqual(path, "", (kind, name))
                self.assertIn(os.path.realpath(path), known.get(name, ()), (kind, name))
            checked[kind] = len(names)
        self.assertGreaterEqual(len(checked), 10, checked)
        self.assertGreater(checked[9], 500)
        print(f"names by kind: {checked}", file=sys.stderr)

    def set_up(self):
        self.assertEqual(self.run_program(SETPATHS, "--defaults").returncode, 0)

    def test_with_databases(self):
        self.set_up()
        self.walk()

    def test_along_the_lists(self):
        self.set_up()
        self.write_preferences(self.preferences_bytes().replace(b"DATABASE=1\n", b"DATABASE=0\n"))
        self.walk()

    def test_what_a_stock_installation_is_asked_for(self):
        self.set_up()
        for kind, name in ((9, "article.cls"), (9, "article"), (5, "cmr10"), (9, "pdftexconfig"), (10, "pdflatex"),
                           (18, "config.ps"), (8, "plain"), (12, "cmr10"), (15, "plain"), (24, "cmr10.pfb")):
            path = self.find(kind, [name])[0]
            if (kind, name) == (9, "article"):
                self.assertEqual(path, "")  # a class is no TeX input by itself
            else:
                self.assertTrue(os.path.isfile(path), (kind, name, path))


if __name__ == "__main__":
    unittest.main()
