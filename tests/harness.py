"""What the tests of whole programs share: a fresh home, a copy of the binaries folder, and the shell under a script.

Every test gets its own home folder, its own preferences file and its own session bus.
"""

import json
import os
import resource
import select
import shutil
import signal
import subprocess
import tempfile
import threading
import time
import unittest

import dbus
import dbus.bus

BUILD = os.environ.get("QUILLON_BUILD", os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "build"))
BINARIES = os.path.join(BUILD, "lib", "quillon")
LIMIT = 100  # seconds that a program may take before the test fails


class HomeTest(unittest.TestCase):
    """A test with a home folder of its own."""

    def setUp(self):
        self.home = tempfile.mkdtemp(prefix="quillon-test-")
        self.addCleanup(shutil.rmtree, self.home, ignore_errors=True)
        self.work = os.path.join(self.home, "work")
        self.binaries = BINARIES
        self.user = None  # the user id that programs run as, where it is not the test's own
        self.limit = None  # the size in bytes at which every file that a program writes is full
        self.environment = dict(os.environ)
        for name in ("DISPLAY", "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS"):
            self.environment.pop(name, None)
        folders = {
            "HOME": self.home,
            "XDG_CONFIG_HOME": os.path.join(self.home, "config"),
            "XDG_DATA_HOME": os.path.join(self.home, "data"),
            "XDG_CACHE_HOME": os.path.join(self.home, "cache"),
            "XDG_RUNTIME_DIR": os.path.join(self.home, "run"),
        }
        self.environment.update(folders)
        for folder in [self.work, *folders.values()]:
            os.makedirs(folder, mode=0o700, exist_ok=True)
        self.preferences_path = os.path.join(folders["XDG_CONFIG_HOME"], "Quillon Preferences")

    def preferences(self, **settings):
        """Writes a preferences file of its own: quiet, blanks as byte 31, unless the test says otherwise."""
        values = {"SPACECHAR": "31", "DEBUG": "0"}
        values.update(settings)
        with open(self.preferences_path, "w", encoding="utf-8", newline="") as file:
            for key, value in values.items():
                if value is not None:
                    file.write(f"{key}={value}\n")

    def setting(self, key):
        """The value in the preferences file, None when there is none."""
        with open(self.preferences_path, "rb") as file:
            for line in file.read().decode("utf-8", "surrogateescape").split("\n"):
                name, mark, value = line.partition("=")
                if mark and name == key:
                    return value
        return None

    def copy_binaries(self, copy=None):
        """A binaries folder that the test may change; COPY in place of hard links for one that it gives away."""
        self.binaries = os.path.join(self.home, "lib", "quillon")
        shutil.copytree(BINARIES, self.binaries, symlinks=True, copy_function=copy or link_or_copy)
        return self.binaries

    def fake_tool(self, bundle, **behaviour):
        """Puts a tool that does what BEHAVIOUR says in place of a bundle; see fakes/tool.py."""
        if self.binaries == BINARIES:
            self.copy_binaries()
        contents = os.path.join(self.binaries, bundle + ".app", "Contents")
        program = os.path.join(contents, "Linux", bundle)
        os.unlink(program)
        shutil.copy(os.path.join(os.path.dirname(os.path.abspath(__file__)), "fakes", "tool.py"), program)
        os.chmod(program, 0o755)
        os.makedirs(os.path.join(contents, "Resources"), exist_ok=True)
        with open(os.path.join(contents, "Resources", "behaviour.json"), "w", encoding="utf-8") as file:
            json.dump(behaviour, file)

    def file(self, name, text, folder=None):
        """Writes a file into the working folder; its path."""
        path = os.path.join(folder or self.work, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as out:
            out.write(text if isinstance(text, bytes) else text.encode())
        return path

    def processes_of(self, text):
        """The processes of this test, known by its home in their environment, whose command line holds TEXT."""
        found = []
        for entry in os.listdir("/proc"):
            if not entry.isdigit() or int(entry) == os.getpid():
                continue
            try:
                with open(f"/proc/{entry}/cmdline", "rb") as file:
                    words = file.read()
                with open(f"/proc/{entry}/environ", "rb") as file:
                    mine = self.home.encode() in file.read() + words
                with open(f"/proc/{entry}/stat", encoding="latin-1") as file:
                    ended = file.read().rpartition(")")[2].split()[0] == "Z"
            except OSError:
                continue
            if mine and text.encode() in words and not ended:
                found.append(int(entry))
        return found

    def limit_files(self):
        if self.limit is not None:
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (self.limit, self.limit))

    def shell_program(self):
        return os.path.join(self.binaries, "Quillon.app", "Contents", "Linux", "quillon-shell")

    def shell(self, script, *arguments):
        """Runs a headless shell under SCRIPT on a bus of its own: standard output, standard error, exit status."""
        command = ["dbus-run-session", "--", self.shell_program(), "--headless", *arguments, "--script", "-"]
        process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   env=self.environment, cwd=self.work, start_new_session=True, user=self.user,
                                   preexec_fn=self.limit_files)
        try:
            output, errors = process.communicate(script.encode("utf-8", "surrogateescape"), timeout=LIMIT)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            output, errors = process.communicate()
            self.fail(f"the shell did not end:\n{output.decode(errors='replace')}\n{errors.decode(errors='replace')}")
        self.errors = errors.decode("utf-8", "surrogateescape")
        self.status = process.returncode
        return output.decode("utf-8", "surrogateescape")


class ServiceTest(HomeTest):
    """A test with a session bus and, when it starts one, a shell that stays."""

    def setUp(self):
        super().setUp()
        self.daemon = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address"],
                                       stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, env=self.environment)
        self.addCleanup(stop, self.daemon)
        self.address = self.daemon.stdout.readline().decode().strip()
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = self.address
        self.running = None

    def start_shell(self, *arguments):
        """Starts a headless shell that runs until it is told to quit, and waits for its name."""
        self.output_path = os.path.join(self.home, "output")
        with open(self.output_path, "wb") as output:
            self.running = subprocess.Popen([self.shell_program(), "--headless", *arguments],
                                            stdin=subprocess.DEVNULL, stdout=output, stderr=output,
                                            env=self.environment, cwd=self.work)
        self.addCleanup(stop, self.running)
        bus = self.bus()
        wait_until(lambda: bus.name_has_owner("org.quillon.Shell") or self.running.poll() is not None)
        self.assertIsNone(self.running.poll(), self.output())
        if "--script" not in arguments:
            # The name comes first; what the loop answers comes when the start is over.
            self.shell_object().Formats(timeout=60)
        return self.running

    def output(self):
        with open(self.output_path, "rb") as file:
            return file.read().decode("utf-8", "surrogateescape")

    def bus(self):
        """A connection of its own to the test's bus."""
        connection = dbus.bus.BusConnection(self.address)
        connection.set_exit_on_disconnect(False)
        return connection

    def shell_object(self, interface="org.quillon.Shell1"):
        return dbus.Interface(self.bus().get_object("org.quillon.Shell", "/org/quillon/Shell"), interface)

    def send(self, event_class, event_id, **parameters):
        """An event to the shell; its error and the parameters of its reply."""
        own = self.bus().get_object("org.quillon.Shell", "/org/quillon/App")
        values = dbus.Dictionary({key: dbus.Struct((kind, value), signature="sv")
                                  for key, (kind, value) in parameters.items()}, signature="s(sv)")
        return own.Event(event_class, event_id, values, dbus_interface="org.quillon.App1")

    def in_background(self, procedure):
        """Runs PROCEDURE in a thread; the thread, whose `result` is what it returned or raised."""
        thread = threading.Thread(target=lambda: keep_result(thread, procedure), daemon=True)
        thread.result = None
        thread.start()
        return thread


class DesktopTest(ServiceTest):
    """A test with a display, a window manager and, when it starts one, a shell with its windows."""

    screen = "1280x800x24"

    @classmethod
    def setUpClass(cls):
        read_end, write_end = os.pipe()
        cls.server = subprocess.Popen(["Xvfb", "-displayfd", str(write_end), "-noreset", "-screen", "0", cls.screen,
                                       "-nolisten", "tcp"], pass_fds=[write_end], stderr=subprocess.DEVNULL)
        os.close(write_end)
        with os.fdopen(read_end) as file:
            cls.display = ":" + file.readline().strip()
        cls.manager = subprocess.Popen(["openbox"], env=dict(os.environ, DISPLAY=cls.display),
                                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        # A window that is mapped while the manager starts may never be managed.
        wait_until(lambda: "window id" in subprocess.run(
            ["xprop", "-display", cls.display, "-root", "_NET_SUPPORTING_WM_CHECK"], capture_output=True, text=True,
            check=False).stdout)

    @classmethod
    def tearDownClass(cls):
        stop(cls.manager)
        stop(cls.server)

    def setUp(self):
        super().setUp()
        suppressions = os.path.join(os.path.dirname(os.path.abspath(__file__)), "support", "leaks.supp")
        self.environment.update(DISPLAY=self.display, QT_QPA_PLATFORM="xcb",
                                LSAN_OPTIONS=f"suppressions={suppressions}:print_suppressions=0")

    def program(self, name):
        """A program of the tests' own, tests/desktop/programs."""
        return os.path.join(BUILD, "bin", "tests", name)

    def start_desktop(self, *files, window="^Quillon$"):
        """Starts the shell and waits until its window has the keyboard; its id."""
        self.output_path = os.path.join(self.home, "output")
        with open(self.output_path, "wb") as output:
            self.running = subprocess.Popen([self.shell_program(), *files], stdin=subprocess.DEVNULL, stdout=output,
                                            stderr=output, env=self.environment, cwd=self.work)
        self.addCleanup(stop, self.running)
        found = []
        # The window manager hides a window for a moment when it takes it over.
        wait_until(lambda: found.extend(self.windows(window)) or found or self.running.poll() is not None)
        self.assertIsNone(self.running.poll(), self.output())
        (self.window,) = found
        wait_until(lambda: self.active() in (self.window, *self.windows("– Quillon$")))
        return self.window

    def script_tool(self, text, bundle="pdftex"):
        """What runs in place of an engine, under the real tool host."""
        if self.binaries == BINARIES:
            self.copy_binaries()
        script = self.file("engine", "#!/bin/sh\n" + text, self.home)
        os.chmod(script, 0o755)
        info = os.path.join(self.binaries, bundle + ".app", "Contents", "Info")
        if os.path.exists(info):
            os.unlink(info)
        with open(info, "w", encoding="utf-8") as file:
            file.write(f"program={script}\n")

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
        wait_until(lambda: self.active() == window)

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


def keep_result(thread, procedure):
    try:
        thread.result = procedure()
    except dbus.exceptions.DBusException as error:
        thread.result = error


def stop(process):
    if process.poll() is None:
        process.kill()
    process.wait()
    if process.stdout:
        process.stdout.close()


def wait_until(condition, seconds=30):
    """Waits for a condition; fails when it does not come."""
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > end:
            raise AssertionError("the condition did not come")
        select.select([], [], [], 0.01)


def link_or_copy(source, target):
    try:
        os.link(source, target)
    except OSError:
        shutil.copy2(source, target)
    return target
