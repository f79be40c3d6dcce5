"""The whole program on a display: windows, menus, keys, the run's own window."""

import os
import re
import shutil
import signal
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import DesktopTest, stop, wait_until  # noqa: E402

HERE = os.path.dirname(os.path.abspath(__file__))
PLAIN = "Hello.\n\\bye\n"
# Says which process it is, and runs until it is ended.
ENDLESS = "echo $$ > \"$HOME/leader\"; echo begun; while :; do sleep 0.1; done\n"
# Runs until the file "go" is there.
HELD = "echo $$ > \"$HOME/leader\"; echo begun; while [ ! -e \"$HOME/go\" ]; do sleep 0.05; done; echo ended\n"


class Desk(DesktopTest):
    def setUp(self):
        super().setUp()
        self.preferences(USEPDFTEX="1", AUTOVIEW="0", TEXWINDOW="100 200 400 800")

    def begin(self, script, **settings):
        """A shell in whose first run SCRIPT stands for the engine; returns when it runs."""
        self.script_tool(script)
        if settings:
            self.preferences(USEPDFTEX="1", AUTOVIEW="0", TEXWINDOW="100 200 400 800", **settings)
        path = self.file("x.tex", PLAIN)
        self.start_desktop(path)
        wait_until(lambda: os.path.exists(os.path.join(self.home, "leader")))
        with open(os.path.join(self.home, "leader"), encoding="utf-8") as file:
            wait_until(lambda: file.seek(0) == 0 and file.read().endswith("\n"))
            file.seek(0)
            self.leader = int(file.read())

    def let_end(self):
        self.file("go", "", self.home)

    def leader_runs(self):
        try:
            with open(f"/proc/{self.leader}/stat", encoding="latin-1") as file:
                return file.read().rpartition(")")[2].split()[0] != "Z"
        except OSError:
            return False

    def tool_window(self):
        wait_until(lambda: self.windows("– Quillon$"))
        return self.windows("– Quillon$")[0]

    def wait_for_line(self, line):
        """Waits until the console's text has the line; the text."""
        wait_until(lambda: line in self.console().split("\n"))
        return self.clipboard()

    def geometry(self, window):
        done = subprocess.run(["xwininfo", "-id", window], env=self.environment, capture_output=True, text=True, timeout=60,
                              check=True)
        names = {"X": "Absolute upper-left X", "Y": "Absolute upper-left Y", "WIDTH": "Width", "HEIGHT": "Height"}
        return {name: int(re.search(title + ": +(-?\\d+)", done.stdout).group(1)) for name, title in names.items()}


class Window(Desk):
    def test_the_window_stands_where_it_stood_with_its_name_and_icon(self):
        self.start_desktop()
        place = self.geometry(self.window)
        # The console begins at the saved place, below the menu bar.
        self.assertEqual((place["X"], place["WIDTH"]), (200, 600))
        self.assertEqual(place["Y"] + place["HEIGHT"], 400)
        self.assertIn('"org.quillon.Shell"', self.property("WM_CLASS"))
        self.assertIn(str(self.running.pid), self.property("_NET_WM_PID"))
        self.assertIn('"Quillon"', self.property("_NET_WM_NAME"))
        wait_until(lambda: "not found" not in self.property("_NET_WM_ICON"))

    def test_the_place_is_saved_and_used_again(self):
        self.start_desktop()
        self.xdotool("windowmove", self.window, "300", "200")
        wait_until(lambda: self.geometry(self.window)["X"] != 200)
        place = self.geometry(self.window)
        self.keys("ctrl+q")
        wait_until(lambda: self.running.poll() is not None)
        self.assertEqual(self.running.returncode, 0)
        top, left, bottom, right = map(int, self.setting("TEXWINDOW").split())
        self.assertEqual((left, bottom, right - left), (place["X"], place["Y"] + place["HEIGHT"], 600))
        self.start_desktop()
        self.assertEqual(self.geometry(self.window)["X"], place["X"])

    def test_every_menu_opens_by_its_letter(self):
        self.start_desktop()
        for letter in "qfeotr":
            self.keys("alt+" + letter)
            wait_until(self.menus_shown)
            self.keys("Escape", "Escape")
            wait_until(lambda: not self.menus_shown())

    def test_submenus_open_by_the_keyboard(self):
        self.start_desktop()
        for keys in (["alt+f", "b", "Right"], ["alt+e", "i", "Right"], ["alt+o", "m", "Right"]):
            self.keys(keys[0])
            wait_until(lambda: len(self.menus_shown()) == 1)
            self.keys(*keys[1:])
            wait_until(lambda: len(self.menus_shown()) == 2)
            self.keys("Escape", "Escape", "Escape")
            wait_until(lambda: not self.menus_shown())

    def test_a_choice_in_a_menu_typesets_the_file(self):
        path = self.file("x.tex", PLAIN)
        self.preferences(USEPDFTEX="1", AUTOVIEW="0", TEXFILE=path, TEXDIR=self.work)
        self.start_desktop(path)
        pdf = os.path.join(self.work, "x.pdf")
        wait_until(lambda: self.setting("PDFFILE") == pdf)
        self.wait_for_line("Transcript written on x.log.")
        os.unlink(pdf)
        self.keys("alt+f")
        wait_until(self.menus_shown)
        self.keys("Down", "Return")
        wait_until(lambda: os.path.exists(pdf))

    def test_a_command_key_typesets_the_file(self):
        path = self.file("x.tex", PLAIN)
        self.start_desktop(path)
        self.wait_for_line("Transcript written on x.log.")
        os.unlink(os.path.join(self.work, "x.pdf"))
        self.keys("ctrl+t")
        wait_until(lambda: os.path.exists(os.path.join(self.work, "x.pdf")))

    def test_the_close_button_leaves(self):
        self.start_desktop()
        self.keys("alt+F4")
        wait_until(lambda: self.running.poll() is not None)
        self.assertEqual(self.running.returncode, 0)


class Console(Desk):
    def full(self):
        """A shell whose console holds more than its window shows."""
        self.script_tool("seq -f 'line %g' 1 500\n")
        self.start_desktop(self.file("x.tex", PLAIN))
        return self.wait_for_line("line 500")

    def test_copy_takes_the_whole_text(self):
        text = self.full()
        self.assertEqual(re.findall("^line (\\d+)$", text, re.MULTILINE), [str(i) for i in range(1, 501)])

    def settled(self, pictures=None):
        """The window's picture once it changes no more, apart from those given."""
        last = [None]

        def steady():
            now = self.picture()
            same = now == last[0] and now not in (pictures or [])
            last[0] = now
            return same

        wait_until(steady)
        return last[0]

    def test_the_keyboard_scrolls(self):
        self.full()
        end = self.settled()
        self.keys("Prior")
        page = self.settled([end])
        self.keys("ctrl+Home")
        start = self.settled([end, page])
        self.keys("Next")
        self.settled([end, page, start])
        self.keys("ctrl+End")
        wait_until(lambda: self.picture() == end)

    def test_a_click_in_the_text_changes_nothing(self):
        self.full()
        before = self.settled()
        text = self.console()
        self.xdotool("mousemove", "--window", self.window, "100", "100", "click", "1", "click", "1")
        self.xdotool("mousemove", "--window", self.window, "150", "120", "mousedown", "1", "mousemove_relative", "60", "40",
                     "mouseup", "1")
        self.xdotool("mousemove", "1270", "790")
        wait_until(lambda: self.picture() == before)
        self.assertEqual(self.console(), text)

    def test_accented_text_and_bytes_that_are_no_text(self):
        self.script_tool("printf 'caf\\303'; sleep 0.2; printf '\\251 \\377 |\\342\\202\\254|\\n'\n")
        self.start_desktop(self.file("x.tex", PLAIN))
        self.wait_for_line("café \ufffd |€|")

    def test_a_huge_log_does_not_hold_the_window_up(self):
        self.script_tool("yes 'This is a line of the transcript of a run that says very much.' | head -c 30000000; "
                         "echo; echo the end\n")
        self.start_desktop(self.file("x.tex", PLAIN))
        wait_until(lambda: not self.windows("– Quillon$"), 60)
        wait_until(lambda: self.console().count("\n") > 400000, 90)
        end = self.settled()
        self.keys("ctrl+Home")
        self.settled([end])


class Runs(Desk):
    def test_during_a_run_menus_are_grey_and_keys_wait_in_order(self):
        self.begin(HELD)
        self.activate(self.window)
        self.keys("alt+f")
        self.keys("ctrl+8", "ctrl+8", "ctrl+8", "ctrl+e")
        # The window answers, and nothing of this has happened.
        self.assertEqual(self.menus_shown(), [])
        self.assertIsNone(self.setting("USE8BIT"))
        self.let_end()
        wait_until(lambda: self.setting("USE8BIT") == "1")
        self.wait_for_line("ended")
        self.keys("alt+f")
        wait_until(self.menus_shown)

    def test_escape_cancels(self):
        self.cancels("Escape")

    def test_control_period_cancels(self):
        self.cancels("ctrl+period")

    def cancels(self, key):
        self.begin(ENDLESS)
        self.activate(self.window)
        self.keys(key)
        wait_until(lambda: not self.leader_runs())
        self.wait_for_line("Processing cancelled by user.")

    def test_the_close_button_ends_the_run_and_leaves_nothing(self):
        self.leaves(lambda: self.keys("alt+F4"))

    def test_a_termination_request_ends_the_run_and_leaves_nothing(self):
        self.leaves(lambda: self.running.send_signal(signal.SIGTERM))

    def leaves(self, ask):
        self.begin(ENDLESS)
        self.activate(self.window)
        ask()
        wait_until(lambda: self.running.poll() is not None)
        self.assertEqual(self.running.returncode, 0)
        wait_until(lambda: not self.leader_runs())
        wait_until(lambda: not self.processes_of(self.home))

    def test_a_long_run_shows_its_window_and_leaves_the_keyboard_where_it_is(self):
        self.begin("echo $$ > \"$HOME/leader\"; for i in 1 2 3; do printf \"[$i] \"; done; "
                   "while [ ! -e \"$HOME/go\" ]; do sleep 0.05; done\n")
        window = self.tool_window()
        self.assertIn("pdftex", " ".join(self.xdotool("getwindowname", window)))
        self.assertEqual(self.active(), self.window)
        self.let_end()
        wait_until(lambda: not self.windows("– Quillon$"))
        self.assertEqual(self.active(), self.window)

    def test_the_cancel_button_cancels(self):
        self.begin(ENDLESS)
        self.activate(self.tool_window())
        self.keys("alt+c")
        wait_until(lambda: not self.leader_runs())
        self.wait_for_line("Processing cancelled by user.")

    def test_output_does_not_take_the_keyboard_from_another_application(self):
        self.begin(HELD)
        other = self.other_application()
        self.let_end()
        wait_until(lambda: not self.windows("– Quillon$"))
        self.xdotool("type", "typed here")
        wait_until(lambda: self.typed().endswith("typed here\n"))
        self.assertEqual(self.active(), other)

    def other_application(self):
        self.typed_path = os.path.join(self.home, "typed")
        with open(self.typed_path, "wb") as typed:
            process = subprocess.Popen([self.program("desk"), "window", "Another"], env=self.environment, stdout=typed)
        self.addCleanup(stop, process)
        wait_until(lambda: self.windows("^Another$"))
        (other,) = self.windows("^Another$")
        self.activate(other)
        return other

    def typed(self):
        with open(self.typed_path, encoding="utf-8") as file:
            return file.read()

    def test_a_question_does_not_take_the_keyboard_from_another_application(self):
        self.begin("echo $$ > \"$HOME/leader\"; while [ ! -e \"$HOME/go\" ]; do sleep 0.05; done; printf '? '; read x; "
                   "echo \"answer $x\"\n")
        other = self.other_application()
        self.let_end()
        window = self.tool_window()
        # What asks for attention without the keyboard has the urgency hint.
        wait_until(lambda: "DEMANDS_ATTENTION" in self.property("_NET_WM_STATE", window) or
                   "urgency" in self.property("WM_HINTS", window))
        self.assertEqual(self.active(), other)

    def test_the_end_of_a_long_run_is_told_to_who_is_elsewhere(self):
        record = os.path.join(self.home, "notifications")
        service = subprocess.Popen(["/usr/bin/python3", os.path.join(HERE, "..", "fakes", "notifications.py"), record],
                                   env=self.environment)
        self.addCleanup(stop, service)
        bus = self.bus()
        wait_until(lambda: bus.name_has_owner("org.freedesktop.Notifications"))
        self.begin("echo $$ > \"$HOME/leader\"; sleep 6\n")
        self.other_application()
        wait_until(lambda: os.path.exists(record) and os.path.getsize(record) > 0)
        with open(record, encoding="utf-8") as file:
            self.assertEqual(file.read(), "Quillon: The run is done.\n")
        self.activate(self.window)

        def closed():
            with open(record, encoding="utf-8") as file:
                return file.read().endswith("closed\n")

        wait_until(closed)


class Answers(Desk):
    """What a person types at once when the engine asks reaches it."""

    def ask(self):
        self.start_desktop(self.file("bad.tex", "Text.\n\\wrongone\n\\wrongtwo\n\\bye\n"))
        window = self.tool_window()
        wait_until(lambda: self.active() == window)
        self.tool = window

    def answer(self, text):
        """Types an answer, and waits until the window has shown what came of it."""
        before = self.tool_picture()
        self.xdotool("type", text)
        self.keys("Return")
        wait_until(lambda: self.tool_picture() != before)
        self.seen = None
        wait_until(self.is_still)

    def tool_picture(self):
        """The pixels of the tool's window; empty when it has gone, also while its picture was taken."""
        try:
            return self.picture(self.tool, 5) if self.windows("– Quillon$") else b""
        except (subprocess.CalledProcessError, subprocess.TimeoutExpired):
            # Asked for a window that is not there, the program waits for somebody to point at one.
            return b""

    def is_still(self):
        now = self.tool_picture()
        same, self.seen = now == self.seen, now
        return same

    def test_x_ends_the_run(self):
        self.ask()
        self.answer("x")
        wait_until(lambda: not self.windows("– Quillon$"))
        text = self.wait_for_line("No pages of output.")
        self.assertIn("\n? x\n", text)

    def test_help_and_return_go_on(self):
        self.ask()
        self.answer("h")
        self.answer("")
        self.answer("x")
        wait_until(lambda: not self.windows("– Quillon$"))
        text = self.wait_for_line("? x")
        self.assertIn("\n? h\nThe control sequence at the end of the top line\n", text)
        self.assertIn("! Undefined control sequence.\nl.3 \\wrongtwo\n", text)

    def test_e_stops_and_says_where(self):
        programs = os.path.join(self.home, "programs")
        os.mkdir(programs)
        editor = shutil.copy(os.path.join(HERE, "..", "fakes", "recorder.sh"), os.path.join(programs, "kate"))
        self.preferences(USEPDFTEX="1", AUTOVIEW="0", Editor=editor)
        self.ask()
        self.answer("e")
        wait_until(lambda: [name for name in os.listdir(programs) if name.endswith(".words")])
        self.assertEqual(self.setting("LINENUMBER"), "2")
        (words,) = [name for name in os.listdir(programs) if name.endswith(".words")]
        with open(os.path.join(programs, words), "rb") as file:
            self.assertEqual(file.read(), f"kate\n--line\0002\0{self.work}/bad.tex\0".encode())


class SmallScreen(Desk):
    screen = "800x500x24"

    def test_the_windows_fit(self):
        self.begin(ENDLESS)
        place = self.geometry(self.tool_window())
        self.assertGreaterEqual(place["X"], 0)
        self.assertGreaterEqual(place["Y"], 0)
        self.assertLessEqual(place["X"] + place["WIDTH"], 800)
        self.assertLessEqual(place["Y"] + place["HEIGHT"], 500)


class Records(Desk):
    """Every choice travels as an event record, and does nothing without it."""

    def start_recording(self, **more):
        self.copy_binaries()
        os.unlink(self.shell_program())
        os.link(self.program("recording-shell"), self.shell_program())
        self.records_path = os.path.join(self.home, "records")
        self.environment.update(RECORDS=self.records_path, **more)
        self.start_desktop()

    def records(self):
        if not os.path.exists(self.records_path):
            return []
        with open(self.records_path, encoding="utf-8") as file:
            return [tuple(map(int, line.split())) for line in file]

    def choose(self):
        """Three choices in menus and two command keys."""
        for letter in "uau":  # Use TeX, Add Source Links, Use TeX
            self.keys("alt+o")
            wait_until(self.menus_shown)
            self.keys(letter, "Return")
            wait_until(lambda: not self.menus_shown())
        self.keys("ctrl+8")
        self.keys("ctrl+e")
        wait_until(lambda: len(self.records()) >= 5)

    expected = [(1, 131 << 16 | 2), (1, 131 << 16 | 3), (1, 131 << 16 | 2), (3, ord("8")), (3, ord("e"))]

    def test_there_is_one_record_a_choice_in_order(self):
        self.start_recording()
        self.choose()
        wait_until(lambda: self.setting("USE8BIT") == "1")
        self.assertEqual([record[:2] for record in self.records()], self.expected)
        self.assertEqual((self.setting("USEPDFTEX"), self.setting("ADDSPECIALS")), ("1", "1"))

    def test_without_the_record_nothing_happens(self):
        self.start_recording(SWALLOW="1")
        with open(self.preferences_path, "rb") as file:
            before = file.read()
        self.choose()
        self.assertEqual([record[:2] for record in self.records()], self.expected)
        with open(self.preferences_path, "rb") as file:
            self.assertEqual(file.read(), before)


if __name__ == "__main__":
    unittest.main()
