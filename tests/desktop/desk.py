"""A shell with its windows, and engines that run as long as a test likes."""

import os
import re
import subprocess

from harness import DesktopTest, alive, wait_until

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
        return alive(self.leader)

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
