"""The set-up's window: what it shows, what Save writes, what stays as the person had it."""

import os
import shutil
import sys
import unittest

import dbus

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import BINARIES, DesktopTest, program_of, wait_until  # noqa: E402

TITLE = "^Set Up Quillon$"
PROGRAM = program_of(os.path.join(BINARIES, "setpaths.app"))
DATABASES = ("TEXINPUTS", "DVIPSHEADERS", "TYPE1FONTS", "TEXFONTS", "VFFONTS")


class SetupTest(DesktopTest):
    def setUp(self):
        super().setUp()
        self.environment.update(XDG_DATA_DIRS=os.path.join(self.home, "share"),
                                XDG_CONFIG_DIRS=os.path.join(self.home, "etc"))

    def entry(self, name, title, folder="share/applications"):
        return self.file(name, f"[Desktop Entry]\nType=Application\nName={title}\nExec=true\nMimeType=application/pdf;\n",
                         os.path.join(self.home, folder))

    def program_folders(self, name):
        """An empty folder, and one of that name with the TeX programs in it."""
        empty = os.path.join(self.home, "empty")
        os.mkdir(empty)
        return empty, self.program_folder(os.path.join(self.home, name))

    def start(self, **environment):
        """Starts the set-up and waits until its window takes keys."""
        self.start_window(TITLE, PROGRAM, **environment)
        self.activate(self.window)
        wait_until(self.takes_keys)

    def takes_keys(self):
        """A key that is pressed while the window is still taking the keyboard is lost; these only move the focus."""
        seen = []
        for key in ("alt+e", "alt+o", "alt+e"):
            self.keys(key)
            seen.append(self.picture())
        return seen[0] == seen[2] != seen[1]

    def at_rest(self, before):
        """The pixels of the window once it no longer looks as BEFORE and does not change; else nothing."""
        looks = [self.picture() for _ in range(3)]
        return looks[0] if looks[0] == looks[1] == looks[2] != before else None

    def leave(self, key="Return"):
        self.keys(key)
        self.assertEqual(self.running.wait(60), 0, self.output())

    def application(self):
        return self.bus().get_object(f"org.quillon.App.p{self.running.pid}", "/org/quillon/App")

    def event(self, event_class, event_id):
        result, parameters = self.application().Event(event_class, event_id, dbus.Dictionary({}, signature="s(sv)"),
                                                      dbus_interface="org.quillon.App1")
        self.assertEqual(parameters, {})
        return result


class SetupWindow(SetupTest):
    def test_save_writes_what_the_defaults_would_be(self):
        self.start()
        self.leave()
        saved = self.settings()
        self.assertEqual(saved["SPACECHAR"], "31")
        for name in DATABASES:
            self.assertTrue(os.path.exists(os.path.join(self.support, name)), name)
        os.unlink(self.preferences_path)
        self.assertEqual(self.run_program(PROGRAM, "--defaults").returncode, 0)
        self.assertEqual(saved, self.settings())

    def test_cancel_writes_nothing(self):
        self.start()
        self.leave("Escape")
        self.assertFalse(os.path.exists(self.preferences_path))
        self.assertFalse(os.path.exists(self.support))

    def test_what_a_person_set_stays_byte_for_byte(self):
        self.preferences(Editor="/no such\x1feditor", PDFVIEW="", DATABASE="0", TEXINPUTS=".:/a\x1fb//")
        self.add_preferences(b"TEXFONTS=/caf\xe9/:\nan odd line\n")
        before = self.preferences_bytes().split(b"\n")
        self.start()
        self.leave()
        after = self.preferences_bytes().split(b"\n")
        self.assertEqual(after[:len(before) - 1], before[:-1])
        self.assertIn(b"VFFONTS", b"\n".join(after))

    def test_a_choice_is_written(self):
        first, second = self.entry("a.desktop", "First Viewer"), self.entry("b.desktop", "Second Viewer")
        self.preferences(PDFVIEW=first)
        self.start()
        # The databases off, on their own page, and the next PDF viewer.
        self.keys("alt+d", "space", "alt+g", "alt+v", "Down")
        self.leave()
        self.assertEqual((self.setting("DATABASE"), self.setting("PDFVIEW")), ("0", second))

    def test_a_path_that_was_typed_is_written(self):
        self.preferences(TEXINPUTS="/old/")
        self.start()
        self.keys("alt+p")
        # The keyboard is in the table. Typed over the first row, and still open when the window is left.
        self.xdotool("type", "/my tex//:/other")
        self.keys("Return")
        self.leave()
        self.assertEqual(self.setting("TEXINPUTS"), "/my\\x1ftex//:/other")

    def test_the_distributions_paths_come_back(self):
        self.preferences(TEXINPUTS="/old/", TEXFONTS="/old/")
        self.start()
        self.keys("alt+p", "Tab", "space")
        self.leave()
        self.assertIn("texmf", self.setting("TEXINPUTS"))
        self.assertIn("texmf", self.setting("TEXFONTS"))

    def test_without_a_distribution_the_window_says_so_and_saves_the_rest(self):
        empty = os.path.join(self.home, "empty")
        os.mkdir(empty)
        self.start(PATH=empty)
        self.leave()
        self.assertEqual(self.setting("AUTOVIEW"), "1")
        self.assertIsNone(self.setting("TEXINPUTS"))

    def test_the_programs_that_a_person_named_count_more_than_the_path(self):
        empty, programs = self.program_folders("my programs")
        self.preferences(TEXBIN=programs.replace(" ", "\x1f"))
        self.start(PATH=empty)
        self.leave()
        self.assertIn("texmf", self.setting("TEXINPUTS"))
        self.assertEqual(self.setting("TEXBIN"), programs.replace(" ", "\x1f"))

    def test_another_distribution_is_chosen_by_its_folder(self):
        empty, programs = self.program_folders("programs")
        self.preferences(TEXINPUTS="/old/")
        self.start(PATH=empty)
        self.choose(empty)
        self.choose(programs)
        self.leave()
        self.assertEqual(self.setting("TEXBIN"), programs)
        self.assertIn("texmf", self.setting("TEXINPUTS"))

    def choose(self, folder):
        """Chooses the folder of the TeX programs."""
        chooser = "^Choose the folder of the TeX programs$"
        self.keys("alt+c")
        wait_until(lambda: self.windows(chooser))
        (window,) = self.windows(chooser)
        self.activate(window)
        # Typed over what is there, again when the first keys were lost.
        before = self.picture(window)
        wait_until(lambda: self.xdotool("key", "ctrl+a") or self.xdotool("type", folder) or
                   self.picture(window) != before)
        self.keys("Return")
        wait_until(lambda: not self.windows(chooser))
        self.activate(self.window)
        wait_until(self.takes_keys)

    def test_it_is_an_application_on_the_bus(self):
        self.start()
        properties = dbus.Interface(self.application(), "org.freedesktop.DBus.Properties")
        self.assertEqual(properties.Get("org.quillon.App1", "Signature"), "SETP")
        self.assertEqual(properties.GetAll("org.quillon.App1"),
                         {"Signature": "SETP", "Name": "setpaths",
                          "Path": os.path.join(os.path.realpath(BINARIES), "setpaths.app")})
        self.assertEqual(self.event("QUIL", "exec"), -1708)
        self.assertEqual(self.event("aevt", "oapp"), 0)
        self.assertEqual(self.event("aevt", "quit"), 0)
        self.assertEqual(self.running.wait(60), 0)
        self.assertFalse(os.path.exists(self.preferences_path))

    def test_preferences_that_cannot_be_written_keep_the_window_open(self):
        os.rmdir(os.path.dirname(self.preferences_path))
        self.file("config", "in the way", self.home)
        self.start()
        self.keys("Return")
        wait_until(lambda: "I can't write" in self.output())
        self.assertIsNone(self.running.poll())
        self.keys("Escape")
        self.assertEqual(self.running.wait(60), 1)

    def test_databases_that_cannot_be_written_keep_the_window_open(self):
        blocked = os.path.join(self.support, "TEXINPUTS")
        self.file("x", "in the way", blocked)
        self.start()
        self.keys("Return")
        wait_until(lambda: f"I can't write {blocked}\n" in self.output())
        shutil.rmtree(blocked)
        self.assertIsNone(self.running.poll())
        self.assertEqual(self.setting("DATABASE"), "1")
        self.leave()
        self.assertTrue(os.path.isfile(blocked))

    def test_no_display_asks_nothing(self):
        del self.environment["DISPLAY"]
        self.assertEqual(self.run_program(PROGRAM).returncode, 0)
        self.assertEqual(self.setting("DATABASE"), "1")
        os.unlink(self.preferences_path)
        self.environment["DISPLAY"] = ":12345"
        self.assertEqual(self.run_program(PROGRAM).returncode, 0)
        self.assertEqual(self.setting("DATABASE"), "1")


class ReverseSearch(SetupTest):
    """The page for viewers that keep the command for their reverse search in a settings file."""

    def setUp(self):
        super().setUp()
        self.programs = os.path.join(self.home, "viewers")
        for name in ("okular", "qpdfview"):
            self.file(name, "#!/bin/sh\n", self.programs, 0o755)
        self.environment["PATH"] = self.programs + ":" + os.environ["PATH"]
        self.config = self.environment["XDG_CONFIG_HOME"]
        self.path = os.path.join(self.config, "okularpartrc")

    def content(self, path):
        if not os.path.exists(path):
            return ""
        with open(path, encoding="utf-8") as file:
            return file.read()

    def test_nothing_is_written_before_the_button_and_then_at_once(self):
        before = "[Core General]\nExternalEditor=Kate\nmine=1\n"
        self.file("okularpartrc", before, self.config)
        self.start()
        first = self.picture()
        self.keys("alt+h", "alt+n")
        shown = wait_until(lambda: self.at_rest(first), "the page")
        self.keys("Down")
        other = wait_until(lambda: self.at_rest(shown), "the second viewer")
        self.keys("Up")
        wait_until(lambda: self.at_rest(other) == shown, "the first viewer again")
        self.assertEqual(self.content(self.path), before)
        self.keys("alt+s")
        wait_until(lambda: "ExternalEditor=Custom\nmine=1\nExternalEditorCommand=" in self.content(self.path), "the lines")
        self.assertEqual(self.content(self.path + ".before-quillon"), before)
        self.keys("Down", "alt+s")
        wait_until(lambda: "[documentView]\nsourceEditor=" in self.content(os.path.join(self.config, "qpdfview/qpdfview.conf")),
                   "the second file")
        self.leave("Escape")
        self.assertFalse(os.path.exists(self.preferences_path))

    def test_save_and_cancel_write_nothing_of_it(self):
        self.start()
        self.keys("alt+h")
        self.leave("Return")
        self.assertFalse(os.path.exists(self.path))
        self.assertTrue(os.path.exists(self.preferences_path))


if __name__ == "__main__":
    unittest.main()
