"""The set-up: a fresh user, a user with values of their own, the databases."""

import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import BINARIES, HomeTest, program_of  # noqa: E402

PROGRAM = program_of(os.path.join(BINARIES, "setpaths.app"))


class SetpathsTest(HomeTest):
    home_name = "quillon setpaths "

    def setUp(self):
        super().setUp()
        # A fresh user has neither folder.
        os.rmdir(os.path.dirname(self.preferences_path))
        os.rmdir(os.path.dirname(self.support))
        self.preferences_path = self.home + "/config dir/Quillon Preferences"
        self.environment.update(XDG_CONFIG_HOME=self.home + "/config dir", XDG_DATA_DIRS=self.home + "/share",
                                XDG_CONFIG_DIRS=self.home + "/etc")

    def run_it(self, *words, **environment):
        done = self.run_program(PROGRAM, *words, **environment)
        return done.returncode, done.stdout, done.stderr

    def unix(self, path):
        return path.replace(" ", "\\x1f")

    def test_a_fresh_user(self):
        self.assertEqual(self.run_it("--defaults"), (0, "", ""))
        settings = self.settings()
        for key, value in {"SPACECHAR": "31", "USEPDFTEX": "1", "AUTOVIEW": "1", "DATABASE": "1", "DEBUG": "0",
                           "RERUN": "1", "MAGICCOMMENTS": "1", "SNAPSHOT": "1", "PDFTEXFORMAT": "pdflatex"}.items():
            self.assertEqual(settings[key], value)
        formats = settings["TEXFORMATS"].split(":")
        self.assertEqual(formats[0], self.unix(self.support + "/formats"))
        self.assertTrue(any(os.path.exists(folder + "/pdflatex.fmt") for folder in formats))
        for key, value in settings.items():
            self.assertNotRegex(value, r"[{}!$ ]", key)
        self.assertEqual(os.listdir(self.home + "/config dir"), ["Quillon Preferences"])

    def test_preferences_that_are_a_link_to_nothing_are_made_where_it_leads(self):
        target = os.path.join(self.home, "elsewhere", "settings")
        os.makedirs(os.path.dirname(self.preferences_path), exist_ok=True)
        if os.path.exists(self.preferences_path):
            os.unlink(self.preferences_path)
        os.symlink("../elsewhere/settings", self.preferences_path)
        self.assertEqual(self.run_it("--defaults"), (0, "", ""))
        self.assertTrue(os.path.islink(self.preferences_path))
        self.assertTrue(os.path.isfile(target))
        self.assertEqual(self.settings()["SPACECHAR"], "31")

    def test_preferences_that_are_a_link_to_where_nothing_can_be_made_fail(self):
        os.makedirs(os.path.dirname(self.preferences_path), exist_ok=True)
        if os.path.exists(self.preferences_path):
            os.unlink(self.preferences_path)
        os.symlink("/proc/none/settings", self.preferences_path)
        status, _, errors = self.run_it("--defaults")
        self.assertEqual(status, 1)
        self.assertIn("setpaths: I can't write /proc/none/settings: ", errors)

    def test_every_default_lies_in_the_recorded_trees(self):
        self.run_it("--defaults")
        settings = self.settings()
        trees = settings["TEXMFTREES"].split(":")
        for key in ("TEXINPUTS", "TEXFONTS", "TYPE1FONTS", "VFFONTS", "DVIPSHEADERS", "BIBINPUTS"):
            for element in settings[key].split(":"):
                self.assertTrue(element == "." or any((element + "/").startswith(tree + "/") for tree in trees),
                                (key, element))

    def test_the_formats_folder_has_commented_files(self):
        self.run_it("--defaults")
        for name in ("tex.cnf", "pdftex.cnf"):
            with open(self.support + "/formats/" + name) as file:
                lines = file.read().splitlines()
            self.assertGreater(len(lines), 2)
            self.assertTrue(all(line.startswith("%") for line in lines))

    def test_programs_that_only_a_terminal_finds_are_recorded(self):
        own = self.program_folder(self.home + "/texbin")
        self.run_it("--defaults", PATH=own + ":" + os.environ["PATH"])
        self.assertEqual(self.settings()["TEXBIN"], self.unix(own))

    def test_without_a_path_the_usual_places_are_looked_into_for_the_newest(self):
        if os.path.exists("/usr/local/texlive") or os.path.exists("/opt/texlive"):
            self.skipTest("this host has a distribution in a place that comes first")
        for release in ("2025", "2026"):
            self.program_folder(f"{self.home}/texlive/{release}/bin/x86_64-linux")
        self.assertEqual(self.run_it("--defaults", PATH="/nowhere"), (0, "", ""))
        settings = self.settings()
        self.assertEqual(settings["TEXBIN"], self.unix(self.home + "/texlive/2026/bin/x86_64-linux"))
        self.assertIn("TEXINPUTS", settings)

    def test_programs_that_every_session_finds_are_not_recorded(self):
        self.run_it("--defaults", PATH="/usr/bin:/bin")
        self.assertNotIn("TEXBIN", self.settings())

    def test_nothing_that_is_set_is_overwritten(self):
        self.write_preferences("# mine\nUSEPDFTEX=0\nTEXINPUTS=/own\nAUTOVIEW=\n")
        os.makedirs(self.support + "/formats")
        with open(self.support + "/formats/tex.cnf", "w") as file:
            file.write("mine\n")
        self.assertEqual(self.run_it("--defaults")[0], 0)
        settings = self.settings()
        self.assertEqual((settings["USEPDFTEX"], settings["TEXINPUTS"], settings["AUTOVIEW"]), ("0", "/own", ""))
        self.assertEqual(settings["DATABASE"], "1")
        self.assertNotIn("SPACECHAR", settings)
        self.assertTrue(self.preferences_bytes().startswith(b"# mine\n"))
        with open(self.support + "/formats/tex.cnf") as file:
            self.assertEqual(file.read(), "mine\n")

    def test_a_second_time_changes_nothing(self):
        self.run_it("--defaults")
        before = os.stat(self.preferences_path)
        self.run_it("--defaults")
        self.assertEqual(os.stat(self.preferences_path), before)

    def test_the_databases(self):
        self.run_it("--defaults")
        for name, wanted in (("TEXINPUTS", "article.cls"), ("TEXFONTS", "cmr10.tfm"), ("TYPE1FONTS", "cmr10.pfb"),
                             ("VFFONTS", None), ("DVIPSHEADERS", "texc.pro")):
            folder = None
            found = None
            with open(self.support + "/" + name) as file:
                for line in file:
                    line = line.rstrip("\n")
                    if line.startswith("/"):
                        self.assertTrue(line.endswith("/"))
                        folder = line
                    else:
                        self.assertIsNotNone(folder)
                        self.assertFalse(line.startswith("0"))
                        found = folder + line if line == wanted else found
            if wanted:
                self.assertTrue(os.path.exists(found), (name, wanted, found))

    def test_databases_of_own_folders(self):
        tree = self.home + "/own tree"
        for name in ("a/x.tex", "a/b/y z.tex", "a/b/0skip.tex", ".hidden/h.tex", "é.tex"):
            os.makedirs(os.path.dirname(os.path.join(tree, name)), exist_ok=True)
            open(os.path.join(tree, name), "w").close()
        os.symlink(tree, tree + "/a/loop")
        self.write_preferences("SPACECHAR=31\nTEXINPUTS=.:%s//\nVFFONTS=%s/a\n" % (self.unix(tree), self.unix(tree)))
        self.assertEqual(self.run_it("--databases"), (0, "", "") if os.path.isdir(self.support) else
                         (1, "", self.run_it("--databases")[2]))
        os.makedirs(self.support, exist_ok=True)
        self.assertEqual(self.run_it("--databases"), (0, "", ""))
        with open(self.support + "/TEXINPUTS") as file:
            self.assertEqual(file.read(), (tree + "/\né.tex\n" + tree + "/a/\nx.tex\n" + tree +
                                           "/a/b/\ny z.tex\n").replace(" ", "\x1f"))
        with open(self.support + "/VFFONTS") as file:
            self.assertEqual(file.read(), (tree + "/a/\nx.tex\n").replace(" ", "\x1f"))
        self.assertEqual(sorted(os.listdir(self.support)),
                         ["DVIPSHEADERS", "TEXFONTS", "TEXINPUTS", "TYPE1FONTS", "VFFONTS"])

    def test_the_desktops_choice_is_proposed(self):
        for name, keys in (("view", "MimeType=application/pdf;"), ("old", "MimeType=application/pdf;"),
                           ("write", "MimeType=text/plain;\nCategories=TextEditor;")):
            self.file(f"{name}.desktop", f"[Desktop Entry]\nType=Application\nName={name}\nExec=true\n{keys}\n",
                      os.path.join(self.home, "share/applications"))
        self.file("mimeapps.list", "[Added Associations]\napplication/pdf=old.desktop;\n[Default Applications]\n"
                  "application/pdf=none.desktop;view.desktop;\n", os.path.join(self.home, "config dir"))
        self.run_it("--defaults")
        settings = self.settings()
        self.assertEqual(settings["PDFVIEW"], self.unix(self.home + "/share/applications/view.desktop"))
        self.assertEqual(settings["Editor"], self.unix(self.home + "/share/applications/write.desktop"))
        self.assertNotIn("VIEWPS", settings)

    def test_quillon_is_not_proposed_as_its_own_editor(self):
        folder = self.home + "/share/applications"
        for name, types in (("org.quillon.Shell", "text/x-tex;application/x-dvi;"), ("write", "text/x-tex;")):
            self.file(f"{name}.desktop", f"[Desktop Entry]\nType=Application\nName={name}\nExec=true\nMimeType={types}\n"
                      "Categories=TextEditor;\n", folder)
        self.run_it("--defaults")
        settings = self.settings()
        self.assertEqual(settings["Editor"], self.unix(folder + "/write.desktop"))
        self.assertNotIn("DVIPREVIEW", settings)

    def test_without_a_distribution(self):
        status, _, error = self.run_it("--defaults", PATH="/nowhere")
        if "can't find a TeX" in error:
            self.assertEqual(status, 0)
            self.assertEqual(error, "setpaths: I can't find a TeX distribution\n")
            self.assertEqual(self.settings()["SPACECHAR"], "31")
        else:
            self.assertIn("TEXBIN", self.settings())

    def test_a_wrong_word(self):
        self.assertEqual(self.run_it("--what")[0], 64)
        self.assertFalse(os.path.exists(self.preferences_path))


if __name__ == "__main__":
    unittest.main()
