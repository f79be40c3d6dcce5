"""Stand-ins for editors and viewers: they write down what they are started with, and live on until the test ends."""

import glob
import os
import shutil

from harness.home import BINARIES, FAKES
from harness.processes import wait_until

HELPERS = os.path.join(BINARIES, "Quillon.app", "Contents", "Helpers")


class Applications:
    """Recorders under the names of applications, in the folder that PATH begins with."""

    def prepare(self):
        self.programs = os.path.join(self.home, "programs")
        os.makedirs(self.programs)
        self.environment["PATH"] = self.programs + ":" + os.environ["PATH"]
        self.environment.pop("TERMINAL", None)
        self.file("stay", "", self.programs)
        self.addCleanup(self.let_go)

    def let_go(self):
        if os.path.exists(os.path.join(self.programs, "stay")):
            os.unlink(os.path.join(self.programs, "stay"))
        wait_until(lambda: not self.processes_of(self.programs))

    def recorder(self, name, folder=None):
        path = os.path.join(folder or self.programs, name)
        shutil.copy(os.path.join(FAKES, "recorder.sh"), path)
        return path

    def records(self, name):
        return glob.glob(os.path.join(self.programs, name + ".*.words"))

    def starts(self, name):
        """The words of every start of the application so far."""
        found = []
        for path in self.records(name):
            with open(path, "rb") as file:
                found.append(os.fsdecode(file.read().partition(b"\n")[2]).split("\0")[:-1])
        return found

    def started(self, name):
        wait_until(lambda: self.starts(name))
        return self.starts(name)[0]

    def helper(self, name, *words, **more):
        return self.run_program(os.path.join(HELPERS, name), *words, **more)

    def opens(self, *words):
        done = self.helper("open", "-a", *words)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))

    def refused(self, name, message, *words):
        done = self.helper(name, *words)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (1, "", f"{name}: {message}\n"))

    def entry(self, name, text):
        folder = os.path.join(self.environment["XDG_DATA_HOME"], "applications")
        return self.file(name + ".desktop", "[Desktop Entry]\nType=Application\nName=A viewer\n" + text, folder)
