"""The installed copy that the tests of this folder use: the package's tree in a temporary folder, owned by root where
root runs the tests, and the tests as a person who may change nothing of it."""

import os
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from harness import BUILD, DesktopTest  # noqa: E402

NOBODY = 65534
ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
TREE = os.environ.get("QUILLON_INSTALLED", "")
PREFIX = os.path.join(TREE, "usr")


def package():
    """The path of the package that the build has made."""
    with open(os.path.join(BUILD, "package", "name"), encoding="utf-8") as file:
        return file.read().strip()


def main():
    """Runs the tests of the script with an installed copy, in a process that is not root's."""
    if TREE:
        unittest.main()
    with tempfile.TemporaryDirectory(prefix="quillon-installed-") as folder:
        os.chmod(folder, 0o755)
        subprocess.run(["dpkg-deb", "-x", package(), folder], check=True)
        root = os.geteuid() == 0
        if not root:
            subprocess.run(["chmod", "-R", "a-w", os.path.join(folder, "usr")], check=True)
        user = {"user": NOBODY, "group": NOBODY, "extra_groups": []} if root else {}
        status = subprocess.run([sys.executable, "-B", *sys.argv], env=dict(os.environ, QUILLON_INSTALLED=folder),
                                check=False, **user).returncode
        if not root:
            subprocess.run(["chmod", "-R", "u+w", folder], check=True)
    sys.exit(status)


class Installed(DesktopTest):
    """A test of the installed copy, with the environment of a desktop's session and nothing of a shell's."""

    def setUp(self):
        super().setUp()
        self.binaries = os.path.join(PREFIX, "lib", "quillon")
        self.quillon = os.path.join(PREFIX, "bin", "quillon")
        self.environment = {name: self.environment[name]
                            for name in ("HOME", "DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR")}
        # Where a session looks for programs.
        self.environment["PATH"] = os.path.join(PREFIX, "bin") + ":/usr/bin:/bin"
        self.preferences_path = os.path.join(self.home, ".config", "Quillon Preferences")

    def read(self, name):
        """A file of the installed copy."""
        with open(os.path.join(PREFIX, name), encoding="utf-8") as file:
            return file.read()

    def example(self, name, as_name=None):
        return self.file(as_name or name, self.read("share/doc/quillon/examples/" + name))

    def path(self, name):
        return os.path.join(self.work, name)
