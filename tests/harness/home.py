"""A test with a home of its own: folders, preferences, the binaries folder, and programs that see nothing else."""

import json
import os
import resource
import shutil
import signal
import subprocess
import tempfile
import unittest

from harness import processes

TESTS = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
FAKES = os.path.join(TESTS, "fakes")
BUILD = os.environ.get("QUILLON_BUILD", os.path.join(os.path.dirname(TESTS), "build"))
BINARIES = os.path.join(BUILD, "lib", "quillon")
LIMIT = 100  # seconds that a program may take before the test fails
# What the person who runs the tests has around them, and their programs are not to see.
SURROUNDINGS = ("DISPLAY", "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID")


class HomeTest(unittest.TestCase):
    """A test with a home folder of its own."""

    home_name, work_name = "quillon-test-", "work"  # what the home's name begins with, the working folder's name

    def setUp(self):
        self.home = tempfile.mkdtemp(prefix=self.home_name)
        self.addCleanup(shutil.rmtree, self.home, ignore_errors=True)
        self.work = os.path.join(self.home, self.work_name)
        self.binaries = BINARIES
        self.user = None  # the user id that programs run as, where it is not the test's own
        self.limit = None  # the size in bytes at which every file that a program writes is full
        self.running = None  # what start_program started last
        self.output_path = os.path.join(self.home, "output")
        folders = {
            "HOME": self.home,
            "XDG_CONFIG_HOME": os.path.join(self.home, "config"),
            "XDG_DATA_HOME": os.path.join(self.home, "data"),
            "XDG_CACHE_HOME": os.path.join(self.home, "cache"),
            "XDG_RUNTIME_DIR": os.path.join(self.home, "run"),
        }
        self.environment = {name: value for name, value in os.environ.items()
                            if name not in SURROUNDINGS and not name.startswith("QUILLON_")}
        self.environment.update(folders)
        for folder in [self.work, *folders.values()]:
            os.makedirs(folder, mode=0o700, exist_ok=True)
        self.preferences_path = os.path.join(folders["XDG_CONFIG_HOME"], "Quillon Preferences")
        self.support = os.path.join(folders["XDG_DATA_HOME"], "Quillon")

    def preferences(self, **settings):
        """Writes a preferences file: quiet, blanks as byte 31, unless the test says otherwise."""
        values = {"SPACECHAR": "31", "DEBUG": "0"}
        values.update(settings)
        self.write_preferences("".join(f"{key}={value}\n" for key, value in values.items() if value is not None))

    def write_preferences(self, content):
        """Makes CONTENT the whole preferences file."""
        self.file(self.preferences_path, content)

    def add_preferences(self, content):
        """Adds lines at the end of the preferences file."""
        with open(self.preferences_path, "ab") as file:
            file.write(content if isinstance(content, bytes) else content.encode())

    def preferences_bytes(self):
        with open(self.preferences_path, "rb") as file:
            return file.read()

    def settings(self):
        """All values in the preferences file; the last line of a key counts."""
        lines = self.preferences_bytes().decode("utf-8", "surrogateescape").split("\n")
        return dict(line.split("=", 1) for line in lines if "=" in line)

    def setting(self, key):
        """The value in the preferences file, None when there is none."""
        return self.settings().get(key)

    def copy_binaries(self, copy=None):
        """A binaries folder that the test may change; COPY in place of hard links for one that it gives away."""
        self.binaries = os.path.join(self.home, "lib", "quillon")
        shutil.copytree(BINARIES, self.binaries, symlinks=True, copy_function=copy or link_or_copy)
        return self.binaries

    def own_binaries(self):
        """Makes sure that the binaries folder is a copy."""
        return self.copy_binaries() if self.binaries == BINARIES else self.binaries

    def fake_bundle(self, path, signature, **behaviour):
        """Makes a bundle at PATH, NAME.app, whose program is a tool that does what BEHAVIOUR says; its path."""
        contents = os.path.join(path, "Contents")
        self.file("PkgInfo", "APPL" + signature, contents)
        self.file(os.path.relpath(program_of(path), contents), read_fake("tool.py"), contents, 0o755)
        self.file("behaviour.json", json.dumps(behaviour), os.path.join(contents, "Resources"))
        return path

    def fake_tool(self, bundle, **behaviour):
        """Puts a tool that does what BEHAVIOUR says in place of a bundle; see fakes/tool.py."""
        program = program_of(os.path.join(self.own_binaries(), bundle + ".app"))
        self.replace(program, read_fake("tool.py"), 0o755)
        self.file("behaviour.json", json.dumps(behaviour),
                  os.path.join(self.binaries, bundle + ".app", "Contents", "Resources"))

    def script_tool(self, text, bundle="pdftex"):
        """A shell script that runs in place of an engine, under the real tool host."""
        script = self.file("engine", "#!/bin/sh\n" + text, self.home, 0o755)
        self.replace(os.path.join(self.own_binaries(), bundle + ".app", "Contents", "Info"), f"program={script}\n")

    def replace(self, path, content, mode=0o644):
        """Puts a new file in the place of one that is maybe linked from elsewhere."""
        if os.path.lexists(path):
            os.unlink(path)
        self.file(path, content, mode=mode)

    def file(self, name, content, folder=None, mode=None):
        """Writes a file, into the working folder unless another is named; its path."""
        path = os.path.join(folder or self.work, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as out:
            out.write(content if isinstance(content, bytes) else content.encode("utf-8", "surrogateescape"))
        if mode is not None:
            os.chmod(path, mode)
        return path

    def program_folder(self, folder):
        """A folder with the TeX programs that the set-up looks for; its path."""
        os.makedirs(folder)
        for program in ("pdftex", "kpsewhich"):
            os.symlink(shutil.which(program), os.path.join(folder, program))
        return folder

    def processes_of(self, text):
        """The processes of this test, known by its home, whose command line holds TEXT."""
        return processes.processes_of(self.home, text)

    def background_has_ended(self):
        """Whether nothing of this test works in the background. One look can miss a program that is just starting."""
        return not processes.is_starting("quillon-background") and not self.processes_of("quillon-background")

    def running_as(self, name, text=""):
        """Those of them that are by now a program whose file's name begins with NAME, and not what starts it."""
        return [process for process in self.processes_of(text) if processes.program_name(process).startswith(name)]

    def shell_program(self):
        return os.path.join(self.binaries, "Quillon.app", "Contents", "Linux", "quillon-shell")

    def run_program(self, *command, pass_fds=(), **environment):
        """Runs a program to its end: its status, and what it printed as text."""
        return subprocess.run(command, env=dict(self.environment, **environment), cwd=self.work, pass_fds=pass_fds,
                              stdin=subprocess.DEVNULL, capture_output=True, encoding="utf-8",
                              errors="surrogateescape", timeout=LIMIT, check=False)

    def start_program(self, *command, **environment):
        """Starts a program that stays, with its output in a file; see output()."""
        with open(self.output_path, "wb") as output:
            self.running = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=output, stderr=output,
                                            env=dict(self.environment, **environment), cwd=self.work)
        self.addCleanup(processes.stop, self.running)
        return self.running

    def ended(self):
        """Whether the program that start_program started has ended."""
        return self.running.poll() is not None

    def output(self):
        with open(self.output_path, "rb") as file:
            return file.read().decode("utf-8", "surrogateescape")

    def limit_files(self):
        if self.limit is not None:
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (self.limit, self.limit))

    def shell(self, script, *arguments):
        """Runs a headless shell under SCRIPT on a bus of its own: what it printed. self.errors, self.status."""
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


def read_fake(name):
    """What the stand-in of that name in tests/fakes holds."""
    with open(os.path.join(FAKES, name), "rb") as file:
        return file.read()


def program_of(bundle):
    """The program of a bundle, which has the bundle's name."""
    return os.path.join(bundle, "Contents", "Linux", os.path.basename(bundle)[:-len(".app")])


def link_or_copy(source, target):
    # A further link changes the original's time of change, which snapshots of other tests rest on.
    if os.path.basename(source) == "snapshot.tex":
        return shutil.copy2(source, target)
    try:
        os.link(source, target)
    except OSError:
        shutil.copy2(source, target)
    return target
