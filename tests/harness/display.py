"""A test with a display of its own, and a window manager on it."""

import os
import subprocess
import time

from harness.bus import ServiceTest
from harness.home import BUILD, TESTS
from harness.processes import LIMIT, stop, wait_until


class DesktopTest(ServiceTest):
    """A test with a display, a window manager and, when it starts one, a program with a window."""

    screen = "1280x800x24"

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        read_end, write_end = os.pipe()
        cls.server = subprocess.Popen(["Xvfb", "-displayfd", str(write_end), "-noreset", "-screen", "0", cls.screen,
                                       "-nolisten", "tcp"], pass_fds=[write_end], stderr=subprocess.DEVNULL)
        cls.addClassCleanup(stop, cls.server)
        os.close(write_end)
        with os.fdopen(read_end) as file:
            cls.display = ":" + file.readline().strip()
        manager = subprocess.Popen(["openbox"], env=dict(os.environ, DISPLAY=cls.display), stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL)
        cls.addClassCleanup(stop, manager)
        # A window that is mapped while the manager starts may never be managed.
        wait_until(lambda: "window id" in subprocess.run(
            ["xprop", "-display", cls.display, "-root", "_NET_SUPPORTING_WM_CHECK"], capture_output=True, text=True,
            check=False).stdout, "the window manager")

    def setUp(self):
        super().setUp()
        suppressions = os.path.join(TESTS, "support", "leaks.supp")
        self.environment.update(DISPLAY=self.display, QT_QPA_PLATFORM="xcb",
                                LSAN_OPTIONS=f"suppressions={suppressions}:print_suppressions=0")

    def program(self, name):
        """A program of the tests' own, tests/desktop/programs."""
        return os.path.join(BUILD, "bin", "tests", name)

    def start_window(self, title, *command, **more):
        """Starts a program and waits for its window; self.window."""
        self.start_program(*command, **more)
        found = wait_until(lambda: self.windows(title) or self.ended(), f"the window {title}")
        self.assertFalse(self.ended(), self.output())
        # The window manager hides a window for a moment when it takes it over: the look that found it counts.
        (self.window,) = found
        return self.window

    def start_desktop(self, *files, window="^Quillon$"):
        """Starts the shell and waits until its window has the keyboard; its id. With FILES another window may have it
        by then, such as that of a viewer that the run has opened."""
        self.start_window(window, self.shell_program(), *files)
        wait_until(lambda: self.active() in (self.window, *self.windows("– Quillon$")) or (files and self.active()),
                   "the keyboard")
        return self.window

    def xdotool(self, *words):
        done = subprocess.run(["xdotool", *words], env=self.environment, capture_output=True, text=True, timeout=60,
                              check=False)
        return done.stdout.split()

    def windows(self, name):
        return self.xdotool("search", "--onlyvisible", "--name", name)

    def menus_shown(self):
        """The windows of the shell that no window manager knows: its menus."""
        own = self.xdotool("search", "--onlyvisible", "--class", "org.quillon.Shell")
        return [window for window in own if window not in self.windows("Quillon")]

    def active(self):
        return "".join(self.xdotool("getactivewindow"))

    def keys(self, *keys):
        self.xdotool("key", *keys)

    def activate(self, window):
        self.xdotool("windowactivate", window)
        wait_until(lambda: self.active() == window, "the keyboard")

    def press(self, key, effect, what="the effect of a key"):
        """Presses a key in the shell's window until EFFECT returns something; that. The shell takes no keys while its
        menus are grey, and another program's window may have come in front."""
        def pressed():
            if self.active() != self.window:
                self.activate(self.window)
            self.keys(key)
            end = time.monotonic() + LIMIT / 4
            return wait_until(lambda: effect() or time.monotonic() > end) and effect()

        return wait_until(pressed, what)

    def property(self, name, window=None):
        done = subprocess.run(["xprop", "-id", window or self.window, name], env=self.environment,
                              capture_output=True, text=True, timeout=60, check=False)
        return done.stdout.strip()

    def picture(self, window=None, timeout=60):
        """The pixels of a window."""
        return subprocess.run(["import", "-window", window or self.window, "rgb:-"], env=self.environment,
                              capture_output=True, timeout=timeout, check=True).stdout

    def clipboard(self):
        return subprocess.run([self.program("desk"), "clipboard"], env=self.environment, capture_output=True,
                              timeout=60, check=True).stdout.decode("utf-8", "surrogateescape")

    def console(self):
        """The console's text, as Edit > Copy gives it."""
        self.activate(self.window)
        self.keys("ctrl+c")
        return self.clipboard()
