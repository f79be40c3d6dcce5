"""Another user's programs: the bus refuses them, and the folder of what passes between programs is closed to them."""

import os
import stat
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
from service import Service  # noqa: E402

NOBODY = 65534
CALL = ["dbus-send", "--session", "--print-reply", "--dest=org.quillon.Shell", "/org/quillon/Shell",
        "org.quillon.Shell1.Quit"]


@unittest.skipIf(os.getuid() != 0, "only root can be another user")
class Strangers(Service):
    def as_nobody(self, *words):
        return subprocess.run(words, env=self.environment, cwd="/", capture_output=True, text=True, timeout=60,
                              user=NOBODY, group=NOBODY, extra_groups=[], check=False)

    def open_the_way(self):
        """Lets everybody through the folders above, so that only what is looked at is closed."""
        for folder in (self.home, os.path.join(self.home, "run")):
            os.chmod(folder, 0o777)

    def test_another_user_cannot_call_the_shell(self):
        self.start_shell()
        self.open_the_way()
        refused = self.as_nobody(*CALL)
        self.assertNotEqual(refused.returncode, 0)
        self.assertIn("Failed to open connection", refused.stderr)
        self.assertEqual(self.shell_object().Exec("pdftex x.tex", self.work, timeout=60), 0)
        # The same call of the person's own is heard.
        self.assertEqual(self.run_program(*CALL).returncode, 0)
        self.assertEqual(self.running.wait(60), 0)

    def test_the_temporary_folder_is_closed_to_others(self):
        folder = os.path.join(self.home, "run", "quillon")
        # Somebody has opened it before.
        os.makedirs(folder, mode=0o777)
        os.chmod(folder, 0o777)
        self.start_shell("--service")
        self.open_the_way()
        self.assertEqual(self.shell_object().Exec("pdftex x.tex", self.work, timeout=60), 0)
        self.assertEqual(stat.S_IMODE(os.stat(folder).st_mode), 0o700)
        self.assertNotEqual(self.as_nobody("ls", folder).returncode, 0)
        self.assertNotEqual(self.as_nobody("touch", os.path.join(folder, "planted")).returncode, 0)
        self.assertEqual(self.as_nobody("ls", os.path.dirname(folder)).returncode, 0)


if __name__ == "__main__":
    unittest.main()
