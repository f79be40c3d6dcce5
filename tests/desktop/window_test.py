"""The shell's window, its place and its menus, on a display."""

import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from desk import ENDLESS, PLAIN, Desk  # noqa: E402
from harness import wait_until  # noqa: E402


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
        wait_until(self.ended)
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
        for keys in (["alt+f", "b"], ["alt+e", "i"], ["alt+o", "m"]):
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
        self.press("ctrl+t", lambda: os.path.exists(os.path.join(self.work, "x.pdf")))

    def test_the_close_button_leaves(self):
        self.start_desktop()
        self.keys("alt+F4")
        wait_until(self.ended)
        self.assertEqual(self.running.returncode, 0)


class Dark(Desk):
    """A desktop with dark windows, whose colours say nothing of quiet texts."""

    COLOURS = "[Colors:{}]\nBackgroundNormal=27,30,32\nForegroundNormal=252,252,252\nForegroundInactive=161,169,177\n"

    def test_the_hint_of_the_empty_console_can_be_read(self):
        self.environment.update(QT_QPA_PLATFORMTHEME="kde", KDE_SESSION_VERSION="5")
        self.file("kdeglobals", "".join(map(self.COLOURS.format, ("Window", "View", "Button"))),
                  self.environment["XDG_CONFIG_HOME"])
        self.start_desktop()
        self.keys("ctrl+k")
        wait_until(lambda: self.brightest() > 120, "a hint that can be read")
        self.assertEqual(self.darkest(), 27)

    def middle(self):
        """The pixels of the window without its edges, where nothing but the hint is."""
        place, pixels = self.geometry(self.window), self.picture()
        width, height = place["WIDTH"], place["HEIGHT"]
        pixels = pixels[::len(pixels) // (3 * width * height)]  # one byte a colour, where there may be two
        return [pixels[3 * (row * width + width // 10):3 * (row * width + width * 9 // 10)]
                for row in range(height * 3 // 10, height * 9 // 10)]

    def brightest(self):
        return max(map(max, self.middle()))

    def darkest(self):
        return min(map(min, self.middle()))


class SmallScreen(Desk):
    screen = "800x500x24"

    def test_the_windows_fit(self):
        self.begin(ENDLESS)
        place = self.geometry(self.tool_window())
        self.assertGreaterEqual(place["X"], 0)
        self.assertGreaterEqual(place["Y"], 0)
        self.assertLessEqual(place["X"] + place["WIDTH"], 800)
        self.assertLessEqual(place["Y"] + place["HEIGHT"], 500)


if __name__ == "__main__":
    unittest.main()
