"""The installed copy: it starts from the desktop's menu with next to no environment, finds TeX, and typesets."""

import os
import shlex
import signal
import subprocess

import dbus

from installed import PREFIX, Installed, main
from harness import wait_until

SIZES = (16, 22, 24, 32, 48, 64, 128, 256, 512)


class Menu(Installed):
    def setUp(self):
        super().setUp()
        self.addCleanup(self.end_all)

    def end_all(self):
        """Ends the programs of this test's home, the viewer among them."""
        for process in self.processes_of(""):
            try:
                os.kill(process, signal.SIGKILL)
            except ProcessLookupError:
                pass

    def launch(self, name, *files):
        """Starts a desktop entry, as a menu does; its program goes on when this returns."""
        entry = os.path.join(PREFIX, "share", "applications", name)
        with open(self.output_path, "ab") as output:
            done = subprocess.run(["gio", "launch", entry, *files], env=self.environment, cwd=self.work, check=False,
                                  stdin=subprocess.DEVNULL, stdout=output, stderr=output, timeout=60)
        self.assertEqual(done.returncode, 0, self.output())

    def test_the_menu_starts_it_and_a_menu_choice_typesets_the_sample(self):
        sample = self.example("sample.tex")
        self.launch("org.quillon.Shell.desktop")
        setup = wait_until(lambda: self.windows("^Set Up Quillon$"), "the set-up")[0]
        self.activate(setup)
        # A key that is pressed before the window takes keys is lost.
        wait_until(lambda: self.keys("Return") or os.path.exists(self.preferences_path), "the preferences")
        self.window = wait_until(lambda: self.windows("^Quillon$"), "the window")[0]
        wait_until(lambda: self.active() == self.window, "the keyboard")
        self.assertIn('"org.quillon.Shell"', self.property("WM_CLASS"))
        # The first start has found the distribution by itself.
        self.assertIn("/texmf", self.setting("TEXMFTREES"))
        self.keys("alt+f")
        wait_until(self.menus_shown, "the menu")
        self.keys("Return")
        chooser = wait_until(lambda: self.windows("Select a tex file"), "the chooser")[0]
        wait_until(lambda: self.active() == chooser, "the chooser's keyboard")
        self.xdotool("type", "--delay", "1", sample)
        self.keys("Return")
        wait_until(lambda: os.path.exists(self.path("sample.pdf")), "the PDF file")
        wait_until(lambda: self.windows("sample.pdf"), "the viewer")
        self.activate(self.window)
        self.keys("ctrl+q")
        wait_until(lambda: not self.running_as("quillon-shell"), "the end of the shell")

    def test_a_file_opened_with_the_entry_goes_to_the_shell_that_runs(self):
        self.assertEqual(self.run_program("setpaths", "--defaults").returncode, 0)
        for name in ("first.tex", "second ä.tex"):
            self.launch("org.quillon.Shell.desktop", self.example("sample.tex", name))
            wait_until(lambda: self.windows("Quillon$"), "the window")
            wait_until(lambda leaf=name: os.path.exists(self.path(leaf[:-3] + "pdf")), "the PDF file")
        self.assertEqual(len(self.running_as("quillon-shell")), 1)

    def test_the_set_up_is_in_the_menu(self):
        self.launch("org.quillon.SetUp.desktop")
        self.window = wait_until(lambda: self.windows("^Set Up Quillon$"), "the window")[0]
        self.assertIn('"org.quillon.SetUp"', self.property("WM_CLASS"))

    def session_bus(self):
        """A bus as a session has it, which reads the services of the folders that hold the desktop entries."""
        self.environment["XDG_DATA_DIRS"] = os.path.join(PREFIX, "share")
        bus = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address"], stdout=subprocess.PIPE,
                               stderr=subprocess.DEVNULL, env=self.environment)
        self.addCleanup(lambda: (bus.kill(), bus.wait(), bus.stdout.close()))
        self.address = bus.stdout.readline().decode().strip()
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = self.address

    def call_shell(self):
        return self.bus().call_blocking("org.quillon.Shell", "/org/quillon/Shell", "org.quillon.Shell1", "Formats", "", ())

    def test_without_a_display_no_call_starts_a_shell_that_nobody_sees(self):
        self.run_program("setpaths", "--defaults")
        del self.environment["DISPLAY"]
        self.session_bus()
        with self.assertRaises(dbus.DBusException) as refused:
            self.call_shell()
        self.assertEqual(refused.exception.get_dbus_name(), "org.freedesktop.DBus.Error.Spawn.ChildExited")
        self.assertEqual(self.running_as("quillon-shell"), [])

    def test_a_call_starts_a_shell_with_a_window(self):
        self.run_program("setpaths", "--defaults")
        self.session_bus()
        self.assertIn("pdflatex", self.call_shell().split())
        wait_until(lambda: self.windows("^Quillon$"), "the window")
        self.assertEqual(len(self.running_as("quillon-shell")), 1)

    def test_a_command_that_needs_no_shell_starts_no_window(self):
        self.run_program("setpaths", "--defaults")
        self.session_bus()
        self.assertEqual(self.run_program("quillon", "quit").returncode, 69)
        self.assertEqual(self.run_program("quillon", "problems").returncode, 69)
        self.assertEqual(self.run_program("quillon", "locate", "article.cls").returncode, 0)
        self.assertEqual(self.windows("^Quillon$"), [])
        wait_until(lambda: not self.running_as("quillon-shell"), "the end of the private shell")

    def test_the_menu_opens_a_window_beside_a_shell_without_one(self):
        self.run_program("setpaths", "--defaults")
        self.start_shell()
        self.launch("org.quillon.Shell.desktop")
        wait_until(lambda: self.windows("^Quillon$"), "the window")
        self.assertEqual(len(self.running_as("quillon-shell")), 2)


class Programs(Installed):
    def test_nothing_of_it_can_be_written(self):
        found = 0
        for folder, folders, files in os.walk(PREFIX):
            for path in [folder, *(os.path.join(folder, name) for name in folders + files)]:
                found += 1
                self.assertFalse(os.access(path, os.W_OK), path)
        self.assertGreater(found, 100)

    def test_without_display_bus_and_path_it_typesets(self):
        self.environment = {name: self.environment[name] for name in ("HOME", "XDG_RUNTIME_DIR")}
        self.example("sample.tex")
        done = self.run_program(self.quillon, "--headless", "sample.tex")
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.assertIn("Output written on sample.pdf (1 page", done.stdout)

    def test_the_command(self):
        self.example("error.tex")
        done = self.run_program("quillon", "exec", "pdflatex", "error.tex")
        self.assertEqual((done.returncode, done.stderr), (1, self.path("error.tex") + ":5: Undefined control sequence.\n"))
        self.assertEqual(self.run_program("quillon", "exec", "-f", "pdflatex", self.example("sample.tex")).returncode, 0)
        self.assertTrue(self.run_program("quillon", "locate", "article.cls").stdout.endswith("/article.cls\n"))
        self.assertIn("pdflatex", self.run_program("quillon", "formats").stdout.split())

    def test_the_manual_pages_are_found_and_have_no_mistakes(self):
        for name, text in (("quillon", "start and drive"), ("setpaths", "set up Quillon"),
                           ("quillon-preferences", "TEXBIN")):
            done = self.run_program("man", "--warnings", "-M", os.path.join(PREFIX, "share", "man"), name,
                                    MANWIDTH="80", LC_ALL="C.UTF-8", MANPAGER="cat")
            self.assertEqual((done.returncode, done.stderr), (0, ""), name)
            self.assertIn(text, done.stdout)

    def test_bash_completes_the_command(self):
        script = ("XDG_DATA_DIRS=" + shlex.quote(os.path.join(PREFIX, "share")) +
                  "; source /usr/share/bash-completion/bash_completion; _completion_loader quillon; "
                  "complete -p quillon; COMP_WORDS=(quillon exec pdfl); COMP_CWORD=2; _quillon quillon pdfl exec; "
                  "printf '%s\\n' \"${COMPREPLY[@]}\"")
        done = self.run_program("bash", "--norc", "-c", script)
        self.assertEqual((done.stderr, done.stdout), ("", "complete -F _quillon quillon\npdflatex\n"))

    def test_the_icon_has_a_page_and_a_quill_at_every_size(self):
        for size in SIZES:
            path = os.path.join(PREFIX, "share", "icons", "hicolor", f"{size}x{size}", "apps", "org.quillon.Shell.png")
            pixels = subprocess.run(["convert", path, "-depth", "8", "rgba:-"], capture_output=True, check=True).stdout
            self.assertEqual(len(pixels), 4 * size * size)
            points = [pixels[i:i + 4] for i in range(0, len(pixels), 4)]
            clear = sum(point[3] == 0 for point in points) / len(points)
            paper = sum(point[3] == 255 and min(point[:3]) > 230 for point in points) / len(points)
            quill = sum(point[3] == 255 and point[2] > point[0] + 60 for point in points) / len(points)
            for share, least, most in ((clear, 0.2, 0.5), (paper, 0.2, 0.5), (quill, 0.1, 0.35)):
                self.assertTrue(least < share < most, (size, clear, paper, quill))


if __name__ == "__main__":
    main()
